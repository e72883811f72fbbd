// SPDX-License-Identifier: Apache-2.0
#include "foperators.h"

#include "fbasictype.h"
#include "fcmdmanager.h"
#include "fscripttype.h"

#include <cmath>
#include <unordered_map>

namespace {
struct Operator
{
    const char *symbol;
    int precedence;
};
// The conditional and the unary operators stand outside the table of binary ones.
const Operator kBinary[] = {{"or", 2}, {"and", 3}, {"==", 5}, {"!=", 5}, {"<", 5},
                            {"<=", 5}, {">", 5},   {">=", 5}, {"+", 6},  {"-", 6},
                            {"*", 7},  {"/", 7},   {"%", 7},  {"^", 9}};
constexpr int kConditional = 1, kNot = 4, kMinus = 8, kAtom = 10;

FExprBase number(double value) { return FScriptType<double>::to(value); }

std::function<FResult(FObject *, const std::vector<FExprBase> &)>
numeric(const std::string &symbol, double (*function)(double, double))
{
    return [symbol, function](FObject *, const std::vector<FExprBase> &in) -> FResult {
        double a, b;
        FReason why;
        if (!FScriptType<double>::from(in[0], &a, &why) ||
            !FScriptType<double>::from(in[1], &b, &why))
            return {number(quietNan()), why.about(symbol)};
        return {number(function(a, b)), {}};
    };
}

FResult compare(const std::string &symbol, const std::vector<FExprBase> &in)
{
    std::string s, t;
    double a, b;
    int order;
    bool ordered = true;
    if (FConvert::toText(in[0], &s) && FConvert::toText(in[1], &t)) {
        order = s.compare(t);
    } else if (FConvert::toDouble(in[0], &a) && FConvert::toDouble(in[1], &b)) {
        order = a < b ? -1 : a > b ? 1 : 0;
        ordered = !std::isnan(a) && !std::isnan(b);
    } else {
        return FResult::fail(
            {symbol, "two numbers or two texts",
             FScriptTypes::describe(in[0]) + " and " + FScriptTypes::describe(in[1])});
    }
    bool result = false;
    if (symbol == "==")
        result = ordered && order == 0;
    else if (symbol == "!=")
        result = !ordered || order != 0;
    else if (symbol == "<")
        result = ordered && order < 0;
    else if (symbol == "<=")
        result = ordered && order <= 0;
    else if (symbol == ">")
        result = ordered && order > 0;
    else
        result = ordered && order >= 0;
    return {FScriptType<bool>::to(result), {}};
}

FResult plus(const std::vector<FExprBase> &in)
{
    std::string s, t;
    if (FConvert::toText(in[0], &s) && FConvert::toText(in[1], &t))
        return {FScriptType<std::string>::to(s + t), {}};
    return numeric("+", [](double a, double b) { return a + b; })(nullptr, in);
}

using Table = std::map<std::pair<std::string, size_t>, FCmdManager::Info>;

std::shared_ptr<FCommandInfo> &enter(Table &table, const std::string &name, size_t operands,
                                     const FClassInfo &result)
{
    static std::shared_ptr<FCommandInfo> info;
    info = std::make_shared<FCommandInfo>();
    info->kind = FCommandKind::Operator;
    info->name = name;
    info->returnClass = &result;
    info->returns = &result == &FBool::staticClass() ? "bool" : "double";
    for (size_t i = 0; i < operands; ++i)
        info->args.push_back({operands == 1 ? "x"
                              : i == 0      ? "a"
                                            : "b",
                              "double",
                              nullptr,
                              false,
                              {}});
    table[{name, operands}] = info;
    return info;
}

const Table &operators()
{
    static const Table table = [] {
        Table t;
        const FClassInfo &real = FDouble::staticClass(), &truth = FBool::staticClass();
        enter(t, "+", 2, real)->call = [](FObject *, const auto &in) { return plus(in); };
        const std::pair<const char *, double (*)(double, double)> binary[] = {
            {"-", [](double a, double b) { return a - b; }},
            {"*", [](double a, double b) { return a * b; }},
            {"/", [](double a, double b) { return a / b; }},
            {"%", [](double a, double b) { return std::fmod(a, b); }},
            {"^", [](double a, double b) { return std::pow(a, b); }}};
        for (const auto &entry : binary)
            enter(t, entry.first, 2, real)->call = numeric(entry.first, entry.second);
        for (const char *symbol : {"==", "!=", "<", "<=", ">", ">="})
            enter(t, symbol, 2, truth)->call = [symbol](FObject *, const auto &in) {
                return compare(symbol, in);
            };
        for (const bool isAnd : {true, false})
            enter(t, isAnd ? "and" : "or", 2, truth)->call = [isAnd](FObject *, const auto &in) {
                bool a, b;
                FReason why;
                if (!FScriptType<bool>::from(in[0], &a, &why) ||
                    !FScriptType<bool>::from(in[1], &b, &why))
                    return FResult::fail(why);
                return FResult{FScriptType<bool>::to(isAnd ? a && b : a || b), {}};
            };
        enter(t, "not", 1, truth)->call = [](FObject *, const auto &in) {
            bool a;
            FReason why;
            if (!FScriptType<bool>::from(in[0], &a, &why))
                return FResult::fail(why);
            return FResult{FScriptType<bool>::to(!a), {}};
        };
        enter(t, "-", 1, real)->call = [](FObject *, const auto &in) {
            double a;
            FReason why;
            if (!FScriptType<double>::from(in[0], &a, &why))
                return FResult{number(quietNan()), why};
            return FResult{number(-a), {}};
        };
        enter(t, "?", 3, FObject::staticClass())->call = [](FObject *, const auto &in) {
            bool a;
            FReason why;
            if (!FScriptType<bool>::from(in[0], &a, &why))
                return FResult::fail(why);
            return FResult{FExprBase(in[a ? 1 : 2].getPtr()), {}};
        };
        return t;
    }();
    return table;
}

const Table &functions()
{
    static const Table table = [] {
        Table t;
        const FClassInfo &real = FDouble::staticClass();
        const std::pair<const char *, double (*)(double)> unary[] = {
            {"sqrt", std::sqrt},   {"abs", std::fabs},   {"exp", std::exp},   {"log", std::log},
            {"log10", std::log10}, {"sin", std::sin},    {"cos", std::cos},   {"tan", std::tan},
            {"asin", std::asin},   {"acos", std::acos},  {"atan", std::atan}, {"floor", std::floor},
            {"ceil", std::ceil},   {"round", std::round}};
        for (const auto &entry : unary) {
            const auto function = entry.second;
            const std::string name = entry.first;
            enter(t, name, 1, real)->call = [name, function](FObject *, const auto &in) {
                double a;
                FReason why;
                if (!FScriptType<double>::from(in[0], &a, &why))
                    return FResult{number(quietNan()), why.about(name)};
                return FResult{number(function(a)), {}};
            };
        }
        const std::pair<const char *, double (*)(double, double)> binary[] = {
            {"pow", std::pow},
            {"atan2", std::atan2},
            {"min", [](double a, double b) { return b < a ? b : a; }},
            {"max", [](double a, double b) { return a < b ? b : a; }}};
        for (const auto &entry : binary)
            enter(t, entry.first, 2, real)->call = numeric(entry.first, entry.second);
        return t;
    }();
    return table;
}

bool isFunction(const FCommandInfo &info)
{
    return std::isalpha(static_cast<unsigned char>(info.name[0])) && info.name != "and" &&
           info.name != "or" && info.name != "not";
}

int nodePrecedence(const FCmd &node)
{
    const FCommandInfo &info = node.info();
    if (info.kind != FCommandKind::Operator || isFunction(info))
        return kAtom;
    switch (node.arguments().size()) {
    case 1:
        return info.name == "not" ? kNot : kMinus;
    case 3:
        return kConditional;
    default:
        return FOperators::precedence(info.name);
    }
}

/// A piece of an expression's text that is still to be written: an expression, or plain text.
struct Piece
{
    Piece(std::string words)
        : text(std::move(words))
    {
    }
    Piece(const FCmd *command)
        : node(command)
    {
    }
    std::string text;
    const FCmd *node = nullptr;
};
using Pieces = std::vector<Piece>;

const FCmd *commandOf(const FExprBase &expr) { return expr ? expr.getExpr()->isFCmd() : nullptr; }

void addExpr(Pieces *pieces, const FExprBase &expr)
{
    if (const FCmd *node = commandOf(expr))
        pieces->emplace_back(node);
    else
        pieces->emplace_back(expr.toString());
}

void addOperand(Pieces *pieces, const FExprBase &operand, int minimum)
{
    const FCmd *node = commandOf(operand);
    const std::string text = node ? std::string() : operand.toString();
    // A negative literal binds like the minus that it is written with.
    const int own = node ? nodePrecedence(*node) : !text.empty() && text[0] == '-' ? kMinus : kAtom;
    if (own < minimum)
        pieces->emplace_back("(");
    if (node)
        pieces->emplace_back(node);
    else
        pieces->emplace_back(text);
    if (own < minimum)
        pieces->emplace_back(")");
}

void addArguments(Pieces *pieces, const std::vector<FExprBase> &arguments)
{
    pieces->emplace_back("(");
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (i > 0)
            pieces->emplace_back(",");
        addExpr(pieces, arguments[i]);
    }
    pieces->emplace_back(")");
}

