// SPDX-License-Identifier: Apache-2.0
#ifndef FMARLOCTRL_H
#define FMARLOCTRL_H
#include <QString>
#include <string>

/// The state of the application.
class FMarloCtrl
{
public:
    static FMarloCtrl *instance();

    /// True while a project, a definition or a set-up is being executed: setters skip what the
    /// saved commands do themselves.
    bool isLoadingProject() const { return mLoading; }
    /// True while what is loaded isn't a step that can be undone.
    bool isUnrecorded() const { return mUnrecorded; }
    /// True when no text change may be recorded: during undo, redo and loading.
    bool isBusy() const;
    QString getFObjectMimeType() const { return QStringLiteral("application/x-turnbuckle-object"); }
    std::string productName() const { return "Turnbuckle"; }
    std::string applicationName() const { return "Turnbuckle"; }

private:
    friend class FLoadingScope;
    bool mLoading = false, mUnrecorded = false;
};

/// Raises the loading flag for its lifetime and restores what was before; history records what is
/// loaded only if it is \p recorded.
class FLoadingScope
{
public:
    explicit FLoadingScope(bool recorded = false);
    ~FLoadingScope();
    FLoadingScope(const FLoadingScope &) = delete;
    FLoadingScope &operator=(const FLoadingScope &) = delete;

private:
    bool mBefore, mUnrecordedBefore;
};
#endif
