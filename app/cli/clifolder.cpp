// SPDX-License-Identifier: Apache-2.0
// Projects as folders, for version control, and back.
#include "cli.h"
#include "fproject.h"
#include "fprojectfolder.h"
#include "fsafefile.h"
#include "ftext.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

namespace {
/// Files that are handed over by a path that counts from the project, and don't lie there.
QStringList missingFrom(const QString &folder)
{
    static const QRegularExpression kFile(
        QStringLiteral("\\binputFile\\(\"([^\"\\\\/][^\"\\\\]*)\""));
    QStringList missing;
    auto found = kFile.globalMatch(FProject::instance()->text());
    while (found.hasNext()) {
        const QString name = found.next().captured(1);
        if (!QFileInfo::exists(folder + '/' + name) && !missing.contains(name))
            missing << name;
    }
    return missing;
}

/// What belongs beside the texts in version control, unless somebody has chosen otherwise.
bool writeHints(const QString &folder, QString *why)
{
    const std::pair<const char *, const char *> hints[] = {
        {".gitignore", "/project_designs/\n"},
        {".gitattributes", "/files/* -text\n"}, // line ends belong to the program
    };
    for (const auto &[name, text] : hints)
        if (!QFileInfo::exists(folder + '/' + name) &&
            !FSafeFile::write(folder + '/' + name, text, why))
            return false;
    return true;
}

int save(const FCliOptions &options, const QString &target)
{
    const QString from = QFileInfo(FProject::instance()->path()).absolutePath();
    const QString to = QFileInfo(target).isDir() || target.endsWith('/')
                           ? QDir(target).absolutePath()
                           : QFileInfo(target).absolutePath();
    QString why;
    if (!FProject::instance()->save(target, &why)) {
        FCli::err(S(why));
        return kUnwritable;
    }
    for (const QString &name : missingFrom(to))
        if (QFileInfo::exists(from + '/' + name))
            FCli::err(S(name) + " is handed over by its path beside " + options.project +
                      "; put it into " + S(to) + ", too");
    return kDone;
}
} // namespace

int FCli::pack(const FCliOptions &options)
{
    const QString output = Q(options.output);
    if (FProjectFolder::scriptOf(output) != output || FProjectFolder::isAt(output)) {
        err("--output " + options.output + ": expected a file, found a project folder");
        return kUsage;
    }
    const int loaded = load(options);
    return loaded == kDone ? ::save(options, output) : refuse(loaded, "nothing was packed");
}

int FCli::unpack(const FCliOptions &options)
{
    const QString output = QDir::cleanPath(Q(options.output)) + '/';
    const int loaded = load(options);
    if (loaded != kDone)
        return refuse(loaded, "nothing was unpacked");
    const int code = ::save(options, output);
    QString why;
    if (code != kDone || writeHints(output, &why))
        return code;
    err(S(why));
    return kUnwritable;
}
