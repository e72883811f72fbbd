// SPDX-License-Identifier: Apache-2.0
//
// Times what a user does with a whole project within a process: load it, set the parameter that
// others follow and read the last of them, rename an entry, undo that, save.
//
//   lib_project PROJECT TARGET STATEMENT VALUE RENAME    prints the value and the milliseconds of
//       each; STATEMENT sets the parameter, VALUE is the expression that is read, RENAME renames

#include "barefiles.h"
#include "fhistory.h"
#include "fproject.h"
#include "fscript.h"
#include "ftext.h"

#include <QCoreApplication>

namespace {
bool execute(const char *statement)
{
    FScriptReader reader(statement, "bench");
    reader.run();
    return reader.errors().empty();
}
} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc != 6) {
        fprintf(stderr, "usage: lib_project PROJECT TARGET STATEMENT VALUE RENAME\n");
        return 2;
    }
    const QString project = QString::fromLocal8Bit(argv[1]),
                  target = QString::fromLocal8Bit(argv[2]);
    FObject::initPrototypes();
    bool good = true;
    std::string value;
    const std::function<void()> works[] = {
        [&] { good = FProject::instance()->load(project) && good; },
        [&] {
            good = execute(argv[3]) && good;
            value = FExprBase(FExprBase::resolve(argv[4]).getPtr()).toPlainString();
        },
        [&] { good = execute(argv[5]) && good; },
        [&] { good = FHistory::instance()->undo() && good; },
        [&] {
            QString why;
            good = FProject::instance()->save(target, &why) && good;
        }};
    std::string times;
    for (const auto &work : works)
        times += " " + std::to_string(BareFiles::milliseconds(work));
    printf("%s%s\n", value.c_str(), times.c_str());
    return good ? 0 : 1;
}