void addOperator(Pieces *pieces, const FCmd &node)
{
    const std::string &name = node.info().name;
    const std::vector<FExprBase> &in = node.arguments();
    if (in.size() == 1) {
        pieces->emplace_back(name == "not" ? "not " : "-");
        addOperand(pieces, in[0], name == "not" ? kNot : kMinus + 1);
    } else if (in.size() == 3) {
        addOperand(pieces, in[0], kConditional + 1);
        pieces->emplace_back("?");
        addOperand(pieces, in[1], kConditional);
        pieces->emplace_back(":");
        addOperand(pieces, in[2], kConditional);
    } else {
        const int own = FOperators::precedence(name);
        const bool right = FOperators::isRightAssociative(name);
        const bool word = name == "and" || name == "or";
        addOperand(pieces, in[0], right ? own + 1 : own);
        pieces->emplace_back(word ? " " + name + " " : name);
        addOperand(pieces, in[1], right ? own : own + 1);
    }
}

/// The pieces of one node, from left to right.
Pieces piecesOf(const FCmd &node)
{
    Pieces pieces;
    const FCommandInfo &info = node.info();
    if (info.kind == FCommandKind::Creator) {
        pieces.emplace_back(node.scriptText());
    } else if (info.kind == FCommandKind::Operator && !isFunction(info)) {
        addOperator(&pieces, node);
    } else {
        if (info.kind != FCommandKind::Operator && info.kind != FCommandKind::Global) {
            addOperand(&pieces, node.getReceiver(), commandOf(node.getReceiver()) ? kAtom : 0);
            pieces.emplace_back(".");
        }
        pieces.emplace_back(info.name);
        addArguments(&pieces, node.arguments());
    }
    return pieces;
}
} // namespace

