// SPDX-License-Identifier: Apache-2.0
#include "fproject.h"

#include "fhistory.h"
#include "flogmsg.h"
#include "fmanaged.h"
#include "fmarloctrl.h"
#include "fsafefile.h"
#include "fscript.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <algorithm>
#include <cstring>

namespace
{
/// Offset of the first byte that isn't UTF-8, -1 if all of it is.
qint64 firstBadByte(const std::string &bytes)
{
    const auto *b = reinterpret_cast<const unsigned char *>(bytes.data());
    const auto size = qint64(bytes.size());
    for (qint64 i = 0; i < size;) {
        for (uint64_t eight; i + 8 <= size; i += 8) { // most of a project is ASCII
            memcpy(&eight, b + i, 8);
            if (eight & 0x8080808080808080U)
                break;
        }
        if (i == size)
            break;
        const unsigned char c = b[i];
        if (c < 0x80) {
            ++i;
            continue;
        }
        const int more = c >= 0xC2 && c < 0xE0 ? 1 : c >= 0xE0 && c < 0xF0 ? 2
                         : c >= 0xF0 && c < 0xF5                           ? 3
                                                                           : 0;
        if (more == 0 || i + more >= size)
            return i;
        for (int k = 1; k <= more; ++k)
            if ((b[i + k] & 0xC0) != 0x80)
                return i;
        if ((c == 0xE0 && b[i + 1] < 0xA0) || (c == 0xED && b[i + 1] > 0x9F) ||
            (c == 0xF0 && b[i + 1] < 0x90) || (c == 0xF4 && b[i + 1] > 0x8F))
            return i;
        i += more + 1;
    }
    return -1;
}
} // namespace

FProject *FProject::instance()
{
    static FProject project;
    return &project;
}

void FProject::setPath(const QString &path)
{
    mPath = path.isEmpty() ? QString() : QFileInfo(path).absoluteFilePath();
}

bool FProject::load(const QString &path)
{
    setPath(path);
    const std::string name = S(path);
    QFile file(path);
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        FLogMsg::error("Project", "Could not open file " + name + " for reading",
                       QFileInfo(path).isDir() ? "it is a directory" : S(file.errorString()),
                       nullptr);
        return false;
    }
    std::string bytes(size_t(file.size()), '\0');
    const qint64 count = file.read(&bytes[0], qint64(bytes.size()));
    bytes.resize(size_t(std::max<qint64>(count, 0)));
    bytes += file.readAll().toStdString(); // a pipe doesn't tell its size
    if (file.error() != QFileDevice::NoError) {
        FLogMsg::error("Project", "Could not read file " + name, S(file.errorString()), nullptr);
        return false;
    }
    const qint64 bad = firstBadByte(bytes);
    if (bad >= 0) {
        const auto line = 1 + std::count(bytes.begin(), bytes.begin() + bad, '\n');
        FLogMsg::error("Project",
                       name + ":" + fromNumber((long long)line, 10) + ": expected UTF-8 text, found the byte 0x" +
                           S(QString::number(uchar(bytes[size_t(bad)]), 16).toUpper()),
                       "nothing was loaded", nullptr);
        return false;
    }
    FScriptReader reader(std::move(bytes), name);
    bool ok;
    {
        const FLoadingScope loading;
        ok = reader.run();
    }
    FHistory::instance()->clear();
    std::vector<std::shared_ptr<FObject>> objects;
    for (const auto &object : FObjectManager::instance()->all())
        object->collectStateful(&objects);
    for (const auto &object : objects)
        FHistory::instance()->track(object);
    FUpdates::flush();
    return ok;
}

std::vector<std::shared_ptr<FManaged>> FProject::savingOrder()
{
    // Depth first over suppliers with a stack of its own: chains may be long.
    std::vector<std::shared_ptr<FManaged>> order;
    std::unordered_map<const FObject *, bool> done; // false while its suppliers are visited
    for (const auto &root : FObjectManager::instance()->all()) {
        std::vector<const FObject *> todo{root.get()};
        while (!todo.empty()) {
            const FObject *object = todo.back();
            const auto at = done.find(object);
            if (at == done.end()) {
                done[object] = false;
                std::vector<const FObject *> suppliers;
                object->suppliers().forEach([&](FObject *s) { suppliers.push_back(s); });
                // Entered last is visited first: keep the order in which references were made.
                for (auto s = suppliers.rbegin(); s != suppliers.rend(); ++s)
                    if (!done.count(*s))
                        todo.push_back(*s);
                continue;
            }
            todo.pop_back();
            if (at->second)
                continue;
            at->second = true;
            const auto managed =
                std::dynamic_pointer_cast<const FManaged>(object->weak_from_this().lock());
            if (managed && managed->isRegistered() && !managed->isDestroyed() &&
                managed->isSaved())
                order.push_back(std::const_pointer_cast<FManaged>(managed));
        }
    }
    return order;
}

QString FProject::text() const
{
    QString text;
    QTextStream stream(&text);
    for (const auto &object : savingOrder())
        object->saveScopeManner(stream, 0, false, false);
    stream.flush();
    return text.mid(text.startsWith('\n') ? 1 : 0);
}

bool FProject::save(const QString &path, QString *why)
{
    return FSafeFile::write(path, text().toUtf8(), why);
}

void FProject::clear()
{
    FHistory::instance()->clear();
    FObjectManager::instance()->clear();
    FLogMsg::clear();
    mPath.clear();
    const FLoadingScope unrecorded;
    for (const auto &starter : mStarters)
        starter();
}

void FProject::addStarter(std::function<void()> starter)
{
    mStarters.push_back(std::move(starter));
}
