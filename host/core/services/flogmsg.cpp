// SPDX-License-Identifier: Apache-2.0
#include "flogmsg.h"

#include <iostream>
#include <mutex>

namespace {
struct Log
{
    std::mutex mutex;
    std::vector<FLogMsg::Message> messages;
    size_t errors = 0;
    std::ostream *console = &std::cerr;
    std::function<void(const FLogMsg::Message &)> listener;
};
Log &theLog()
{
    static Log log;
    return log;
}
void add(FLogMsg::Message message, bool echo)
{
    Log &log = theLog();
    std::function<void(const FLogMsg::Message &)> listener;
    {
        const std::lock_guard<std::mutex> lock(log.mutex);
        log.errors += message.level == FLogMsg::Level::Error;
        if (log.console && (echo || message.level == FLogMsg::Level::Error)) {
            *log.console << message.source << ": " << message.message;
            if (!message.details.empty())
                *log.console << " (" << message.details << ")";
            *log.console << std::endl;
        }
        log.messages.push_back(message);
        listener = log.listener;
    }
    if (listener)
        listener(message);
}
} // namespace

void FLogMsg::info(const std::string &source, const std::string &message,
                   const std::string &details, std::ostream *stream)
{
    add({Level::Info, source, message, details}, stream != nullptr);
}

void FLogMsg::error(const std::string &source, const std::string &message,
                    const std::string &details, std::ostream *stream)
{
    add({Level::Error, source, message, details}, stream != nullptr);
}

std::vector<FLogMsg::Message> FLogMsg::messages()
{
    const std::lock_guard<std::mutex> lock(theLog().mutex);
    return theLog().messages;
}

size_t FLogMsg::errorCount()
{
    const std::lock_guard<std::mutex> lock(theLog().mutex);
    return theLog().errors;
}

size_t FLogMsg::count()
{
    const std::lock_guard<std::mutex> lock(theLog().mutex);
    return theLog().messages.size();
}

FLogMsg::Message FLogMsg::last()
{
    const std::lock_guard<std::mutex> lock(theLog().mutex);
    return theLog().messages.empty() ? Message{Level::Info, {}, {}, {}} : theLog().messages.back();
}

void FLogMsg::clear()
{
    const std::lock_guard<std::mutex> lock(theLog().mutex);
    theLog().messages.clear();
    theLog().errors = 0;
}

void FLogMsg::setConsole(std::ostream *console)
{
    const std::lock_guard<std::mutex> lock(theLog().mutex);
    theLog().console = console;
}

void FLogMsg::setListener(std::function<void(const Message &)> listener)
{
    const std::lock_guard<std::mutex> lock(theLog().mutex);
    theLog().listener = std::move(listener);
}
