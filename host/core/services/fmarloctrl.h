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
    void setLoadingProject(bool loading) { mLoading = loading; }
    /// True when no text change may be recorded: during undo, redo and loading.
    bool isBusy() const;
    QString getFObjectMimeType() const { return QStringLiteral("application/x-turnbuckle-object"); }
    std::string productName() const { return "Turnbuckle"; }
    std::string applicationName() const { return "Turnbuckle"; }

private:
    bool mLoading = false;
};

/// Raises the loading flag for its lifetime and restores what was before.
class FLoadingScope
{
public:
    FLoadingScope()
        : mBefore(FMarloCtrl::instance()->isLoadingProject())
    {
        FMarloCtrl::instance()->setLoadingProject(true);
    }
    ~FLoadingScope();
    FLoadingScope(const FLoadingScope &) = delete;
    FLoadingScope &operator=(const FLoadingScope &) = delete;

private:
    bool mBefore;
};
#endif
