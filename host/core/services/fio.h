// SPDX-License-Identifier: Apache-2.0
#ifndef FIO_H
#define FIO_H
#include <QString>
#include <deque>
#include <functional>
#include <string>

class QWidget;

/// Questions and notices to the user. Without a display every question is answered by its default
/// button at once, and the log says so.
class FIO
{
public:
    static FIO *instance();

    /// Index of the button pressed. An empty text is no button; \p escape is -1 for none.
    int question(QWidget *parent, const std::string &title, const std::string &text,
                 const std::string &button0, const std::string &button1, const std::string &button2,
                 int defaultButton, int escape, bool * = nullptr,
                 const std::string & = std::string());
    int warning(QWidget *parent, const std::string &title, const std::string &text,
                const std::string &button0, const std::string &button1, const std::string &button2,
                int defaultButton, int escape);
    int information(QWidget *parent, const std::string &title, const std::string &text,
                    const std::string &button0, const std::string &button1,
                    const std::string &button2, int defaultButton, int escape);

    struct Request
    {
        std::string kind, title, text, buttons[3];
        int defaultButton, escape;
    };
    /// Who shows dialogs; without one the default is taken.
    using Backend = std::function<int(QWidget *, const Request &)>;
    void setBackend(Backend backend) { mBackend = std::move(backend); }
    /// The answer to the next question that has none yet, for scripts and tests.
    void answerNext(int button) { mAnswers.push_back(button); }

private:
    int ask(QWidget *parent, const Request &request);
    Backend mBackend;
    std::deque<int> mAnswers;
};
#endif
