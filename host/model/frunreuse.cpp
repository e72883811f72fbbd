// SPDX-License-Identifier: Apache-2.0
#include "frunreuse.h"

#include "fprogramsearch.h"
#include "frunexecutor.h"
#include "frunfolder.h"
#include "ftext.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QFile>
#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>

namespace {
/// A part with its length in front, so that no two lists of parts give the same bytes.
void addPart(QCryptographicHash *hash, const QByteArray &part)
{
    hash->addData(QByteArray::number(part.size()) + ':');
    hash->addData(part);
}

void add(QCryptographicHash *hash, const std::string &part)
{
    addPart(hash, QByteArray::fromStdString(part));
}

void add(QCryptographicHash *hash, const std::vector<std::string> &parts)
{
    add(hash, std::to_string(parts.size()));
    for (const std::string &part : parts)
        add(hash, part);
}

std::string variable(const FRunJob &job, const std::string &name)
{
    for (const std::string &entry : job.variables)
        if (entry.compare(0, name.size() + 1, name + '=') == 0)
            return entry.substr(name.size() + 1);
    const char *value = std::getenv(name.c_str());
    return value ? value : "";
}
} // namespace

std::string FRunReuse::inputsOf(const FRunJob &job, std::string *why)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    add(&hash, "turnbuckle-inputs-1");
    add(&hash, std::vector<std::string>(job.command.begin() + 1, job.command.end()));
    add(&hash, job.variables);
    add(&hash, job.standardInput);
    add(&hash, job.waitForAll ? "all" : "first");
    const QString folder = Q(job.folder->path());
    QStringList names;
    QDirIterator all(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                     QDirIterator::Subdirectories);
    const QString own = QLatin1String(FRunFolder::kOwn) + QLatin1Char('/');
    while (all.hasNext()) {
        const QString name = all.next().mid(folder.size() + 1);
        if (name != QLatin1String(FRunFolder::kOwn) && !name.startsWith(own))
            names << name;
    }
    names.sort();
    for (const QString &name : qAsConst(names)) {
        const QFileInfo info(folder + '/' + name);
        addPart(&hash, name.toUtf8());
        if (info.isSymLink()) {
            add(&hash, "link");
            addPart(&hash, QFile::symLinkTarget(info.filePath()).toUtf8());
            continue;
        }
        if (info.isDir()) {
            add(&hash, "folder");
            continue;
        }
        QFile file(info.filePath());
        if (!info.isFile() || !file.open(QFile::ReadOnly | QFile::Unbuffered)) {
            *why = S(name) +
                   " can't be read: " + (info.isFile() ? S(file.errorString()) : "it is no file");
            return std::string();
        }
        add(&hash, info.isExecutable() ? "program" : "file");
        hash.addData(QByteArray::number(file.size()) + ':');
        if (!hash.addData(&file)) {
            *why = S(name) + " can't be read: " + S(file.errorString());
            return std::string();
        }
    }
    return hash.result().toHex().toStdString();
}

std::string FRunReuse::programOf(const FRunJob &job)
{
    std::string path = job.command[0];
    const std::string folders = variable(job, "PATH");
    if (path.find('/') == std::string::npos)
        FProgramSearch::find(job.command[0], folders.empty() ? nullptr : folders.c_str(), &path);
    struct stat info = {};
    // A program among the inputs is hashed with them.
    if (path.empty() || path[0] != '/' || ::stat(path.c_str(), &info) != 0)
        return path.empty() ? job.command[0] : path;
    return path + " " + std::to_string(info.st_size) + " " + std::to_string(info.st_mtim.tv_sec) +
           "." + std::to_string(info.st_mtim.tv_nsec);
}

std::optional<FRunRecord> FRunReuse::finishedRun(const FRunJob &job)
{
    QByteArray text;
    FRunRecord old;
    if (!FRunFolder::read(job.directory, "run.json", &text) || !old.read(text) ||
        !old.succeeded() || old.inputsChanged || !FRunFolder::problemOf(job.directory).isEmpty())
        return std::nullopt;
    for (const FRunRecord::ResultFile &file : old.resultFiles) {
        struct stat info = {};
        if (::lstat((job.directory + "/" + file.name).c_str(), &info) != 0 ||
            info.st_size != file.bytes ||
            std::to_string(info.st_mtim.tv_sec) + "." + std::to_string(info.st_mtim.tv_nsec) !=
                file.modified)
            return std::nullopt;
    }
    for (const std::string &name : job.expected) {
        struct stat info = {};
        if (::stat((job.directory + "/" + name).c_str(), &info) != 0 || !S_ISREG(info.st_mode))
            return std::nullopt;
    }
    return old;
}

bool FRunReuse::freeSpace(const std::string &folder, double keepFreeBytes, double *kept,
                          double *free)
{
    struct statvfs info = {};
    if (::statvfs(folder.c_str(), &info) != 0)
        return false;
    const double whole = double(info.f_blocks) * double(info.f_frsize);
    *free = double(info.f_bavail) * double(info.f_frsize);
    *kept = keepFreeBytes >= 0 ? keepFreeBytes : std::min(1024.0 * 1024 * 1024, whole / 20);
    return whole > 0;
}
