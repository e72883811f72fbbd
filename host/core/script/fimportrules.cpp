// SPDX-License-Identifier: Apache-2.0
#include "fimportrules.h"

#include "fcmdmanager.h"

#include <algorithm>

const FImportRules &FImportRules::copies()
{
    static const FImportRules sRules = [] {
        std::vector<const FClassInfo *> classes;
        for (const auto &command : FCmdManager::instance()->all())
            if (command->kind == FCommandKind::Creator && command->fills)
                classes.push_back(command->receiver);
        return FImportRules(std::move(classes), true);
    }();
    return sRules;
}

bool FImportRules::allows(const FCommandInfo &command) const
{
    const auto understood = [&](const FClassInfo *made) {
        return command.receiver && made->isA(*command.receiver) &&
               !FCmdManager::instance()->isHidden(*made, command);
    };
    switch (command.kind) {
    case FCommandKind::Creator:
        return std::find(mClasses.begin(), mClasses.end(), command.receiver) != mClasses.end();
    case FCommandKind::Attribute:
        return command.saved && !command.ownProjectOnly &&
               std::any_of(mClasses.begin(), mClasses.end(), understood);
    case FCommandKind::Member:
    case FCommandKind::MutableMember:
        if (mKnowsProject && command.isConst())
            return true;
        return (command.isConst() || command.fills) &&
               std::any_of(mClasses.begin(), mClasses.end(), understood);
    case FCommandKind::Global:
        return command.pure;
    case FCommandKind::Operator:
        return true;
    }
    return false;
}
