// SPDX-License-Identifier: Apache-2.0
#include "fscript.h"

#include "fbasictype.h"
#include "fcmdmanager.h"
#include "fimportrules.h"
#include "flogmsg.h"
#include "fmanaged.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"
#include "foperators.h"
#include "fscripttype.h"
#include "fupdates.h"

#include <algorithm>
#include <iostream>

FScriptReader::FScriptReader(std::string source, std::string file, size_t firstLine)
    : mLexer(std::move(source), firstLine)
    , mFile(std::move(file))
{
}

FScriptReader::Nesting::Nesting(FScriptReader *reader)
    : mReader(reader)
{
    if (++mReader->mDepth > kMaxNesting) {
        --mReader->mDepth; // the destructor doesn't run when the constructor throws
        mReader->failAt(mReader->mLexer.peek().start,
                        "nested deeper than " + fromNumber(kMaxNesting, 10));
    }
}

FScriptError FScriptReader::errorAt(size_t offset, const FReason &reason) const
{
    FScriptError error;
    error.file = mFile;
    mLexer.place(offset, &error.line, &error.column);
    error.reason = reason;
    return error;
}

void FScriptReader::report(size_t offset, const FReason &reason)
{
    mErrors.insert(mErrors.end(), reason.causes.begin(), reason.causes.end());
    mErrors.push_back(errorAt(offset, reason));
    mErrors.back().reason.causes.clear();
    if (mLogging)
        FLogMsg::error("Script", mErrors.back().toString(), "statement skipped", nullptr);
}

void FScriptReader::failAt(size_t offset, const FReason &reason)
{
    // Whatever else is wrong with an entry comes from what the project lacks.
    if (!mConfiguration || !noteMissing(offset))
        report(offset, reason);
    throw Failure();
}

void FScriptReader::expected(const std::string &what)
{
    failAt(mLexer.peek().start, FReason::unexpected(what, mLexer.found()));
}

void FScriptReader::expectSymbol(const char *symbol, const std::string &what)
{
    if (!mLexer.isSymbol(symbol))
        expected(what);
    mLexer.take();
}

bool FScriptReader::run()
{
    while (mLexer.peek().kind != FScriptToken::End) {
        const size_t start = mLexer.peek().start;
        try {
            statement();
        } catch (const Failure &) {
            mDepth = 0;
            mLexer.skipStatement();
            if (mLexer.isSymbol("}"))
                mLexer.take(); // the rest of a block that could not be entered
        }
        if (mLexer.peek().start == start && mLexer.peek().kind != FScriptToken::End)
            mLexer.take(); // always get on
        FUpdates::flush();
    }
    return mErrors.empty();
}

FExprBase FScriptReader::expression()
{
    try {
        const FExprBase value = parse(0);
        if (mLexer.peek().kind != FScriptToken::End)
            expected("the end of the expression");
        if (value && value.valueClass()->isA(FWord::staticClass()))
            failAt(0, FReason::unexpected("an expression", "the unknown name " + value.toString()));
        return value;
    } catch (const Failure &) {
        return FExprBase();
    }
}

// "curFile : name" closes the object half of a saved definition; it is read by others.
bool FScriptReader::keyLine()
{
    const FScriptToken &word = mLexer.peek();
    if (word.kind != FScriptToken::Name || mLexer.source().compare(word.end, 3, " : ") != 0)
        return false;
    mLexer.skipLine();
    return true;
}

bool FScriptReader::creatorAhead() const
{
    return mLexer.isSymbol("&") ||
           (mLexer.peek().kind == FScriptToken::Name &&
            mLexer.second().kind == FScriptToken::Name &&
            !FOperators::precedence(mLexer.second().text) && mLexer.peek().text != "not");
}

void FScriptReader::statement()
{
    if (mLexer.isSymbol(";")) {
        mLexer.take();
        return;
    }
    if (keyLine())
        return;
    if (creatorAhead()) {
        creator();
        return;
    }
    const size_t offset = mLexer.peek().start;
    const FExprBase expr = parse(0);
    expectSymbol(";", "\";\" behind the statement");
    if (expr && expr.valueClass()->isA(FWord::staticClass()))
        report(offset, FReason::unexpected("a statement", "the unknown name " + expr.toString()));
    else
        execute(expr, offset);
}

void FScriptReader::execute(const FExprBase &expr, size_t offset)
{
    mLast = FExprBase();
    if (!expr)
        return;
    if (expr.isExpression()) {
        const auto command = std::static_pointer_cast<FCmd>(expr.getExpr());
        command->evaluate();
        if (!command->error().empty())
            report(offset, command->error());
    }
    mLast = expr;
}

