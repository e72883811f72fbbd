// SPDX-License-Identifier: Apache-2.0
#include "flogmsg.h"

#include "fchanges.h"
#include "fobject.h"

#include <deque>
#include <iostream>
#include <mutex>

namespace {
struct Log
{
    std::mutex mutex;
    std::deque<FLogMsg::Message> messages;
    size_t dropped = 0; // of the oldest
    size_t errors = 0;
    std::ostream *console = &std::cerr;
};
Log &theLog()
{
    static Log log;
    return log;
}
std::weak_ptr<FObject> &theObject()
{
    thread_local std::weak_ptr<FObject> object;
    return object;
}
void add(FLogMsg::Level level, const std::string &source, const std::string &text,
         const std::string &details, bool echo)
{
    FLogMsg::Message message{level,      source, text, details, QDateTime::currentDateTime(),
                             theObject()};
    Log &log = theLog();
    {
        const std::lock_guard<std::mutex> lock(log.mutex);
        log.errors += level == FLogMsg::Level::Error;
        if (log.console && (echo || level == FLogMsg::Level::Error)) {
            *log.console << source << ": " << text;
            if (!details.empty())
                *log.console << " (" << details << ")";
            *log.console << std::endl;
        }
        log.messages.push_back(std::move(message));
        if (log.messages.size() > FLogMsg::kKept) {
            log.messages.pop_front();
            ++log.dropped;
        }
    }
    FChanges::noteLog();
}
} // namespace

FLogMsg::About::About(const FObject *object)
    : mBefore(theObject())
{
    theObject() =
        object ? std::const_pointer_cast<FObject>(object->weak_from_this().lock()) : nullptr;
}

FLogMsg::About::~About() { theObject() = mBefore; }

void FLogMsg::info(const std::string &source, const std::string &message,
                   const std::string &details, std::ostream *stream)
{
    add(Level::Info, source, message, details, stream != nullptr);
}

void FLogMsg::warning(const std::string &source, const std::string &message,
                      const std::string &details, std::ostream *stream)
{
    add(Level::Warning, source, message, details, stream != nullptr);
}

void FLogMsg::error(const std::string &source, const std::string &message,
                    const std::string &details, std::ostream *stream)
{
    add(Level::Error, source, message, details, stream != nullptr);
}

std::vector<FLogMsg::Message> FLogMsg::messages() { return since(0); }

std::vector<FLogMsg::Message> FLogMsg::since(size_t first, size_t *next)
{
    const Log &log = theLog();
    const std::lock_guard<std::mutex> lock(theLog().mutex);
    if (next)
        *next = log.dropped + log.messages.size();
    const size_t skip = first > log.dropped ? first - log.dropped : 0;
    if (skip >= log.messages.size())
        return {};
    return {log.messages.begin() + std::ptrdiff_t(skip), log.messages.end()};
}

size_t FLogMsg::errorCount()
{
    const std::lock_guard<std::mutex> lock(theLog().mutex);
    return theLog().errors;
}

size_t FLogMsg::count()
{
    const std::lock_guard<std::mutex> lock(theLog().mutex);
    return theLog().dropped + theLog().messages.size();
}

FLogMsg::Message FLogMsg::last()
{
    const std::lock_guard<std::mutex> lock(theLog().mutex);
    return theLog().messages.empty() ? Message() : theLog().messages.back();
}

void FLogMsg::clear()
{
    {
        const std::lock_guard<std::mutex> lock(theLog().mutex);
        theLog().messages.clear();
        theLog().errors = theLog().dropped = 0;
    }
    FChanges::noteLog();
}

void FLogMsg::setConsole(std::ostream *console)
{
    const std::lock_guard<std::mutex> lock(theLog().mutex);
    theLog().console = console;
}
