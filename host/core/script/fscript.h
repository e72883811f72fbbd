// SPDX-License-Identifier: Apache-2.0
#ifndef FSCRIPT_H
#define FSCRIPT_H
#include "fcmd.h"
#include "fscripterror.h"
#include "fscriptlexer.h"

class FImportRules;
class FManaged;

/// Reads a script and executes it statement by statement. Errors go to the log, with place, found
/// and expected, and the reading goes on with the next statement.
class FScriptReader
{
public:
    static constexpr int kMaxNesting = 100;
    static constexpr size_t kMaxList = 1000000;

    /// \p firstLine: the number of the first line, for a part of a file.
    FScriptReader(std::string source, std::string file, size_t firstLine = 1);

    /// Executes all statements; true if there was no error.
    bool run();
    /// Parses the whole source as one expression, without executing it.
    FExprBase expression();
    const std::vector<FScriptError> &errors() const { return mErrors; }
    /// Objects that got another name than the script gives them.
    const std::vector<FScriptError> &renamings() const { return mRenamings; }
    /// Result of the last statement that was an expression.
    const FExprBase &lastResult() const { return mLast; }
    /// Errors are logged as they come unless this is off.
    void setLogging(bool on) { mLogging = on; }
    /// Takes the script as data from elsewhere: it may say what the rules allow, and knows the
    /// objects only that it has made itself. They must outlive the reader.
    void setRules(const FImportRules *rules) { mRules = rules; }
    /// Objects by the names that scripts of one origin give them; several readers may share one.
    using Known = std::map<std::string, std::shared_ptr<FObject>>;
    void setKnown(Known *known) { mMade = known; }
    /// An entry that wasn't set, under rules that know the project, because it lacks an object that
    /// the value refers to.
    struct Missing
    {
        FScriptError error;
        std::shared_ptr<FObject> configuration;
        std::string entry;
    };
    const std::vector<Missing> &missing() const { return mMissing; }

private:
    struct Failure
    {
    };
    [[noreturn]] void failAt(size_t offset, const FReason &reason);
    [[noreturn]] void expected(const std::string &what);
    void expectSymbol(const char *symbol, const std::string &what);
    void report(size_t offset, const FReason &reason);
    FScriptError errorAt(size_t offset, const FReason &reason) const;
    using Candidates = std::vector<std::shared_ptr<const FCommandInfo>>;
    void keepAllowed(Candidates *candidates, size_t offset, const std::string &word);
    std::shared_ptr<FObject> findObject(const std::string &name) const;

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
    bool noteMissing(size_t offset);
    bool isOwn(const FExprBase &receiver) const;

    struct Nesting
    {
        explicit Nesting(FScriptReader *reader);
        ~Nesting() { --mReader->mDepth; }
        FScriptReader *mReader;
    };

    FScriptLexer mLexer;
    std::string mFile;
    std::vector<FScriptError> mErrors, mRenamings;
    const FImportRules *mRules = nullptr;
    Known mOwn;
    Known *mMade = &mOwn; // under rules only
    std::vector<Missing> mMissing;
    std::vector<std::string> mUnknown;       // names in the entry that is being set
    std::shared_ptr<FObject> mConfiguration; // while an entry is being set
    FExprBase mEntry;
    FExprBase mLast;
    int mDepth = 0;
    bool mLogging = true;
};

namespace FScript {
/// \p text as an expression, null if it is none. Errors go to \p errors or nowhere. With \p rules
/// it is data from elsewhere and refers to no object.
FExprBase parseExpression(const std::string &text, std::vector<FScriptError> *errors = nullptr,
                          const FImportRules *rules = nullptr);
} // namespace FScript
#endif