std::shared_ptr<FObject> FScriptReader::creator()
{
    if (mLexer.isSymbol("&"))
        mLexer.take();
    if (mLexer.peek().kind != FScriptToken::Name)
        expected("a creator command");
    const FScriptToken word = mLexer.take();
    if (mLexer.peek().kind != FScriptToken::Name)
        expected("the name of the new object");
    const FScriptToken given = mLexer.take();
    auto candidates = FCmdManager::instance()->creators(word.text);
    if (!mLexer.isSymbol("("))
        expected("\"(\" behind the name " + given.text);
    if (candidates.empty())
        failAt(word.start, FReason::unexpected("a creator command", "\"" + word.text + "\""));
    keepAllowed(&candidates, word.start, word.text);
    const std::vector<FExprBase> args = arguments();
    FReason why;
    const auto info = FCommands::pick(candidates, args, &why);
    if (!info)
        failAt(word.start, why);
    const auto command = std::static_pointer_cast<FCreateCmd>(FCmd::make(info));
    command->setValue(given.text);
    command->setArguments(args);
    if (!command->execute())
        failAt(word.start, command->error());
    const std::shared_ptr<FObject> object = command->result().getExpr();
    const auto managed = std::dynamic_pointer_cast<FManaged>(object);
    if (mRules)
        (*mMade)[given.text] = object;
    if (managed && managed->isRegistered() && managed->getName() != given.text) {
        const bool taken = bool(FObjectManager::instance()->find(given.text));
        const FReason why = "the name " + given.text + (taken ? " is taken" : " is no identifier");
        const std::string now = "the object is named " + managed->getName();
        FLogMsg::info("Script", errorAt(given.start, why).toString(), now, &std::cout);
        mRenamings.push_back(errorAt(given.start, why.text() + ": " + now));
    }
    if (mLexer.isSymbol("{"))
        block(object);
    else if (mLexer.isSymbol(";"))
        mLexer.take();
    else
        expected("\";\" or \"{\" behind the creator of " + given.text);
    mLast = FExprBase(object);
    return object;
}

void FScriptReader::block(const std::shared_ptr<FObject> &object)
{
    const Nesting nesting(this);
    mLexer.take();
    while (!mLexer.isSymbol("}")) {
        if (mLexer.peek().kind == FScriptToken::End)
            expected("\"}\"");
        const int depth = mDepth;
        try {
            if (mLexer.isSymbol(".")) {
                member(object);
            } else if (mLexer.isSymbol(";")) {
                mLexer.take();
            } else if (creatorAhead()) {
                const std::shared_ptr<FObject> child = creator();
                if (object && child)
                    object->adoptChild(child);
            } else {
                expected("\".\" and an attribute, or \"}\"");
            }
        } catch (const Failure &) {
            mDepth = depth;
            const size_t before = mLexer.peek().start;
            mLexer.skipStatement();
            if (mLexer.peek().start == before && !mLexer.isSymbol("}") &&
                mLexer.peek().kind != FScriptToken::End)
                mLexer.take();
        }
    }
    mLexer.take();
}

void FScriptReader::member(const std::shared_ptr<FObject> &object)
{
    const size_t offset = mLexer.peek().start;
    const bool isEntry = mRules && mRules->knowsProject() && mLexer.second().text == "setEntry";
    mConfiguration = isEntry ? object : nullptr;
    mEntry = nullptr;
    mUnknown.clear();
    FExprBase value(object);
    value = postfix(value);
    expectSymbol(";", "\";\" behind the attribute");
    if (!noteMissing(offset))
        execute(value, offset);
    mConfiguration = nullptr;
}

std::vector<FExprBase> FScriptReader::arguments()
{
    const bool inList = mLexer.inList();
    mLexer.setInList(false);
    std::vector<FExprBase> args;
    mLexer.take(); // (
    while (!mLexer.isSymbol(")")) {
        if (!args.empty())
            expectSymbol(",", "\",\" or \")\" in the arguments");
        args.push_back(parse(0));
        if (mConfiguration && !mEntry)
            mEntry = args.back();
        if (!mLexer.isSymbol(",") && !mLexer.isSymbol(")"))
            expected("\",\" or \")\" behind the argument");
    }
    mLexer.setInList(inList);
    mLexer.take();
    return args;
}

