// SPDX-License-Identifier: Apache-2.0
//
// Times the writing of one design within a process, in turns with yardsticks that make the same
// files. EXPECTED holds them; TARGET is an empty folder, which keeps what was written unless it is
// large.
//
//   lib_write PROJECT EXPECTED TARGET ROUNDS    prints the smallest milliseconds of: the first
//       write, a later write, a bare loop from memory, a copy within the kernel, the program cp

#include "barefiles.h"
#include "fconfigurationgenint.h"
#include "fgenintwriter.h"
#include "fobjectmanager.h"
#include "fproject.h"
#include "ftext.h"

#include <QCoreApplication>
#include <spawn.h>
#include <sys/wait.h>

namespace {
void runCp(const std::string &from, const std::string &to)
{
    std::string arguments[] = {"cp", "-rT", from, to};
    char *argv[] = {&arguments[0][0], &arguments[1][0], &arguments[2][0], &arguments[3][0],
                    nullptr};
    pid_t pid;
    int status = 1;
    BareFiles::need(posix_spawnp(&pid, "cp", nullptr, nullptr, argv, environ) == 0 &&
                        waitpid(pid, &status, 0) == pid && status == 0,
                    "cp");
}
} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc != 5) {
        fprintf(stderr, "usage: lib_write PROJECT EXPECTED TARGET ROUNDS\n");
        return 2;
    }
    const std::string expected = argv[2], target = argv[3];
    const BareFiles::Files files = BareFiles::readFolder(expected);
    FObject::initPrototypes();
    FProject::instance()->clear();
    if (!FProject::instance()->load(QString::fromLocal8Bit(argv[1])))
        return 1;
    const FExpr<FConfigurationGenInt> configuration(getEntities<FConfigurationGenInt>().front());
    // Every work has a folder of its own: some file systems look long for a free place among files
    // that were removed a moment ago.
    std::vector<std::string> made;
    const auto freshFolder = [&] {
        made.push_back(target + "/" + std::to_string(made.size()));
        BareFiles::need(mkdir(made.back().c_str(), 0777) == 0, made.back());
        return made.back();
    };
    bool good = true;
    const auto write = [&](const std::string &to) {
        good = FGenIntWriter().write(configuration, QString::fromStdString(to + '/')) && good;
    };
    const std::function<void(const std::string &)> works[] = {
        write, [&](const std::string &to) { BareFiles::writeAll(to, files); },
        [&](const std::string &to) { BareFiles::copyAll(expected, to, files); },
        [&](const std::string &to) { runCp(expected, to); }};
    const auto time = [&](int which) {
        const std::string to = freshFolder();
        return BareFiles::milliseconds([&] { works[which](to); });
    };

    const double first = time(0);
    good = good && BareFiles::readFolder(made.front()) == files;
    if (files.size() == 1)
        BareFiles::removeAll(made.back(), files);
    double best[] = {1e9, 1e9, 1e9, 1e9};
    for (int round = 0; round < atoi(argv[4]); ++round)
        for (int i = 0; i < 4; ++i) {
            const int which = (round + i) % 4;
            best[which] = std::min(best[which], time(which));
            if (files.size() == 1)
                BareFiles::removeAll(made.back(), files);
        }
    printf("%.3f %.3f %.3f %.3f %.3f\n", first, best[0], best[1], best[2], best[3]);
    return good ? 0 : 1;
}
