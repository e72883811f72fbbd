// SPDX-License-Identifier: Apache-2.0
#ifndef FSCRIPT_H
#define FSCRIPT_H
#include "fcmd.h"
#include "fscriptlexer.h"

class FManaged;

/// An error in a script.
struct FScriptError
{
    std::string file;
    size_t line = 0, column = 0;
    std::string text; ///< what was expected and found
    std::string toString() const;
};

/// Reads a script and executes it statement by statement. Errors go to the log, with place, found
/// and expected, and the reading goes on with the next statement.
class FScriptReader
{
public:
    static constexpr int kMaxNesting = 100;
    static constexpr size_t kMaxList = 1000000;

    FScriptReader(std::string source, std::string file);

    /// Executes all statements; true if there was no error.
    bool run();
    /// Parses the whole source as one expression, without executing it.
    FExprBase expression();
    const std::vector<FScriptError> &errors() const { return mErrors; }
    /// Result of the last statement that was an expression.
    const FExprBase &lastResult() const { return mLast; }
    /// Errors are logged as they come unless this is off.
    void setLogging(bool on) { mLogging = on; }

private:
    struct Failure
    {
    };
    [[noreturn]] void failAt(size_t offset, const std::string &text);
    [[noreturn]] void expected(const std::string &what);
    void expectSymbol(const char *symbol, const std::string &what);
    void report(size_t offset, const std::string &text);

    void statement();
    bool keyLine();
    bool creatorAhead() const;
    std::shared_ptr<FObject> creator();
    void block(const std::shared_ptr<FObject> &object);
    void member(const std::shared_ptr<FObject> &object);
    std::vector<FExprBase> arguments();
    FExprBase parse(int minimum);
    FExprBase unary();
    FExprBase postfix(FExprBase value);
    FExprBase primary();
    FExprBase list();
    FExprBase name();
    FExprBase call(const FExprBase &receiver, const FScriptToken &word);
    void execute(const FExprBase &expr, size_t offset);

    struct Nesting
    {
        explicit Nesting(FScriptReader *reader);
        ~Nesting() { --mReader->mDepth; }
        FScriptReader *mReader;
    };

    FScriptLexer mLexer;
    std::string mFile;
    std::vector<FScriptError> mErrors;
    FExprBase mLast;
    int mDepth = 0;
    bool mLogging = true;
};

namespace FScript {
/// \p text as an expression, null if it is none. Errors go to \p errors or nowhere.
FExprBase parseExpression(const std::string &text, std::vector<FScriptError> *errors = nullptr);
} // namespace FScript

class QTextStream;

/// Executes what a stream holds, command by command. Never throws.
class FCmdInput
{
public:
    void setStream(QTextStream &stream) { mStream = &stream; }
    void setFile(const std::string &file) { mFile = file; }
    bool run();

private:
    QTextStream *mStream = nullptr;
    std::string mFile = "script";
};
#endif
