// SPDX-License-Identifier: Apache-2.0
// Work of the editors on long texts, each in a process of its own; milliseconds of the GUI thread:
//   template FILE   a plain text set and painted, the tab opened and painted, a key pressed (95 of
//                   100)
//   sample FILE     the same of a sample with 100 rules; the current value changed and marked (the
//                   slowest of 20)
//   history FILE    MiB that 1,000 edits of a template add to the process
#include "fdispatcher.h"
#include "feditor.h"
#include "fgenintcommandfileeditor.h"
#include "fgenintcomputation.h"
#include "fgenintresultsfileeditor.h"
#include "fhistory.h"
#include "fmainwindow.h"
#include "fobjectmanager.h"
#include "fprojectcontrol.h"
#include "fsoftconlooks.h"
#include "fsoftwareconnector.h"
#include "ftheme.h"

#include <QApplication>
#include <QFile>
#include <QKeyEvent>
#include <QTextStream>
#include <algorithm>
#include <cstdio>
#include <ctime>

namespace {
double threadMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

template <class Do>
double milliseconds(Do what)
{
    const double begin = threadMilliseconds();
    what();
    return threadMilliseconds() - begin;
}

void turn()
{
    for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents();
}

struct Window
{
    Window()
    {
        FObject::initPrototypes();
        FTheme::instance()->setChoice(FTheme::Choice::Light);
        FSoftConLooks::add();
        window = std::make_unique<FMainWindow>();
        FSoftConLooks::addTo(window.get());
        window->resize(1440, 900);
        window->show();
        FProjectControl::instance()->newProject();
        FDispatcher::create("genericIntegrationComputation", "long");
        const auto computation = getManageds<FGenIntComputation>().front().getPtr();
        computation->openSoftwareConnector();
        turn();
        connector = FSoftwareConnector::of(computation.get());
    }
    ~Window() { FHistory::instance()->markClean(); }
    /// Opens the tab of \p file, to its first picture.
    template <class Editor>
    Editor *open(const std::shared_ptr<FGenIntFile> &file, double *time) const
    {
        *time = milliseconds([&] {
            connector->gotoTab(FExpr<FGenIntFile>(file));
            connector->tabWidget()->currentWidget()->grab();
        });
        return qobject_cast<Editor *>(connector->tabWidget()->currentWidget());
    }
    std::unique_ptr<FMainWindow> window;
    std::shared_ptr<FSoftwareConnector> connector;
};

double plain(const QString &text)
{
    QPlainTextEdit edit;
    edit.setLineWrapMode(QPlainTextEdit::NoWrap);
    edit.resize(1000, 700);
    edit.show();
    turn();
    return milliseconds([&] {
        edit.setPlainText(text);
        edit.grab();
    });
}

std::shared_ptr<FGenIntCommandFile> addTemplate(const Window &window, const QString &text)
{
    window.connector->addInputTemplateFromString(S(text), "long.inp");
    turn();
    return getManageds<FGenIntCommandFile>().front().getPtr();
}

int editTemplate(const QString &text)
{
    const double yardstick = plain(text);
    const Window window;
    const auto file = addTemplate(window, text);
    double opened = 0;
    auto *tab = window.open<FGenIntCommandFileEditor>(file, &opened);
    turn();
    std::vector<double> keys;
    for (int i = 0; i < 100; ++i)
        keys.push_back(milliseconds([&] {
            QKeyEvent press(QEvent::KeyPress, Qt::Key_7, {}, QStringLiteral("7"));
            QCoreApplication::sendEvent(tab->editor(), &press);
            tab->editor()->viewport()->repaint();
            turn();
        }));
    std::sort(keys.begin(), keys.end());
    std::printf("%.3f %.3f %.3f\n", yardstick, opened, keys[94]);
    return 0;
}

int editSample(const QString &text)
{
    const double yardstick = plain(text);
    const Window window;
    const auto file = window.connector->addOutputTemplateFromString(S(text), "long.out").getPtr();
    for (int i = 0; i < 100; ++i)
        file->addValue(QStringLiteral("v%1").arg(i), i % 3, i % 4,
                       QStringLiteral("marker%1").arg(i),
                       i % 2 ? QStringLiteral("First") : QStringLiteral("Last"), false, {});
    turn();
    double opened = 0;
    auto *tab =
        window.open<FGenIntResultsFileEditor>(std::static_pointer_cast<FGenIntFile>(file), &opened);
    while (tab->isReading())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    turn();
    double most = 0;
    for (int i = 0; i < 20; ++i)
        most = qMax(most, milliseconds([&] {
                        tab->selectValueViaHeader((i * 37) % 100);
                        tab->editor()->viewport()->repaint();
                        turn();
                    }));
    std::printf("%.3f %.3f %.3f\n", yardstick, opened, most);
    return 0;
}

double residentMebibytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return file.readAll().split(' ').value(1).toDouble() * 4096 / (1 << 20);
}

int history(const QString &text)
{
    const Window window;
    const auto file = addTemplate(window, text);
    QString edited = file->text();
    const double before = residentMebibytes();
    for (int i = 0; i < 1000; ++i) {
        edited.insert((i * 7919) % edited.size(), QLatin1Char('x'));
        file->setContent(edited);
    }
    std::printf("%.3f\n", residentMebibytes() - before);
    return 0;
}
} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QFile file(QString::fromLocal8Bit(argv[argc - 1]));
    if (argc != 3 || !file.open(QIODevice::ReadOnly))
        return 2;
    const QString text = QString::fromUtf8(file.readAll());
    const QByteArray work = argv[1];
    return work == "template" ? editTemplate(text)
           : work == "sample" ? editSample(text)
                              : history(text);
}
