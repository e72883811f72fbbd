// SPDX-License-Identifier: Apache-2.0
// Couplings that travel from one project to another.
#include "cli.h"
#include "fconfigurationgenint.h"
#include "fdefinitiongenint.h"
#include "ffilevalues.h"
#include "fgenintfile.h"
#include "fgenintsetup.h"
#include "flogmsg.h"
#include "fobjectmanager.h"
#include "fproject.h"
#include "ftext.h"
#include "fuserfile.h"

#include <iostream>
#include <unistd.h>

namespace {
/// Chain or one alone, as the options say, or as the user answers.
FGenIntSetup::What whatToExport(const FCliOptions &options,
                                const std::shared_ptr<FGenIntComputation> &computation)
{
    const auto chain = FGenIntSetup::chainOf(computation);
    if (options.only || chain.empty())
        return FGenIntSetup::What::Only;
    if (options.chain)
        return FGenIntSetup::What::Chain;
    std::string list;
    for (const auto &member : chain)
        list += (list.empty() ? "" : ", ") + FGenIntSetup::pathOf(*member);
    const std::string text = computation->getName() + " is linked to " + list;
    if (!isatty(STDIN_FILENO)) {
        FCli::err(text + ": add --chain or --only");
        return FGenIntSetup::What::Nothing;
    }
    std::cerr << text << ". Export the entire chain? [Y/n] " << std::flush;
    std::string answer;
    if (!std::getline(std::cin, answer))
        return FGenIntSetup::What::Nothing;
    return answer.empty() || answer[0] == 'y' || answer[0] == 'Y' ? FGenIntSetup::What::Chain
                                                                  : FGenIntSetup::What::Only;
}
} // namespace

namespace {
/// An end of a link, "COMPUTATION" or "COMPUTATION:WHAT".
struct End
{
    std::shared_ptr<FGenIntComputation> computation;
    std::shared_ptr<FConfigurationGenInt> configuration;
    std::string what;
};

/// Without a configuration if there is no such computation or it can't be linked; that was told.
End endOf(const std::string &given)
{
    const size_t colon = given.find(':');
    const std::string name = given.substr(0, colon);
    End end;
    end.what = colon == std::string::npos ? std::string() : given.substr(colon + 1);
    end.computation =
        std::dynamic_pointer_cast<FGenIntComputation>(FObjectManager::instance()->find(name));
    if (!end.computation)
        FCli::err("the project has no computation " + name);
    else
        end.configuration = end.computation->getConfiguration().ptr<FConfigurationGenInt>();
    if (end.configuration && !end.configuration->getDefinition().ptr<FDefinitionGenInt>())
        end.configuration = nullptr;
    if (end.computation && !end.configuration)
        FCli::err(name + " has no configuration with a definition");
    return end;
}

/// The expression for the file that \p end leaves; empty, and told, if it leaves none such.
std::string leftFile(const End &end)
{
    std::string known;
    const auto note = [&](const std::string &file) {
        known += (known.empty() ? "" : ", ") + file;
        return file == end.what;
    };
    const std::string results = end.computation->getName() + ".getResults().";
    const auto definition = end.configuration->getDefinition().ptr<FDefinitionGenInt>();
    for (const auto &file : definition->getFiles(1))
        if (file && note(S(file->getFileName())))
            return results + "getResultTemplateName(" + FLiteral::quoted(end.what) + ")";
    for (const auto &entry : end.configuration->getEntry(FResultsFileName::mpNull, true)) {
        const auto value = entry->getValue().ptr<FResultsFileName>();
        if (value && note(value->getFileName().toPlainString()))
            return results + "getResultFileName(" + FLiteral::quoted(end.what) + ")";
    }
    FCli::err(end.computation->getName() + " leaves no file " +
              (end.what.empty() ? std::string("of that name") : end.what) +
              (known.empty() ? "" : "; it leaves " + known));
    return std::string();
}

/// The entry that takes the file; one is made if none is named. Empty, and told, if there is none.
std::string takingEntry(const End &end, const std::string &file)
{
    std::string name = end.what;
    if (name.empty()) {
        name = ENTRYGROUP_EXPORTS + "|" + file.substr(file.rfind('/') + 1);
        const auto definition = end.configuration->getDefinition().ptr<FDefinitionGenInt>();
        const FStatus made =
            definition->addEntryCommand(name, FExprBase::resolve("inputFile(\"\",\"\")"));
        if (made)
            return name;
        FCli::err(made.error.text() + "; say which entry takes the file with --to " +
                  end.computation->getName() + ":ENTRY");
        return std::string();
    }
    if (end.configuration->findEntry(name))
        return name;
    std::string known;
    for (const auto &entry : end.configuration->getEntry(FInputFile::mpNull, true))
        known += (known.empty() ? "" : ", ") + entry->getFullName();
    FCli::err(end.configuration->getName() + " has no entry " + name +
              (known.empty() ? "; without a name one is made" : "; files are taken by " + known));
    return std::string();
}
} // namespace

