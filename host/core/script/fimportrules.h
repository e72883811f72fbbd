// SPDX-License-Identifier: Apache-2.0
#ifndef FIMPORTRULES_H
#define FIMPORTRULES_H
#include "fcmd.h"

/// What a script may say that comes from elsewhere: a definition, a set-up, the clipboard.
///
/// Such a script is data. It makes objects of the classes that are named here and fills them by
/// what a saved project holds; its reader knows no object but these (see FScriptReader::setRules).
/// What is allowed follows from the registry, so a new command is refused until it is marked.
class FImportRules
{
public:
    /// With \p knowsProject values may refer to objects of the project, and read from them; still
    /// only what the script itself makes is changed.
    explicit FImportRules(std::vector<const FClassInfo *> classes, bool knowsProject = false)
        : mClasses(std::move(classes))
        , mKnowsProject(knowsProject)
    {
    }
    /// What a copy of objects may say: the classes whose creators are marked so.
    static const FImportRules &copies();
    bool allows(const FCommandInfo &command) const;
    bool knowsProject() const { return mKnowsProject; }

private:
    std::vector<const FClassInfo *> mClasses;
    bool mKnowsProject;
};
#endif
