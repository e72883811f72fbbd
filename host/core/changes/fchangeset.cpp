// SPDX-License-Identifier: Apache-2.0
#include "fchangeset.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

FConcurrentQueue<FChangeResponse> FChangeSet::mChangeResponses;

namespace {
std::function<void(const FChangeResponse &)> &theHandler()
{
    static std::function<void(const FChangeResponse &)> handler;
    return handler;
}
} // namespace

void FChangeSet::processEvents()
{
    const QCoreApplication *application = QCoreApplication::instance();
    if (application && QThread::currentThread() != application->thread()) {
        QTimer::singleShot(0, application, &FChangeSet::processEvents);
        return;
    }
    FChangeResponse response;
    while (mChangeResponses.tryPop(&response))
        if (theHandler())
            theHandler()(response);
}

void FChangeSet::push(int code, const QVariant &payload)
{
    mChangeResponses.push({code, payload});
    processEvents();
}

void FChangeSet::setHandler(std::function<void(const FChangeResponse &)> handler)
{
    theHandler() = std::move(handler);
}
