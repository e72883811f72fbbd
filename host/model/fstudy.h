// SPDX-License-Identifier: Apache-2.0
#ifndef FSTUDY_H
#define FSTUDY_H
#include "fexterncomputation.h"
#include "fplainvalue.h"
#include "frunstore.h"

#include <map>
#include <set>

class FRunQueue;

/// Designs, the computations that run for each of them, and what has come of it: for each design
/// the records of its runs, the parameters after the last of them, and what is doubtful.
class FStudy
{
public:
    using Computations = std::vector<std::shared_ptr<FExternComputation>>;
    using Designs = std::vector<std::shared_ptr<FDesign>>;

    /// What runs for \p design when \p asked are to run: they all, in their order, and before each
    /// the ones that it needs and that are out of date. Without a design all that it needs.
    static Computations chain(const Computations &asked, const std::shared_ptr<FDesign> &design);

    FStudy(Designs designs, const Computations &asked);
    const Designs &designs() const { return mDesigns; }
    void addTo(FRunQueue *queue) const;

    using Table = FRunStore::Table;
    /// The values of a computation for the design that is evaluated; none before its first run.
    static std::vector<Table> tablesOf(const FExternComputation &computation);

    enum State {
        NotRun,
        Running,
        UpToDate,
        Stale,   ///< ran, and inputs changed since
        Earlier, ///< ran in an earlier session: what changed since is not known
        Failed
    };
    struct Cell
    {
        State state = NotRun;
        std::string reason; ///< of the last run, in words
        std::vector<Table> tables;
    };
    /// What there is of a computation for a design, from this session or an earlier one.
    static Cell cell(const std::shared_ptr<FExternComputation> &computation,
                     const std::shared_ptr<FDesign> &design);

    /// To be called after each run, with its design still the current one. Gives its values. Of a
    /// run that is told again the later record counts.
    std::vector<Table> note(const FRunRecord &record);

    struct Row
    {
        Computations chain;
        std::vector<FRunRecord> runs;                  ///< as they ended
        std::map<std::string, FPlainValue> parameters; ///< by name; empty until the last run ended
        std::vector<std::string> doubts;               ///< about values
        std::vector<std::string> failures;             ///< parameters that can't be evaluated
        bool isComplete = false;                       ///< the last run has ended
    };
    /// Of a design of this study.
    const Row &row(const std::string &design) const;
    /// Parameters in their order.
    const std::vector<std::string> &parameters() const { return mParameters; }
    /// Designs whose runs are all done.
    size_t completed() const;
    /// Each failure, and each doubt with \p withValues, with the number of designs that have it, in
    /// the order of the designs.
    std::vector<std::pair<std::string, size_t>> doubts(bool withValues) const;
    /// True if parameters could not be evaluated though nothing that they need failed.
    bool hasFailedParameters() const { return mFailedParameters; }

private:
    void noteParameters(const std::string &design, Row *row);

    Designs mDesigns;
    std::map<std::string, Row> mRows; // by design
    std::vector<std::string> mParameters;
    std::set<std::string> mNames;
    bool mFailedParameters = false;
};
#endif
