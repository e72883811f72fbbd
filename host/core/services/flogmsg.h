// SPDX-License-Identifier: Apache-2.0
#ifndef FLOGMSG_H
#define FLOGMSG_H
#include <QDateTime>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

class FObject;

/// The message log. Messages may come from any thread; FChanges::logChanged tells of them on the
/// main one. The newest kKept are kept.
class FLogMsg
{
public:
    static constexpr size_t kKept = 100000;
    enum class Level { Info, Warning, Error };
    struct Message
    {
        Level level = Level::Info;
        std::string source, message, details;
        QDateTime time;
        std::weak_ptr<FObject> object; ///< that it is about, if any
    };
    /// Notes a message; \p stream asks for an echo on the console.
    static void info(const std::string &source, const std::string &message,
                     const std::string &details, std::ostream *stream);
    static void warning(const std::string &source, const std::string &message,
                        const std::string &details, std::ostream *stream);
    static void error(const std::string &source, const std::string &message,
                      const std::string &details, std::ostream *stream);

    /// Messages that are noted within the lifetime on this thread are about \p object.
    class About
    {
    public:
        explicit About(const FObject *object);
        ~About();
        About(const About &) = delete;
        About &operator=(const About &) = delete;

    private:
        std::weak_ptr<FObject> mBefore;
    };

    static std::vector<Message> messages();
    /// The messages from number \p first on, which counts from 0 since the last clear(); \p next
    /// takes the number of the one to come. Fewer than asked for if the oldest are gone.
    static std::vector<Message> since(size_t first, size_t *next = nullptr);
    static size_t errorCount();
    /// Messages since the last clear(), with those that are no longer kept.
    static size_t count();
    /// The message last noted; empty if there is none.
    static Message last();
    static void clear();
    /// Where echoes and errors appear: standard error unless set; null for nowhere.
    static void setConsole(std::ostream *console);
};
#endif
