// SPDX-License-Identifier: Apache-2.0
#include "desktop.h"
#include "fdocumentation.h"
#include "fobject.h"
#include "fproject.h"

#include <CLI/CLI.hpp>
#include <QApplication>
#include <QTextCodec>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>

namespace {
[[noreturn]] void giveUpOnException()
{
    try {
        if (std::current_exception())
            throw;
    } catch (const std::exception &error) {
        std::cerr << "turnbuckle-desktop: " << error.what() << std::endl;
    } catch (...) {
    }
    std::_Exit(1);
}

int runProgram(int argc, char **argv)
{
    FDesktopOptions options;
    CLI::App app("Turnbuckle, the window: couples simulation programs to a parametric model.",
                 "turnbuckle-desktop");
    app.set_version_flag("--version", std::string("turnbuckle-desktop ") + F_VERSION);
    app.add_option("PROJECT", options.project, "project file (.tbk)");
    app.add_option("--theme", options.theme, "light, dark or system")
        ->check(CLI::IsMember({"light", "dark", "system"}));
    app.add_flag("--no-native-dialogs", options.noNativeDialogs,
                 "dialogs of the program itself, for remote displays");
    app.add_flag("--commands-json", options.commandsJson,
                 "print all script commands as JSON and end");
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? 0 : 2;
    }
    if (options.commandsJson && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen"); // needs no display
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs, options.noNativeDialogs);
    int own = 1; // the options are ours, not Qt's
    QApplication application(own, argv);
    QApplication::setApplicationName(QStringLiteral("turnbuckle-desktop"));
    QApplication::setApplicationDisplayName(QStringLiteral("Turnbuckle"));
    QApplication::setApplicationVersion(QStringLiteral(F_VERSION));
    std::setlocale(LC_NUMERIC, "C");
    std::signal(SIGXFSZ, SIG_IGN); // a write beyond the limit of the system is told by errno
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    FDocuTranslator documentation;
    QCoreApplication::installTranslator(&documentation);
    FObject::initPrototypes();
    FProject::instance()->clear();
    const int code = options.commandsJson ? FDesktop::printCommands() : FDesktop::run(options);
    FProject::instance()->clear();
    return code;
}
} // namespace

int main(int argc, char **argv)
{
    std::set_terminate(giveUpOnException);
    try {
        return runProgram(argc, argv);
    } catch (...) {
        giveUpOnException();
    }
}
