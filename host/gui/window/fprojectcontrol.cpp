// SPDX-License-Identifier: Apache-2.0
#include "fprojectcontrol.h"

#include "fcounted.h"
#include "fhistory.h"
#include "fini.h"
#include "fio.h"
#include "flogmsg.h"
#include "fproject.h"
#include "fprojectfolder.h"
#include "frunqueue.h"
#include "fscripterror.h"
#include "ftext.h"
#include "fupdates.h"
#include "fworkspace.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>

namespace {
const char *const kRecent = "Desktop/recentProjects";
const char *const kLastFolder = "Desktop/lastFolder";
constexpr int kRecentCount = 10;

QString filter() { return FProjectControl::tr("Projects (*.tbk);;All files (*)"); }

QString lastFolder()
{
    const QString folder = FIni().value(QLatin1String(kLastFolder)).toString();
    return QDir(folder).exists() ? folder : QDir::homePath();
}

bool copyFolder(const QString &from, const QString &to)
{
    if (!QDir().mkpath(to))
        return false;
    for (const QFileInfo &info :
         QDir(from).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString target = to + '/' + info.fileName();
        if (info.isDir() ? !copyFolder(info.filePath(), target)
                         : !QFile::copy(info.filePath(), target))
            return false;
    }
    return true;
}
} // namespace

FProjectControl *FProjectControl::instance()
{
    static FProjectControl control;
    return &control;
}

FProjectControl::FProjectControl() = default;

bool FProjectControl::isModified() const { return mOpen && !FHistory::instance()->isClean(); }

QString FProjectControl::name() const
{
    if (!mOpen)
        return QString();
    const QString path = FProject::instance()->path();
    if (FProjectFolder::isAt(path))
        return QFileInfo(QFileInfo(path).path()).fileName();
    return path.isEmpty() ? tr("Untitled") : QFileInfo(path).fileName();
}

QString FProjectControl::whyNotSaved() const
{
    if (!mOpen)
        return tr("no project is open");
    if (!mIsWhole)
        return tr("the project was not read whole; saving would lose the rest (see Messages)");
    return QString();
}

bool FProjectControl::mayLeave(const QString &what)
{
    if (!mOpen)
        return true;
    FRunQueue *queue = FRunQueue::background();
    if (!queue->isIdle()) {
        const int answer = FIO::instance()->question(
            FWorkspace::instance()->window(), S(tr("Runs are under way")),
            S(counted(qint64(queue->items().size()), tr("%1 run of %2 is waiting or running."),
                      tr("%1 runs of %2 are waiting or running."))
                  .arg(name()) +
              ' ' + tr("What isn't finished ends when the project is closed.")),
            S(tr("Stop the runs")), S(tr("Cancel")), std::string(), 1, 1);
        if (answer != 0)
            return false;
        queue->cancel();
    }
    if (!isModified() || !mIsWhole)
        return true;
    const int answer = FIO::instance()->question(
        FWorkspace::instance()->window(), S(tr("Unsaved changes")),
        S(tr("%1 has changes that are not saved.").arg(name()) + ' ' + what), S(tr("Save")),
        S(tr("Don't save")), S(tr("Cancel")), 0, 2);
    return answer == 0 ? save() : answer == 1;
}

void FProjectControl::begin()
{
    mOpen = true;
    Q_EMIT opened();
}

bool FProjectControl::newProject()
{
    if (!mayLeave(tr("Save them before the new project is begun?")))
        return false;
    FProject::instance()->clear();
    FProject::instance()->setPath(QString());
    FHistory::instance()->markClean();
    mIsWhole = true;
    begin();
    return true;
}

bool FProjectControl::askAndOpen()
{
    const QString path = QFileDialog::getOpenFileName(FWorkspace::instance()->window(),
                                                      tr("Open project"), lastFolder(), filter());
    return !path.isEmpty() && open(path);
}

bool FProjectControl::open(const QString &given)
{
    const QString path = QFileInfo(FProjectFolder::scriptOf(given)).absoluteFilePath();
    if (!QFileInfo(path).isReadable() || QFileInfo(path).isDir()) {
        FLogMsg::error("Project", S(tr("%1 can't be opened").arg(path)),
                       S(QFileInfo::exists(path) ? tr("it is no file that can be read")
                                                 : tr("there is no such file")),
                       nullptr);
        return false;
    }
    if (!mayLeave(tr("Save them before the other project is opened?")))
        return false;
    FProject::instance()->clear();
    mIsWhole = FProject::instance()->load(path);
    if (!mIsWhole)
        FLogMsg::error("Project",
                       S(tr("%1 was not read whole: it can be looked at, but neither run nor saved")
                             .arg(QFileInfo(path).fileName())),
                       S(counted(qint64(FProject::instance()->errors().size()),
                                 tr("%1 error, told above"), tr("%1 errors, each told above"))),
                       nullptr);
    remember(path);
    begin();
    return mIsWhole;
}

bool FProjectControl::close()
{
    if (!mOpen)
        return true;
    if (!mayLeave(tr("Save them before the project is closed?")))
        return false;
    mOpen = false;
    FProject::instance()->clear();
    FProject::instance()->setPath(QString());
    FHistory::instance()->markClean();
    Q_EMIT closed();
    return true;
}

