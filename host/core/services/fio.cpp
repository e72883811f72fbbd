// SPDX-License-Identifier: Apache-2.0
#include "fio.h"

#include "flogmsg.h"

FIO *FIO::instance()
{
    static FIO io;
    return &io;
}

int FIO::question(QWidget *parent, const std::string &title, const std::string &text,
                  const std::string &button0, const std::string &button1,
                  const std::string &button2, int defaultButton, int escape, bool *,
                  const std::string &)
{
    return ask(parent,
               {"Question", title, text, {button0, button1, button2}, defaultButton, escape});
}

int FIO::warning(QWidget *parent, const std::string &title, const std::string &text,
                 const std::string &button0, const std::string &button1, const std::string &button2,
                 int defaultButton, int escape)
{
    return ask(parent,
               {"Warning", title, text, {button0, button1, button2}, defaultButton, escape});
}

int FIO::information(QWidget *parent, const std::string &title, const std::string &text,
                     const std::string &button0, const std::string &button1,
                     const std::string &button2, int defaultButton, int escape)
{
    return ask(parent,
               {"Information", title, text, {button0, button1, button2}, defaultButton, escape});
}

int FIO::ask(QWidget *parent, const Request &request)
{
    if (mBackend && mAnswers.empty())
        return mBackend(parent, request);
    int answer = request.defaultButton;
    if (!mAnswers.empty()) {
        answer = mAnswers.front();
        mAnswers.pop_front();
    }
    const bool known = answer >= 0 && answer < 3 && !request.buttons[answer].empty();
    FLogMsg::info(request.kind, request.text,
                  known ? "answered \"" + request.buttons[answer] + "\", there is no display"
                        : "there is no display",
                  nullptr);
    return answer;
}
