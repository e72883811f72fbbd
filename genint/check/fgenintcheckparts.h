// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTCHECKPARTS_H
#define FGENINTCHECKPARTS_H
#include "fdefinitiongenint.h"
#include "fdesign.h"
#include "fgenintcheck.h"
#include "fgenintcommandfile.h"
#include "fgenintresultsfile.h"

#include <unordered_set>

class FConfigurationGenInt;
class FExternComputation;
class FGenIntComputation;

/// Tells line and column of positions in a text; quick for positions that ascend.
class FGenIntTextPlaces
{
public:
    explicit FGenIntTextPlaces(const QString &text)
        : mText(text)
    {
    }
    int lineOf(int position);
    /// Characters from the start of the line; a surrogate pair is one.
    int columnOf(int position);

private:
    const QString &mText;
    int mPosition = 0, mLine = 1, mLineStart = 0;
};

/// What depends on what: cycles, and values that can't be known before a run.
class FGenIntDependencies
{
public:
    FGenIntDependencies();
    /// Each cycle as a closed way along suppliers, by names: "a", "b", "a".
    struct Cycle
    {
        const FManaged *object = nullptr; ///< that the cycle is told of
        std::vector<std::string> way;
    };
    const std::vector<Cycle> &cycles() const { return mCycles; }
    /// True if the value can be looked at now: it needs no run, stands in no cycle, and no command
    /// that changes something is part of it.
    bool isKnown(const FExprBase &value) const;

private:
    void spread(std::vector<FObject *> from);
    void findCycles(const std::vector<FObject *> &nodes);
    void addCycle(const std::vector<FObject *> &members);
    std::unordered_set<const FObject *> mUnknown;
    std::vector<Cycle> mCycles;
};

/// The checks by topic.
namespace FGenIntCheckParts {
/// Text in quotes for messages, on one line, shortened.
std::string shown(const QString &text, int length = 60);
std::string counted(qint64 count, const char *one, const char *many);
/// What is called \p name in \p names, or much like it; else all of them, if these are few.
std::string alike(const QString &name, const std::vector<QString> &names, const char *what);

/// Line ends, encoding, file name: the same for templates of both kinds.
void checkFile(const FGenIntFile &file, FGenIntFindings *findings);
/// The marks of tags, which hold whatever entries there are.
void checkMarks(const FGenIntCommandFile &file, FGenIntFindings *findings);
/// The names in tags, and entries without a tag.
void checkEntries(FDefinitionGenInt &definition, FGenIntFindings *findings);
void checkRules(const FGenIntResultsFile &file, FGenIntFindings *findings);
/// Samples that are missing, told once.
void checkSamples(FGenIntFindings *findings);
void checkUse(FGenIntFindings *findings);
void checkProgram(const FExternComputation &computation, FGenIntFindings *findings);
void checkConfiguration(const FConfigurationGenInt &configuration,
                        const FGenIntDependencies &dependencies, FGenIntFindings *findings);
void checkParameter(const FParameter &parameter, const FGenIntDependencies &dependencies,
                    FGenIntFindings *findings);
void checkDesign(const FDesign &design, const FGenIntDependencies &dependencies,
                 FGenIntFindings *findings);
/// What a run writes into its folder. Also tells whether the file for standard input is among it.
void checkRunFolder(const FGenIntComputation &computation, const FGenIntDependencies &dependencies,
                    FGenIntFindings *findings);
} // namespace FGenIntCheckParts
#endif