FExprBase FScriptReader::parse(int minimum)
{
    const Nesting nesting(this);
    FExprBase left = unary();
    for (;;) {
        const FScriptToken &token = mLexer.peek();
        if (minimum <= 1 && mLexer.isSymbol("?")) {
            const size_t offset = mLexer.take().start;
            const FExprBase yes = parse(1);
            expectSymbol(":", "\":\" of the condition");
            const FExprBase no = parse(1);
            std::string unfit;
            left = FOperators::make("?", {left, yes, no}, &unfit);
            if (!left)
                failAt(offset, FReason::unexpected("a value", unfit));
            continue;
        }
        const int own = token.kind == FScriptToken::Symbol || token.kind == FScriptToken::Name
                            ? FOperators::precedence(token.text)
                            : 0;
        if (own == 0 || own < minimum)
            return left;
        const FScriptToken symbol = mLexer.take();
        const FExprBase right = parse(FOperators::isRightAssociative(symbol.text) ? own : own + 1);
        std::string unfit;
        left = FOperators::make(symbol.text, {left, right}, &unfit);
        if (!left)
            failAt(symbol.start,
                   FReason::unexpected("a value beside \"" + symbol.text + "\"", unfit));
    }
}

FExprBase FScriptReader::unary()
{
    const bool isNot = mLexer.isName("not");
    if (isNot || mLexer.isSymbol("-") || mLexer.isSymbol("+")) {
        const FScriptToken symbol = mLexer.take();
        const bool literal = mLexer.peek().kind == FScriptToken::Number;
        const FExprBase operand = parse(isNot ? 4 : 9);
        if (symbol.text == "+")
            return operand;
        if (literal && symbol.text == "-" && operand && !operand.isExpression()) {
            // A negative number is a literal, not an operation.
            if (const auto d = operand.ptr<FDouble>())
                return FExprBase(f_make_shared<FDouble>(-d->value()));
            if (const auto i = operand.ptr<FInteger>())
                return FExprBase(f_make_shared<FInteger>(-i->value()));
        }
        std::string unfit;
        const FExprBase node = FOperators::make(symbol.text, {operand}, &unfit);
        if (!node)
            failAt(symbol.start,
                   FReason::unexpected("a value behind \"" + symbol.text + "\"", unfit));
        return node;
    }
    return postfix(primary());
}

FExprBase FScriptReader::postfix(FExprBase value)
{
    while (mLexer.isSymbol(".")) {
        mLexer.take();
        if (mLexer.peek().kind != FScriptToken::Name)
            expected("the name of a command behind \".\"");
        const FScriptToken word = mLexer.take();
        if (!mLexer.isSymbol("("))
            expected("\"(\" behind " + word.text);
        value = call(value, word);
    }
    return value;
}

FExprBase FScriptReader::call(const FExprBase &receiver, const FScriptToken &word)
{
    const std::vector<FExprBase> args = arguments();
    const std::string wanted = "an object to call " + word.text + " on";
    if (!receiver)
        failAt(word.start, FReason::unexpected(wanted, "nothing"));
    if (receiver.valueClass()->isA(FWord::staticClass()))
        failAt(word.start, FReason::unexpected(wanted, "the unknown name " + receiver.toString()));
    // A parameter is an object with commands of its own, besides standing for its value.
    const FClassInfo &klass =
        receiver.isExpression() ? *receiver.valueClass() : receiver.getExpr()->classInfo();
    auto candidates = FCmdManager::instance()->getByReceiver(klass, word.text);
    if (candidates.empty())
        if (const auto list = receiver.ptr<FObjectList>())
            if (const auto first = list->getObject(0).getPtr())
                candidates = FCmdManager::instance()->getByReceiver(first->classInfo(), word.text);
    if (candidates.empty())
        failAt(word.start, FReason::unexpected(std::string("a command of ") + klass.name,
                                               "\"" + word.text + "\""));
    keepAllowed(&candidates, word.start, word.text);
    FReason why;
    const auto info = FCommands::pick(candidates, args, &why);
    if (!info)
        failAt(word.start, why.about(word.text));
    if (mRules && !info->isPure() && !isOwn(receiver))
        failAt(word.start,
               FReason::unexpected("data only, as this comes from elsewhere",
                                   "the command \"" + word.text + "\" on what is there already"));
    const auto node = FCmd::make(info);
    node->setReceiver(receiver);
    node->setArguments(args);
    return FExprBase(node);
}

FExprBase FScriptReader::list()
{
    const bool inList = mLexer.inList();
    mLexer.setInList(true);
    mLexer.take(); // [
    auto objects = f_make_shared<FObjectList>(nullptr, 0U);
    bool behindComma = false;
    while (!mLexer.isSymbol("]")) {
        if (objects->count() >= kMaxList)
            failAt(mLexer.peek().start,
                   "a list of more than " + fromNumber((unsigned long)kMaxList, 10) + " elements");
        if (mLexer.isSymbol(",")) // an empty element
            objects->append(FExprBase());
        else
            objects->append(parse(0));
        behindComma = mLexer.isSymbol(",");
        if (behindComma)
            mLexer.take();
        else if (!mLexer.isSymbol("]"))
            expected("\",\" or \"]\" in the list");
    }
    if (behindComma)
        objects->append(FExprBase());
    mLexer.setInList(inList);
    mLexer.take();
    return FExprBase(objects);
}

