// SPDX-License-Identifier: Apache-2.0
#ifndef FCMDMANAGER_H
#define FCMDMANAGER_H
#include "fcmd.h"

#include <QJsonObject>

/// The registry of all commands.
class FCmdManager
{
public:
    using Info = std::shared_ptr<const FCommandInfo>;
    static FCmdManager *instance();

    /// Enters a command, and its prototype under its public name. The public name is unique.
    void add(const std::shared_ptr<FCommandInfo> &info);
    const std::vector<Info> &all() const { return mAll; }
    /// Members and attributes of a name that a class understands: most derived first, hidden ones
    /// left out.
    std::vector<Info> getByReceiver(const FClassInfo &receiver, const std::string &name) const;
    std::shared_ptr<FCmd> getByReceiver(const std::shared_ptr<FObject> &receiver,
                                        const std::string &name, bool) const;
    /// Attributes of a class in the order of registration, base class first.
    std::vector<Info> attributes(const FClassInfo &receiver) const;
    std::vector<std::shared_ptr<FCmd>>
    getAttributesByReceiver(const std::shared_ptr<FObject> &receiver) const;
    std::vector<Info> creators(const std::string &word) const;
    std::vector<Info> globals(const std::string &name) const;
    /// The creator that makes objects of a class, null if none does.
    Info creatorOf(const FClassInfo &made) const;
    /// Takes an inherited command out of a class's view; null arguments are tolerated.
    void hide(const std::shared_ptr<FObject> &receiver, const std::shared_ptr<FObject> &command);
    bool isHidden(const FClassInfo &receiver, const FCommandInfo &command) const;

private:
    std::vector<Info> mAll;
    std::map<std::pair<const FClassInfo *, std::string>, std::vector<Info>> mByReceiver;
    std::map<std::string, std::vector<Info>> mCreators, mGlobals;
    std::map<const FClassInfo *, std::set<const FCommandInfo *>> mHidden;
};

namespace FCommands {
/// Picks the command whose arguments fit the given ones: exact types first, then a whole number
/// for an unsigned or a real one. Null and the reason in \p why if none fits.
FCmdManager::Info pick(const std::vector<FCmdManager::Info> &candidates,
                       const std::vector<FExprBase> &arguments, FReason *why);
/// "setFileName(QString fileName)" for messages and help.
std::string signature(const FCommandInfo &info);
/// "creator", "attribute", "member", "mutableMember" and "global" in lists of commands.
const char *kindName(FCommandKind kind);
/// All that lists tell of a command.
QJsonObject json(const FCommandInfo &info);
} // namespace FCommands
#endif
