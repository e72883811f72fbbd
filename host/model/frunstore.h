// SPDX-License-Identifier: Apache-2.0
#ifndef FRUNSTORE_H
#define FRUNSTORE_H
#include "frunrecord.h"
#include "ftablerow.h"

#include <memory>
#include <optional>
#include <vector>

class FDesign;
class FExternComputation;
class FRunFolder;

/// Records and values of runs, by computation and design, across sessions. They
/// stand as run.json and values.json in the folder of each run; nobody else
/// reads the values there.
class FRunStore
{
public:
    struct Table
    {
        std::string name;
        std::vector<FTableRow> rows;
    };
    struct Run
    {
        FRunRecord record;
        std::vector<Table> tables; ///< of a run that finished; empty if its values are lost
    };

    /// The last run that is recorded; none if there was none. What is broken is
    /// told in the log with its place and counts as missing.
    static std::optional<Run> lookup(const std::shared_ptr<FExternComputation> &computation,
                                     const std::shared_ptr<FDesign> &design);
    /// True if there was a run, and it failed or nobody saw its end.
    static bool hasFailed(const std::shared_ptr<FExternComputation> &computation,
                          const std::shared_ptr<FDesign> &design);
    /// Keeps the values of the run in \p folder.
    static bool write(const FRunFolder &folder, const std::vector<Table> &tables, QString *why);
    /// False with the reason and its place in \p why if \p text holds no values.
    static bool read(const QByteArray &text, std::vector<Table> *tables, std::string *why);
};
#endif
