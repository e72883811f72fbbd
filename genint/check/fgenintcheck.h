// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTCHECK_H
#define FGENINTCHECK_H
#include "fmanaged.h"

/// One thing that would go wrong in a run, or might.
struct FGenIntFinding
{
    enum Severity { Error, Hint };
    Severity severity = Error;
    std::string object, className; ///< what the finding is about
    std::string file;              ///< of a template by its file name, or the project; may be empty
    int line = 0, column = 0;      ///< from 1, in characters; 0 where there is none
    std::string message;
    std::string found, expected; ///< either may be empty

    // Shorthands for whoever makes findings
    FGenIntFinding &in(const QString &fileName);
    FGenIntFinding &at(int atLine, int atColumn);
    FGenIntFinding &between(std::string whatFound, std::string whatExpected);

    /// One line: "error: OBJECT, FILE:LINE:COLUMN: message (found ..., expected ...)".
    std::string toString() const;
    bool operator==(const FGenIntFinding &other) const;
};

/// Collects findings.
class FGenIntFindings
{
public:
    /// The references are valid until the next finding.
    FGenIntFinding &error(const FManaged &object, std::string message);
    FGenIntFinding &hint(const FManaged &object, std::string message);
    FGenIntFinding &add(FGenIntFinding::Severity severity, std::string object,
                        std::string className, std::string message);
    std::vector<FGenIntFinding> take() { return std::move(mList); }

private:
    std::vector<FGenIntFinding> mList;
};

/// Tells what would go wrong in the loaded project, before anything is run.
///
/// Starts no program, writes no file, leaves the project as it is.
class FGenIntCheck
{
public:
    /// All findings: of the project file first, then object by object in the order of their
    /// registration, each by place.
    static std::vector<FGenIntFinding> run();
};
#endif
