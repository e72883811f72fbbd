// SPDX-License-Identifier: Apache-2.0
#include "fproject.h"

#include "fchanges.h"
#include "fhistory.h"
#include "flogmsg.h"
#include "fmanaged.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"
#include "fprojectfolder.h"
#include "fsafefile.h"
#include "fscript.h"
#include "fselectionset.h"
#include "fuserfile.h"

#include <QDir>
#include <QFileInfo>
#include <QTextStream>
#include <unordered_set>

FProject::FProject() = default;
FProject::~FProject() = default;

FProject *FProject::instance()
{
    static FProject project;
    return &project;
}

void FProject::setPath(const QString &path)
{
    mPath =
        path.isEmpty() ? QString() : QFileInfo(FProjectFolder::scriptOf(path)).absoluteFilePath();
}

namespace {
/// The text of a project file. False, with \p error and a message, for what is no text.
bool readText(const QString &path, FProjectFolder *folder, std::string *text, FScriptError *error)
{
    const std::string name = S(path);
    *error = {name, 0, 0, {}};
    QString why;
    if ((folder && !folder->open(&why)) ||
        !FUserFile::read(folder ? folder->script() : path, text, &why)) {
        FLogMsg::error("Project", "Could not open file " + name + " for reading", S(why), nullptr);
        error->reason = FReason("the file can't be opened: " + S(why));
        return false;
    }
    const size_t zero = text->find('\0'), other = FUtf8::firstBadByte(text->data(), text->size());
    const size_t bad = std::min(zero, other);
    if (bad == std::string::npos)
        return true;
    error->line = size_t(1 + std::count(text->begin(), text->begin() + std::ptrdiff_t(bad), '\n'));
    error->reason = FReason::unexpected(
        "UTF-8 text", "the byte 0x" + S(QString::number(uchar((*text)[bad]), 16).toUpper()));
    FLogMsg::error("Project", error->toString(), "nothing was loaded", nullptr);
    return false;
}
} // namespace

bool FProject::load(const QString &path)
{
    const QString script = FProjectFolder::scriptOf(path);
    setPath(script);
    mErrors.clear();
    mRenamings.clear();
    std::string text;
    FScriptError error;
    const auto folder = FProjectFolder::at(script);
    if (readText(script, folder.get(), &text, &error))
        return execute(std::move(text), S(script), folder.get());
    mErrors.push_back(error);
    return false;
}

bool FProject::open(const QString &path)
{
    const QString script = FProjectFolder::scriptOf(path);
    std::string text;
    FScriptError error;
    const auto folder = FProjectFolder::at(script);
    if (!readText(script, folder.get(), &text, &error))
        return false;
    clear();
    setPath(script);
    return execute(std::move(text), S(script), folder.get());
}

bool FProject::execute(std::string text, const std::string &name, FProjectFolder *folder)
{
    FScriptReader reader(std::move(text), name);
    bool ok;
    {
        const FLoadingScope loading;
        mIsLoading = true;
        mLoadedFolder = folder;
        ok = reader.run();
        mLoadedFolder = nullptr;
        mIsLoading = false;
    }
    mErrors.insert(mErrors.begin(), reader.errors().begin(), reader.errors().end());
    mRenamings = reader.renamings();
    FHistory::instance()->clear();
    std::vector<std::shared_ptr<FObject>> objects;
    for (const auto &object : FObjectManager::instance()->all())
        object->collectStateful(&objects);
    for (const auto &object : objects)
        FHistory::instance()->track(object);
    FHistory::instance()->markClean();
    FChanges::noteProject(FChanges::Opened);
    FUpdates::flush();
    return ok;
}

namespace {
/// The managed objects that the saved form of \p object refers to, last registered first.
std::vector<const FManaged *> namedBy(const FManaged *object)
{
    std::vector<const FManaged *> found;
    std::unordered_set<const FObject *> seen{object};
    std::vector<const FObject *> todo;
    const auto add = [&](const FObject *other) {
        if (!other || !seen.insert(other).second)
            return;
        if (const auto managed = dynamic_cast<const FManaged *>(other))
            found.push_back(managed);
        else
            todo.push_back(other);
    };
    for (const FObject *next = object; next;) {
        std::vector<const FObject *> named;
        next->suppliers().forEach([&](FObject *s) { named.push_back(s); });
        next->collectNamed(&named);
        for (const FObject *other : named)
            add(other);
        next = todo.empty() ? nullptr : todo.back();
        if (next)
            todo.pop_back();
    }
    std::sort(found.begin(), found.end(),
              [](const FManaged *a, const FManaged *b) { return a->order() > b->order(); });
    return found;
}
} // namespace

