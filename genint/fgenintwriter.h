// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTWRITER_H
#define FGENINTWRITER_H
#include "fconfigurationgenint.h"
#include "fgenintfile.h"

#include <QTextStream>

class FGenIntEntryNames;

/// Expands the input templates of a configuration into the input files of a design.
class FGenIntWriter
{
public:
    using EntryMap = std::map<QString, FExpr<FObject>>;

    /// Appends the name of every tag, in order, duplicates included.
    void getUsedEntries(const FExpr<FGenIntFile> &file, std::vector<QString> &names) const;
    /// Writes \p text with its tags expanded. In a preview a value that would need a run shows its
    /// expression.
    void parse(QTextStream &out, const QString &text, const EntryMap &entries,
               const FExpr<FConfigurationGenInt> &configuration, bool preview,
               bool forceWindowsLineEndings) const;
    /// Writes the input files; \p directory ends in a separator. False if one can't be written.
    bool write(const FExpr<FConfigurationGenInt> &configuration, const QString &directory) const;
    /// The expanded texts under their file names; touches no disk.
    bool write(const FExpr<FConfigurationGenInt> &configuration,
               std::map<std::string, std::string> &preview) const;
};
#endif
