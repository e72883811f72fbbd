// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTCOMMANDFILE_H
#define FGENINTCOMMANDFILE_H
#include "fgenintfile.h"

class FGenIntExpander;

/// An input file of the external program as a template: text with <entry>name</entry> tags.
class FGenIntCommandFile : public FGenIntFile
{
    F_CLASS(FGenIntCommandFile, FGenIntFile)
public:
    explicit FGenIntCommandFile(std::string name = std::string())
        : FGenIntFile(std::move(name))
    {
    }
    static std::shared_ptr<FGenIntCommandFile> create(const std::string &name);

    /// All names of tags, each once, in order of first appearance. Marks match case.
    std::vector<QString> getEntryNames() const;
    /// Renames tags, whatever the case of mark and name.
    void updateFile(const QString &oldName, const QString &newName);
    /// The template made ready for writing; kept while the text stays.
    const FGenIntExpander &expander() const;

    static void initCmds();

private:
    mutable std::shared_ptr<const FGenIntExpander> mExpander;
};
#endif
