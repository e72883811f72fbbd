// SPDX-License-Identifier: Apache-2.0
#ifndef FLOGMSG_H
#define FLOGMSG_H
#include <functional>
#include <ostream>
#include <string>
#include <vector>

/// The message log. Messages may come from any thread.
class FLogMsg
{
public:
    enum class Level { Info, Error };
    struct Message
    {
        Level level;
        std::string source, message, details;
    };
    /// Notes a message; \p stream asks for an echo on the console.
    static void info(const std::string &source, const std::string &message,
                     const std::string &details, std::ostream *stream);
    static void error(const std::string &source, const std::string &message,
                      const std::string &details, std::ostream *stream);

    static std::vector<Message> messages();
    static size_t errorCount();
    static size_t count();
    /// The message last noted; empty if there is none.
    static Message last();
    static void clear();
    /// Where echoes and errors appear: standard error unless set; null for nowhere.
    static void setConsole(std::ostream *console);
    static void setListener(std::function<void(const Message &)> listener);
};
#endif
