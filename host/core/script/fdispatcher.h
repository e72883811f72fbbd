// SPDX-License-Identifier: Apache-2.0
#ifndef FDISPATCHER_H
#define FDISPATCHER_H
#include "fcmdmanager.h"

/// The one door for scripts that a user types, menus and panels: what is clicked is what the Script
/// page shows and a script replays.
///
/// Each call is one undo step, named by the command and its object. A call that fails or is
/// cancelled leaves nothing. FChanges::executed tells the script line.
class FDispatcher
{
public:
    /// Calls a member or an attribute. With the same \p joinKey, calls that follow each other
    /// without FHistory::endJoin become one step.
    static FResult execute(const FExprBase &receiver, const std::string &command,
                           const std::vector<FExprBase> &arguments = {},
                           const std::string &joinKey = std::string());
    /// The same on each of \p receivers, in one step; nothing happens unless all succeed.
    static FResult execute(const std::vector<FExprBase> &receivers, const std::string &command,
                           const std::vector<FExprBase> &arguments = {},
                           const std::string &joinKey = std::string());
    /// Calls a function that belongs to no object.
    static FResult call(const std::string &function, const std::vector<FExprBase> &arguments = {});
    /// Makes an object by its creator's word.
    static FResult create(const std::string &word, const std::string &name,
                          const std::vector<FExprBase> &arguments = {});
    /// Executes script text as one step. An error, with its place, undoes all of it. \p errors
    /// takes every error if it isn't null.
    static FResult script(const std::string &text,
                          std::vector<struct FScriptError> *errors = nullptr);
};
#endif