FExprBase FScriptReader::primary()
{
    const FScriptToken &token = mLexer.peek();
    switch (token.kind) {
    case FScriptToken::Number: {
        double value;
        if (!parseNumber(token.text, &value))
            expected("a number within range");
        const bool whole = token.whole && value <= 2147483647.0;
        mLexer.take();
        return whole ? FExprBase(f_make_shared<FInteger>(int(value)))
                     : FExprBase(f_make_shared<FDouble>(value));
    }
    case FScriptToken::Text: {
        return FExprBase(f_make_shared<FString>(mLexer.take().text));
    }
    case FScriptToken::Name:
        return name();
    case FScriptToken::Symbol:
        if (mLexer.isSymbol("["))
            return list();
        if (mLexer.isSymbol("(")) {
            const bool inList = mLexer.inList();
            mLexer.setInList(false);
            mLexer.take();
            const FExprBase value = parse(0);
            if (!mLexer.isSymbol(")"))
                expected("\")\"");
            mLexer.setInList(inList);
            mLexer.take();
            return value;
        }
        break;
    case FScriptToken::End:
    case FScriptToken::Bad:
        break;
    }
    expected("a value");
}

FExprBase FScriptReader::name()
{
    const FScriptToken word = mLexer.take();
    if (word.text == "true" || word.text == "false")
        return FExprBase(f_make_shared<FBool>(word.text == "true"));
    if (word.text == "nullptr")
        return FExprBase();
    if (mLexer.isSymbol("(")) {
        const auto function = FOperators::function(word.text);
        auto candidates = FCmdManager::instance()->globals(word.text);
        if (function)
            candidates.insert(candidates.begin(), function);
        if (candidates.empty())
            failAt(word.start, FReason::unexpected("a function", "\"" + word.text + "\""));
        keepAllowed(&candidates, word.start, word.text);
        const std::vector<FExprBase> args = arguments();
        FReason why;
        const auto info = FCommands::pick(candidates, args, &why);
        if (!info)
            failAt(word.start, why.about(word.text));
        const auto node = FCmd::make(info);
        node->setArguments(args);
        return FExprBase(node);
    }
    if (const auto object = findObject(word.text))
        return FExprBase(object);
    if (word.text == "nan")
        return FExprBase(f_make_shared<FDouble>(quietNan()));
    if (word.text == "inf")
        return FExprBase(f_make_shared<FDouble>(std::numeric_limits<double>::infinity()));
    if (mConfiguration)
        mUnknown.push_back(word.text);
    return FExprBase(f_make_shared<FWord>(word.text));
}

/// True if the present entry refers to what isn't there, which is noted.
bool FScriptReader::noteMissing(size_t offset)
{
    if (mUnknown.empty())
        return false;
    std::string names;
    for (const std::string &name : std::exchange(mUnknown, {}))
        names += (names.empty() ? "" : ", ") + name;
    mMissing.push_back({errorAt(offset, FReason("the project has no object called " + names)),
                        mConfiguration, mEntry.toPlainString()});
    return true;
}

bool FScriptReader::isOwn(const FExprBase &receiver) const
{
    return std::any_of(
        mMade->begin(), mMade->end(),
        [&](const auto &made) { return made.second == receiver.getExpr(); });
}

void FScriptReader::keepAllowed(Candidates *candidates, size_t offset, const std::string &word)
{
    if (!mRules)
        return;
    const auto end = std::remove_if(candidates->begin(), candidates->end(),
                                    [&](const auto &info) { return !mRules->allows(*info); });
    candidates->erase(end, candidates->end());
    if (candidates->empty())
        failAt(offset, FReason::unexpected("data only, as this comes from elsewhere",
                                           "the command \"" + word + "\""));
}

std::shared_ptr<FObject> FScriptReader::findObject(const std::string &name) const
{
    if (!mRules)
        return FObjectManager::instance()->find(name);
    const auto at = mMade->find(name);
    if (at != mMade->end())
        return at->second;
    return mRules->knowsProject() ? FObjectManager::instance()->find(name) : nullptr;
}

FExprBase FScript::parseExpression(const std::string &text, std::vector<FScriptError> *errors,
                                   const FImportRules *rules)
{
    FScriptReader reader(text, "expression");
    reader.setLogging(false);
    reader.setRules(rules);
    const FExprBase value = reader.expression();
    if (errors)
        *errors = reader.errors();
    return value;
}
