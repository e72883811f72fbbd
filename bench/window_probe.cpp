// SPDX-License-Identifier: Apache-2.0
// Work of the window, each in a process of its own:
//   empty              an empty Qt window to its first paint
//   start PROJECT      the program's window to the moment when the project is open and painted
//   edit PROJECT NAME  one parameter changes, all is shown: milliseconds of the GUI thread
//   scene FILE         60 items in each quadrant laid out and painted: milliseconds
//   runs PROJECT       all designs run: milliseconds of the GUI thread for each, and for a frame of
//                      the scrolled table
//   log COUNT          milliseconds to take and show COUNT messages, and for a frame while scrolled
//   idle PROJECT       MiB of an idle window
#include "fchanges.h"
#include "fdesignspage.h"
#include "fdispatcher.h"
#include "fgenintcomputation.h"
#include "fgenintresultsfile.h"
#include "fini.h"
#include "flogmsg.h"
#include "fmainwindow.h"
#include "fobjectmanager.h"
#include "fprojectcontrol.h"
#include "fruncontrol.h"
#include "fsoftconlayout.h"
#include "fsoftconlooks.h"
#include "fsoftconscene.h"
#include "fsoftconview.h"
#include "fsoftwareconnector.h"
#include "ftheme.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QScrollBar>
#include <QTableView>
#include <QTemporaryDir>
#include <cstdio>
#include <ctime>

namespace {
double threadMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

void turn()
{
    for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents();
}

/// Milliseconds of a frame while a view is scrolled from its start to its end.
double frame(QAbstractItemView *view)
{
    constexpr int kFrames = 60;
    QScrollBar *bar = view->verticalScrollBar();
    const double begin = threadMilliseconds();
    for (int i = 0; i <= kFrames; ++i) {
        bar->setValue(bar->maximum() * i / kFrames);
        view->viewport()->repaint();
    }
    return (threadMilliseconds() - begin) / kFrames;
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
        turn();
    }
    void open(const QString &project) const
    {
        if (!FProjectControl::instance()->open(project))
            std::exit(1);
        turn();
        window->grab(); // painted whole
    }
    std::unique_ptr<FMainWindow> window;
};

int edit(const QString &project, const QString &name)
{
    const Window window;
    window.open(project);
    double most = 0;
    for (int i = 1; i <= 10; ++i) {
        const double begin = threadMilliseconds();
        FDispatcher::script(S(name + ".setValue(" + QString::number(i) + ");"));
        turn();
        most = qMax(most, threadMilliseconds() - begin);
    }
    std::printf("%.3f\n", most);
    return 0;
}

int scene(const QString &file)
{
    const Window window;
    FProjectControl::instance()->newProject();
    FDispatcher::create("genericIntegrationComputation", "many");
    const auto computation = getManageds<FGenIntComputation>().front().getPtr();
    computation->openSoftwareConnector();
    turn();
    const auto connector = FSoftwareConnector::of(computation.get());
    FSoftConScene *scene = connector->scene();
    QTemporaryDir folder;
    QStringList files;
    for (int i = 0; i < 60; ++i) {
        files << QStringLiteral("%1/file%2.dat").arg(folder.path()).arg(i);
        QFile::copy(file, files.back());
    }
    scene->createItems(files, FExpr<FObject>(FInputFile::mpNull), QString(), false);
    scene->createItems(files, FExpr<FObject>(FGenIntResultsFile::mpNull), QString(), false);
    scene->createItems(files, FExpr<FObject>(FResultsFileName::mpNull), QString(), false);
    for (int i = 0; i < 60; ++i)
        scene->addExport();
    turn();
    double least = 1e9;
    for (int i = 0; i < 10; ++i) {
        const double begin = threadMilliseconds();
        scene->calcItemRatios();
        scene->redraw();
        connector->overviewView()->viewport()->repaint();
        least = qMin(least, threadMilliseconds() - begin);
    }
    std::printf("%.3f\n", least);
    return 0;
}

int runs(const QString &project)
{
    const Window window;
    window.open(project);
    window.window->showDesigns();
    turn();
    FRunControl *control = FRunControl::instance();
    const size_t designs = FDesign::all().size();
    const double begin = threadMilliseconds();
    control->runAll();
    while (!control->isIdle())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    turn();
    const double each = (threadMilliseconds() - begin) / double(designs);
    std::printf("%.3f %.3f\n", each, frame(window.window->designs()->table()));
    return control->failedDesigns().empty() ? 0 : 1;
}

int log(int count)
{
    const Window window;
    FProjectControl::instance()->newProject();
    window.window->showPanel(QStringLiteral("messages"));
    const double begin = threadMilliseconds();
    for (int i = 0; i < count; ++i)
        FLogMsg::info("source", "message " + std::to_string(i), "details", nullptr);
    turn();
    const double all = threadMilliseconds() - begin;
    auto *view = window.window->findChild<QAbstractItemView *>(QStringLiteral("messages"));
    std::printf("%.3f %.3f\n", all, frame(view));
    return 0;
}

int idle(const QString &project)
{
    const Window window;
    window.open(project);
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 1;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:"))
            std::printf("%.1f\n", line.mid(6).trimmed().split(' ').front().toDouble() / 1024);
    return 0;
}
} // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments().mid(1);
    const QString what = arguments.value(0);
    if (what == "empty") {
        QWidget window;
        window.resize(1440, 900);
        window.show();
        turn();
        window.grab();
        return 0;
    }
    if (what == "start") {
        const Window window;
        window.open(arguments.value(1));
        std::_Exit(0); // the start is measured, not the end
    }
    return what == "edit"    ? edit(arguments.value(1), arguments.value(2))
           : what == "scene" ? scene(arguments.value(1))
           : what == "runs"  ? runs(arguments.value(1))
           : what == "log"   ? log(arguments.value(1).toInt())
           : what == "idle"  ? idle(arguments.value(1))
                             : 2;
}
