// SPDX-License-Identifier: Apache-2.0
#include "cli.h"
#include "fdocumentation.h"
#include "flogmsg.h"
#include "fobject.h"
#include "fproject.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QTextCodec>
#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <functional>
#include <iostream>
#include <unistd.h>

namespace {
/// The last words of a program that can't go on. Files are replaced whole or not at all, and the
/// runners end what they have started, so nothing is left half done.
[[noreturn]] void giveUp(const char *why)
{
    std::cout.flush();
    for (const char *part : {"turnbuckle: ", why, "\n"})
        if (::write(STDERR_FILENO, part, std::strlen(part)) < 0)
            break;
    std::_Exit(kFailed);
}

/// Says what the exception at hand is. Called where memory may be short.
[[noreturn]] void giveUpOnException()
{
    try {
        if (std::current_exception())
            throw;
    } catch (const std::bad_alloc &) {
        giveUp("there is not enough memory");
    } catch (const std::exception &error) {
        giveUp(error.what());
    } catch (...) {
    }
    giveUp("an unexpected error");
}

int runProgram(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName("turnbuckle");
    QCoreApplication::setApplicationVersion(F_VERSION);
    std::setlocale(LC_NUMERIC, "C");
    std::signal(SIGXFSZ, SIG_IGN); // a write beyond the limit of the system is told by errno
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));

    FCliOptions options;
    std::function<int(const FCliOptions &)> action;
    CLI::App app("Couples external simulation programs to a parametric model.", "turnbuckle");
    app.set_version_flag("--version", std::string("turnbuckle ") + F_VERSION);
    app.require_subcommand(1);
    const auto command = [&](const char *name, const char *text,
                             int (*function)(const FCliOptions &)) {
        CLI::App *sub = app.add_subcommand(name, text);
        sub->callback([&action, function] { action = function; });
        return sub;
    };
    const auto project = [&](CLI::App *sub) {
        sub->add_option("PROJECT", options.project, "project file (.tbk)")->required();
        return sub;
    };
    const auto json = [&](CLI::App *sub) {
        sub->add_flag("--json", options.json, "print JSON");
        return sub;
    };
    const auto sets = [&](CLI::App *sub) {
        sub->add_option("--set", options.sets, "NAME=EXPR: give a parameter another value")
            ->allow_extra_args(false);
        return sub;
    };

    CLI::App *run = sets(json(project(command("run", "Run computations.", &FCli::run))));
    run->add_option("--computation", options.computations, "only this one and what it needs")
        ->allow_extra_args(false);
    CLI::Option *design = run->add_option("--design", options.design, "run for this design");
    CLI::Option *all = run->add_flag("--all-designs", options.allDesigns, "run for every design")
                           ->excludes(design);
    run->add_option("--designs", options.designTable,
                    "FILE.csv: run for the designs of a table whose header names parameters")
        ->excludes(design)
        ->excludes(all);
    run->add_option("--table", options.resultTable,
                    "FILE.csv, FILE.tsv: write designs, states and parameters as a table");
    run->add_option("--jobs", options.jobs, "runs at once (default: number of cores)")
        ->check(CLI::Range(1, 10000));
    run->add_option("--timeout", options.timeout, "seconds for each run, 0 for no limit")
        ->check(CLI::Range(0.0, 1e9));
    run->add_flag("--keep-going", options.keepGoing, "go on with other designs after a failure");
    CLI::Option *fresh =
        run->add_flag("--fresh", options.fresh,
                      "run all: of many designs, finished runs with the same inputs else stay");
    run->add_flag("--failed", options.failed, "only designs whose last run failed");
    run->add_flag("--reread", options.reread,
                  "run nothing: read again what finished runs left, by the present rules")
        ->excludes(fresh);
    run->add_option("--retries", options.retries, "start a run that failed N times more")
        ->check(CLI::Range(0, 1000));
    run->add_flag("--trust-program", options.trustProgram,
                  "a program that was replaced gives the same results");
    run->add_option("--keep-free", options.keepFree,
                    "SIZE such as 500M, 2G: start no design with less space on the disk");

    CLI::App *eval = sets(json(project(command("eval", "Evaluate expressions.", &FCli::eval))));
    eval->add_option("EXPRESSION", options.expressions, "expression over the project")->required();

    CLI::App *extract = json(project(
        command("extract", "Apply result templates to files, without a run.", &FCli::extract)));
    extract->add_option("PATH", options.file, "result file or folder")->required();
    extract->add_option("--template", options.templates, "only this result template")
        ->allow_extra_args(false);

    CLI::App *expand = json(project(
        command("expand", "Show the input files as they would be written.", &FCli::expand)));
    expand->add_option("--configuration", options.configuration, "only this configuration");
    expand->add_option("--output", options.output, "folder to write the files to");

    json(project(command("check", "Tell what would go wrong.", &FCli::check)));

    CLI::App *save =
        project(command("save", "Load and save again in canonical form.", &FCli::save));
    save->add_option("--output", options.output, "file to write")->required();

    CLI::App *import = command("import-definition", "Make a project from a saved definition.",
                               &FCli::importDefinition);
    import->add_option("FILE", options.file, "definition or set-up file (.ovdl)")->required();
    import->add_option("--output", options.output, "project file to write")->required();

    CLI::App *exportSetup = project(
        command("export", "Write a coupling, or a chain of them, to a file for another project.",
                &FCli::exportSetup));
    exportSetup->add_option("--computation", options.computations, "the computation")
        ->allow_extra_args(false)
        ->required();
    CLI::Option *chain =
        exportSetup->add_flag("--chain", options.chain, "with all that it is linked to");
    exportSetup->add_flag("--only", options.only, "alone")->excludes(chain);
    exportSetup->add_option("--output", options.output, "set-up file to write (.ovdl)")->required();

    CLI::App *importSetup =
        command("import", "Take a coupling or a chain into a project.", &FCli::importSetup);
    importSetup->add_option("FILE", options.file, "set-up file (.ovdl)")->required();
    importSetup->add_option("--into", options.project, "project that gets it (default: a new one)");
    importSetup->add_option("--output", options.output, "project file to write")->required();

    CLI::App *link = project(
        command("link", "Let a computation take a file that another one leaves.", &FCli::link));
    link->add_option("--from", options.from, "COMPUTATION:FILE: who leaves it")->required();
    link->add_option("--to", options.to,
                     "COMPUTATION[:ENTRY]: who takes it (default: a new entry Exports|FILE)")
        ->required();
    link->add_option("--output", options.output, "project file to write")->required();

    CLI::App *graph = project(command(
        "graph", "Show computations, and what flows between them, as a picture.", &FCli::graph));
    CLI::Option *dot = graph->add_flag("--dot", options.dot, "for Graphviz (default: plain text)");
    CLI::Option *svg = graph->add_flag("--svg", options.svg, "a picture")->excludes(dot);
    graph->add_flag("--json", options.json, "nodes and edges as JSON")
        ->excludes(dot)
        ->excludes(svg);
    graph->add_option("--output", options.output, "file to write (default: standard output)");

    project(command("pack", "Make one file of a project that is a folder.", &FCli::pack))
        ->add_option("--output", options.output, "project file to write (.tbk)")
        ->required();
    project(command("unpack",
                    "Make a folder of a project, with its templates and samples as plain files.",
                    &FCli::unpack))
        ->add_option("--output", options.output, "folder to write")
        ->required();

    CLI::App *add = project(command(
        "add", "Put a file into a project byte for byte, or make a project with it.", &FCli::add));
    CLI::Option *input =
        add->add_option("--template", options.templateFile, "FILE: an input file of the program");
    add->add_option("--sample", options.sample, "FILE: a result file of the program, as a sample")
        ->excludes(input);
    add->add_option("--as", options.as, "NAME of the file in the run folder (default: its own)");
    add->add_option("--definition", options.definition, "NAME of the definition that gets it");
    add->add_option("--program", options.program, "the command line, as in \"ccx -i beam\"");

    json(command("commands", "List the script commands.", &FCli::commands))
        ->add_flag("--markdown", options.markdown, "print the script reference");
    CLI::App *help =
        command("help", "Tell about script words, tags, rules and notes.", &FCli::help);
    help->add_option("TOPIC", options.topic, "a command, class or function; tags, rules or notes");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return FCli::finish(app.exit(error) == 0 ? kDone : kUsage);
    }
    if (options.json)
        FLogMsg::setConsole(nullptr); // the log is part of the JSON
    FDocuTranslator documentation;
    QCoreApplication::installTranslator(&documentation);
    FObject::initPrototypes();
    FProject::instance()->clear();
    const int code = action(options);
    if (options.json)
        FCli::printLogIfSilent();
    FProject::instance()->clear();
    return FCli::finish(code);
}
} // namespace

int main(int argc, char **argv)
{
    // The next file that is opened would else stand in for a stream that was closed.
    for (int stream = 0; stream <= STDERR_FILENO; ++stream)
        if (::fcntl(stream, F_GETFD) < 0 && ::open("/dev/null", O_RDONLY) < 0)
            giveUp("no file can be opened");
    // Exceptions that meet code which passes none on, such as event handlers, end there.
    std::set_terminate(giveUpOnException);
    try {
        return runProgram(argc, argv);
    } catch (...) {
        giveUpOnException();
    }
}
