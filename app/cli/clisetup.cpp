// SPDX-License-Identifier: Apache-2.0
// Couplings that travel from one project to another.
#include "cli.h"
#include "fgenintsetup.h"
#include "flogmsg.h"
#include "fobjectmanager.h"
#include "fproject.h"
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
        err(error.toString());
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