int FOperators::precedence(const std::string &symbol)
{
    for (const Operator &op : kBinary)
        if (symbol[0] == op.symbol[0] && symbol == op.symbol)
            return op.precedence;
    return 0;
}

bool FOperators::isRightAssociative(const std::string &symbol) { return symbol == "^"; }

FExprBase FOperators::make(const std::string &symbol, const std::vector<FExprBase> &operands,
                           std::string *unfit)
{
    const auto found = operators().find({symbol, operands.size()});
    for (const FExprBase &operand : operands)
        // What an operand referred to may be gone; the rest of the expression is kept all the same.
        if (operand && operand.valueClass()->isA(FWord::staticClass())) {
            *unfit = FScriptTypes::describe(operand);
            return FExprBase();
        }
    const auto node = FCmd::make(found->second);
    node->setArguments(operands);
    return FExprBase(node);
}

FCmdManager::Info FOperators::function(const std::string &name)
{
    for (const auto &entry : functions())
        if (entry.first.first == name)
            return entry.second;
    return nullptr;
}

std::vector<std::string> FOperators::functionNames()
{
    std::vector<std::string> names;
    for (const auto &entry : functions())
        names.push_back(entry.first.first);
    return names;
}

std::string FOperators::text(const FCmd &node)
{
    std::string out;
    Pieces todo{&node}; // the next one last
    while (!todo.empty()) {
        const Piece next = std::move(todo.back());
        todo.pop_back();
        if (!next.node) {
            out += next.text;
            continue;
        }
        Pieces pieces = piecesOf(*next.node);
        todo.insert(todo.end(), std::make_move_iterator(pieces.rbegin()),
                    std::make_move_iterator(pieces.rend()));
    }
    return out;
}
