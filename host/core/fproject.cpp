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

FProject::FProject() = default;
FProject::~FProject() = default;

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
    mErrors.clear();
    const auto fail = [&](size_t line, const std::string &text) {
        FScriptError error;
        error.file = name;
        error.line = line;
        error.text = text;
        mErrors.push_back(error);
        return false;
    };
    QFile file(path);
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly)) {
        const std::string why =
            QFileInfo(path).isDir() ? "it is a directory" : S(file.errorString());
        FLogMsg::error("Project", "Could not open file " + name + " for reading", why, nullptr);
        return fail(0, "the file can't be opened: " + why);
    }
    std::string text;
    if (file.isSequential()) {
        text = file.readAll().toStdString();
    } else {
        text.resize(size_t(file.size()));
        const qint64 got = file.read(&text[0], file.size());
        if (got != file.size() || !file.atEnd()) {
            const std::string why = got < 0 ? S(file.errorString()) : "it changed meanwhile";
            FLogMsg::error("Project", "Could not read file " + name, why, nullptr);
            return fail(0, "the file can't be read: " + why);
        }
    }
    const size_t bad = FUtf8::firstBadByte(text.data(), text.size());
    if (bad != std::string::npos) {
        const auto line = 1 + std::count(text.begin(), text.begin() + std::ptrdiff_t(bad), '\n');
        const std::string found = "expected UTF-8 text, found the byte 0x" +
                                  S(QString::number(uchar(text[bad]), 16).toUpper());
        FLogMsg::error("Project", name + ":" + std::to_string(line) + ": " + found,
                       "nothing was loaded", nullptr);
        return fail(size_t(line), found);
    }
    FScriptReader reader(std::move(text), name);
    bool ok;
    {
        const FLoadingScope loading;
        ok = reader.run();
    }
    mErrors = reader.errors();
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
                object->collectNamed(&suppliers);
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
    mErrors.clear();
    const FLoadingScope unrecorded;
    for (const auto &starter : mStarters)
        starter();
}

void FProject::addStarter(std::function<void()> starter)
{
    mStarters.push_back(std::move(starter));
}