int FCli::link(const FCliOptions &options)
{
    const int loaded = load(options);
    if (loaded != kDone)
        return refuse(loaded, "nothing was linked");
    const End from = endOf(options.from), to = endOf(options.to);
    if (!from.configuration || !to.configuration)
        return kUsage;
    const std::string file = leftFile(from);
    const std::string entry = file.empty() ? std::string() : takingEntry(to, from.what);
    if (entry.empty())
        return kUsage;
    const FStatus set = to.configuration->setEntryCommand(
        entry, FExprBase::resolve("inputFile(" + file + ",\"\")"));
    if (!set) {
        err(set.error.text());
        return kUsage;
    }
    QString why;
    if (!FProject::instance()->save(Q(options.output), &why)) {
        err(S(why));
        return kUnwritable;
    }
    out(entry + " of " + to.configuration->getName() + " takes " + from.what + " of " +
        from.computation->getName());
    return kDone;
}

int FCli::exportSetup(const FCliOptions &options)
{
    const int loaded = load(options);
    if (loaded != kDone)
        return refuse(loaded, "nothing was exported");
    const std::string name = options.computations.empty() ? std::string() : options.computations[0];
    const auto computation =
        std::dynamic_pointer_cast<FGenIntComputation>(FObjectManager::instance()->find(name));
    if (!computation) {
        err("the project has no computation " + name);
        return kUsage;
    }
    const auto what = whatToExport(options, computation);
    if (what == FGenIntSetup::What::Nothing)
        return kUsage;
    QString why;
    if (!FGenIntSetup::save(computation, what == FGenIntSetup::What::Chain, Q(options.output),
                            &why)) {
        err("cannot write " + options.output + ": " + S(why));
        return kUnwritable;
    }
    return kDone;
}

int FCli::importSetup(const FCliOptions &options)
{
    const int loaded = options.project.empty() ? int(kDone) : load(options);
    if (loaded != kDone)
        return refuse(loaded, "nothing was imported");
    QFile file(Q(options.file));
    QString why;
    if (!FUserFile::open(&file, &why, FUserFile::kMostBytes)) {
        err("cannot read " + options.file + ": " + S(why));
        return kUnreadable;
    }
    const QByteArray bytes = file.readAll();
    const auto outcome =
        FGenIntSetup::read(std::string(bytes.constData(), size_t(bytes.size())), options.file);
    for (const FScriptError &error : outcome.errors)
        err(error.text());
    if (!outcome.errors.empty()) {
        err("nothing was imported");
        return kUnreadable;
    }
    for (const auto &computation : outcome.computations)
        out("imported " + computation->getName() +
            ", which runs: " + computation->getApplication() + " " + computation->getArguments());
    if (!outcome.missing.empty())
        err("entries without a value, as the project lacks what they refer to:\n" +
            outcome.missing);
    if (!FProject::instance()->save(Q(options.output), &why)) {
        err(S(why));
        return kUnwritable;
    }
    return kDone;
}