bool FProjectControl::revert()
{
    const QString path = FProject::instance()->path();
    if (!mOpen || path.isEmpty())
        return false;
    if (isModified() &&
        FIO::instance()->question(
            FWorkspace::instance()->window(), S(tr("Revert")),
            S(tr("All changes since %1 was saved are lost. They can't be undone.").arg(name())),
            S(tr("Revert")), S(tr("Cancel")), std::string(), 1, 1) != 0)
        return false;
    FRunQueue::background()->cancel();
    FHistory::instance()->markClean(); // asked already
    return open(path);
}

bool FProjectControl::write(const QString &path)
{
    QString why;
    FUpdates::flush();
    if (!FProject::instance()->save(path, &why)) {
        FLogMsg::error("Project", S(tr("%1 was not saved").arg(path)), S(why), nullptr);
        FIO::instance()->warning(FWorkspace::instance()->window(), S(tr("Save")),
                                 S(tr("%1 was not saved: %2\n\nThe project is still open and "
                                      "unchanged. Save it elsewhere by Save As.")
                                       .arg(path, why)),
                                 S(tr("OK")), std::string(), std::string(), 0, 0);
        return false;
    }
    FProject::instance()->takePath(path);
    FLogMsg::info("Project", S(tr("%1 was saved").arg(name())), S(path), nullptr);
    remember(FProject::instance()->path());
    return true;
}

bool FProjectControl::save()
{
    if (!whyNotSaved().isEmpty())
        return false;
    const QString path = FProject::instance()->path();
    return path.isEmpty() ? saveAs() : write(path);
}

bool FProjectControl::saveAs()
{
    if (!whyNotSaved().isEmpty())
        return false;
    const QString now = FProject::instance()->path();
    const QString folders = tr("Project folders, for version control (*)");
    QFileDialog dialog(FWorkspace::instance()->window(), tr("Save project as"),
                       now.isEmpty() ? lastFolder() : QFileInfo(now).absolutePath(),
                       filter() + ";;" + folders);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(QStringLiteral("tbk"));
    QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, [&](const QString &chosen) {
        dialog.setDefaultSuffix(chosen == folders ? QString() : QStringLiteral("tbk"));
    });
    dialog.selectFile(now.isEmpty() ? QStringLiteral("untitled.tbk") : QFileInfo(now).fileName());
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return false;
    QString path = QFileInfo(dialog.selectedFiles().front()).absoluteFilePath();
    if (dialog.selectedNameFilter() == folders)
        path = (path.endsWith(QLatin1String(".tbk")) ? path.left(path.size() - 4) : path) + '/';
    if (!FRunQueue::background()->isIdle()) {
        FLogMsg::warning("Project", S(tr("The project keeps its place while runs are under way")),
                         S(tr("their folders lie beside it")), nullptr);
        return false;
    }
    return write(path);
}

QStringList FProjectControl::recent()
{
    QStringList found;
    for (const QString &path : FIni().value(QLatin1String(kRecent)).toStringList())
        if (QFileInfo::exists(path))
            found << path;
    return found;
}

void FProjectControl::remember(const QString &path)
{
    FIni settings;
    QStringList paths = settings.value(QLatin1String(kRecent)).toStringList();
    paths.removeAll(path);
    paths.prepend(path);
    settings.setValue(QLatin1String(kRecent), QStringList(paths.mid(0, kRecentCount)));
    settings.setValue(QLatin1String(kLastFolder), QFileInfo(path).absolutePath());
    Q_EMIT recentChanged();
}

QString FProjectControl::examplePath(const QString &name)
{
    const QString binary = QCoreApplication::applicationDirPath();
    for (const char *place : {"/../../../examples/", "/../share/turnbuckle/examples/"}) {
        const QString path = QDir::cleanPath(binary + QLatin1String(place) + name);
        if (QFileInfo::exists(path + '/' + name + ".tbk"))
            return path;
    }
    return QString();
}

QStringList FProjectControl::examples()
{
    QStringList found;
    for (const char *name : {"beam", "filter", "chain"})
        if (!examplePath(QLatin1String(name)).isEmpty())
            found << QLatin1String(name);
    return found;
}

bool FProjectControl::openExample(const QString &name)
{
    const QString source = examplePath(name);
    if (source.isEmpty()) {
        FLogMsg::error("Project", S(tr("The example %1 isn't installed").arg(name)), std::string(),
                       nullptr);
        return false;
    }
    // A copy of the user's own: runs go beside the project, and what is tried out may be saved.
    const QString above = QDir::homePath() + "/Turnbuckle examples";
    QString folder = above + '/' + name;
    for (int i = 2; QFileInfo::exists(folder); ++i) {
        if (QFileInfo::exists(folder + '/' + name + ".tbk"))
            return open(folder + '/' + name + ".tbk"); // made before
        folder = above + '/' + name + ' ' + QString::number(i);
    }
    if (!copyFolder(source, folder)) {
        FLogMsg::error("Project", S(tr("The example can't be copied to %1").arg(folder)),
                       std::string(), nullptr);
        return false;
    }
    return open(folder + '/' + name + ".tbk");
}
