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
    explicit FImportRules(std::vector<const FClassInfo *> classes)
        : mClasses(std::move(classes))
    {
    }
    bool allows(const FCommandInfo &command) const;

private:
    std::vector<const FClassInfo *> mClasses;
};
#endif