std::vector<std::shared_ptr<FManaged>> FProject::savingOrder()
{
    // Depth first with a stack of its own, since chains may be long. Only what is named and the
    // places in the project count, so undo and redo come back to the same text.
    std::vector<std::shared_ptr<FManaged>> order;
    std::unordered_map<const FManaged *, bool> done; // false while what it names is visited
    for (const auto &root : FObjectManager::instance()->all()) {
        std::vector<const FManaged *> todo{root.get()};
        while (!todo.empty()) {
            const FManaged *object = todo.back();
            const auto at = done.find(object);
            if (at == done.end()) {
                done[object] = false;
                for (const FManaged *other : namedBy(object))
                    if (!done.count(other))
                        todo.push_back(other);
                continue;
            }
            todo.pop_back();
            if (at->second)
                continue;
            at->second = true;
            if (object->isRegistered() && !object->isDestroyed() && object->isSaved())
                order.push_back(
                    std::const_pointer_cast<FManaged>(object->shared_from_base<FManaged>()));
        }
    }
    return order;
}

QByteArray FProject::utf8() const
{
    QByteArray bytes;
    QString text; // of one object at a time: the whole would be held twice
    text.reserve(4096);
    QTextStream stream(&text);
    for (const auto &object : savingOrder()) {
        object->saveScopeManner(stream, 0, false, false);
        stream.flush();
        bytes += text.toUtf8();
        text.resize(0); // what is reserved stays
    }
    return bytes.startsWith('\n') ? bytes.mid(1) : bytes;
}

QString FProject::text() const
{
    const QByteArray bytes = utf8();
    return QString::fromUtf8(bytes.constData(), bytes.size());
}

bool FProject::save(const QString &path, QString *why)
{
    const QString script = FProjectFolder::scriptOf(path);
    if (!write(script, script != path || FProjectFolder::isAt(script), why))
        return false;
    if (QFileInfo(script).absoluteFilePath() == mPath)
        takePath(script);
    return true;
}

void FProject::takePath(const QString &path)
{
    setPath(path);
    FHistory::instance()->markClean();
    FChanges::noteProject(FChanges::Saved);
}

bool FProject::write(const QString &script, bool asFolder, QString *why)
{
    FProjectFolder folder(script);
    if (asFolder && !folder.beginSave(why))
        return false;
    mSavedFolder = asFolder ? &folder : nullptr;
    mTarget = QFileInfo(script).absoluteFilePath();
    const QByteArray bytes = utf8();
    mTarget.clear();
    mSavedFolder = nullptr;
    if (bytes.size() > FUserFile::kMostBytes) { // it could not be loaded again
        *why = QStringLiteral("The project can't be saved: ") + FUserFile::tooLarge(bytes.size());
        return false;
    }
    return asFolder ? folder.save(bytes, why) : FSafeFile::write(script, bytes, why);
}

void FProject::noteLoadError(const std::string &object, const FReason &reason)
{
    if (mIsLoading)
        mErrors.push_back({S(mPath), 0, 0, reason.about(object)});
}

void FProject::clear()
{
    Q_EMIT FChanges::instance()->projectClosing();
    FHistory::instance()->clear();
    FSelectionSet::instance()->clear(true);
    FObjectManager::instance()->clear();
    FChanges::instance()->forgetObjects();
    FChanges::noteProject(FChanges::Closed);
    FLogMsg::clear();
    mPath.clear();
    mErrors.clear();
    mRenamings.clear();
    const FLoadingScope unrecorded;
    for (const auto &starter : mStarters)
        starter();
}

void FProject::addStarter(std::function<void()> starter)
{
    mStarters.push_back(std::move(starter));
}
