// SPDX-License-Identifier: Apache-2.0
#include "fprojectfolder.h"

#include "fsafecalls.h"
#include "fsafefile.h"
#include "fuserfile.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <cstring>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
constexpr char kScript[] = "project.tbk", kFiles[] = "files";
constexpr char kStage[] = ".turnbuckle-save", kWhole[] = ".turnbuckle-saved";
constexpr char kNamed[] = ".setContentFile(\"files/";
constexpr int kMostWaits = 500, kWaitMicroseconds = 20000, kLongestName = 120;

bool failed(QString *why, const QString &what, const QString &path)
{
    return FSafeCalls::fail(why, what, path, FSafeCalls::systemWords(errno));
}

/// The names of the texts that a script names.
QSet<QByteArray> namesIn(const QByteArray &script)
{
    QSet<QByteArray> names;
    constexpr int length = sizeof kNamed - 1;
    for (int at = script.indexOf(kNamed); at >= 0; at = script.indexOf(kNamed, at + length)) {
        const int end = script.indexOf('"', at + length);
        const QByteArray name = script.mid(at + length, end - at - length);
        if (end > 0 && !name.isEmpty() && name[0] != '.' && !name.contains('/'))
            names.insert(name);
    }
    return names;
}

QByteArray contentOf(const QString &path)
{
    std::string text;
    QString why;
    return FUserFile::read(path, &text, &why) ? QByteArray::fromStdString(text) : QByteArray();
}

/// The text of a file name without what some system, program or shell can't bear.
QString plainName(const QString &wanted)
{
    QString name = wanted.mid(wanted.lastIndexOf('/') + 1).normalized(QString::NormalizationForm_C);
    for (QChar &letter : name)
        if (letter.unicode() < 0x20 || letter.unicode() == 0x7f || letter.isSurrogate() ||
            QStringLiteral("\\:*?\"<>|").contains(letter))
            letter = '_';
    static const QRegularExpression kEdges(QStringLiteral("^[ .-]+|[ .]+$"));
    name.remove(kEdges);
    static const QRegularExpression kReserved(
        QStringLiteral("^(con|prn|aux|nul|com\\d|lpt\\d)(\\.|$)"),
        QRegularExpression::CaseInsensitiveOption);
    if (name.isEmpty() || kReserved.match(name).hasMatch())
        name.prepend(QStringLiteral("file_"));
    if (name.toUtf8().size() <= kLongestName)
        return name;
    const QString suffix = QFileInfo(name).suffix().left(16);
    while (name.toUtf8().size() > kLongestName - 17)
        name.chop(1);
    return suffix.isEmpty() ? name : name + '.' + suffix;
}

/// A folder that is one, not a link to one; -1 if there is none.
int openFolder(int above, const char *name)
{
    return FSafeCalls::openRetrying(above, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
}
} // namespace

QString FProjectFolder::scriptOf(const QString &path)
{
    const QString script = QDir::cleanPath(path) + '/' + kScript;
    const bool isMeant = path.endsWith('/') ||
                         (QFileInfo(path).isDir() && (QFileInfo::exists(script) || isAt(script)));
    return isMeant ? script : path;
}

bool FProjectFolder::isAt(const QString &script)
{
    const QFileInfo info(script);
    if (info.fileName() != kScript)
        return false;
    const QString folder = info.absolutePath() + '/';
    if (QFileInfo(folder + kWhole).isDir())
        return true;
    if (!info.exists())
        return false;
    const QByteArray text = contentOf(script);
    return text.contains(kNamed) ||
           (QFileInfo(folder + kFiles).isDir() && !text.contains(".setContent(\""));
}

std::unique_ptr<FProjectFolder> FProjectFolder::at(const QString &script)
{
    return isAt(script) ? std::make_unique<FProjectFolder>(script) : nullptr;
}

FProjectFolder::FProjectFolder(const QString &script)
    : mFolder(QFileInfo(script).absolutePath())
{
}

FProjectFolder::~FProjectFolder()
{
    if (mFile >= 0)
        ::close(mFile);
}

bool FProjectFolder::lock(bool exclusive, QString *why)
{
    if (mFile < 0)
        mFile = ::open(mFolder.toUtf8(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (mFile < 0)
        return failed(why, QStringLiteral("open the folder"), mFolder);
    const int kind = exclusive ? LOCK_EX : LOCK_SH;
    for (int i = 0; i < kMostWaits; ++i) {
        // File systems without locks leave nothing that could be done better.
        if (::flock(mFile, kind | LOCK_NB) == 0 || (errno != EWOULDBLOCK && errno != EINTR))
            return true;
        ::usleep(kWaitMicroseconds);
    }
    return FSafeCalls::fail(why, QStringLiteral("use the project"), mFolder,
                            QStringLiteral("another process is reading or saving it"));
}

QString FProjectFolder::place(const QString &relative) const
{
    const QString waiting = mFolder + '/' + kWhole + '/' + relative;
    return QFileInfo::exists(waiting) ? waiting : mFolder + '/' + relative;
}

bool FProjectFolder::open(QString *why)
{
    if (!QFileInfo(mFolder).isDir())
        return true;
    if (!lock(false, why))
        return false;
    const int cut = openFolder(mFile, kWhole);
    if (cut < 0)
        return true;
    ::close(cut);
    QString unsettled; // told by whoever saves; reading goes through what is staged
    return (lock(true, &unsettled) && settle(&unsettled)) || lock(false, why);
}

bool FProjectFolder::read(const QString &relative, std::string *bytes, QString *why) const
{
    const QString name = relative.mid(int(sizeof kFiles));
    if (!relative.startsWith(QLatin1String("files/")) || name.isEmpty() || name[0] == '.' ||
        name.contains('/') || name.contains('\\') || name.contains('"')) {
        *why = QStringLiteral("a text of the project lies in files/ and has a plain name");
        return false;
    }
    const QString path = safeJoin(mFolder, place(relative).mid(mFolder.size() + 1), why);
    return !path.isEmpty() && FUserFile::read(path, bytes, why);
}

bool FProjectFolder::beginSave(QString *why)
{
    const auto kAll = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    if (QFileInfo::exists(mFolder) && !isAt(mFolder + '/' + kScript) &&
        !QDir(mFolder).isEmpty(kAll))
        return FSafeCalls::fail(why, QStringLiteral("save a project in"), mFolder,
                                QStringLiteral("it holds other files"));
    if (!QDir().mkpath(mFolder))
        return FSafeCalls::fail(why, QStringLiteral("make the folder"), mFolder,
                                QStringLiteral("it can't be made"));
    if (!lock(true, why) || !settle(why))
        return false;
    if (::mkdirat(mFile, kFiles, 0777) != 0 && errno != EEXIST)
        return failed(why, QStringLiteral("make the folder"), mFolder + '/' + kFiles);
    const FSafeCalls::Descriptor files(openFolder(mFile, kFiles));
    if (!files.isOpen())
        return failed(why, QStringLiteral("open the folder"), mFolder + '/' + kFiles);
    mOwn = namesIn(contentOf(mFolder + '/' + kScript));
    const auto entries =
        QDir(mFolder + '/' + kFiles).entryList(QDir::AllEntries | QDir::Hidden | QDir::System);
    for (const QString &entry : entries)
        if (!mOwn.contains(entry.toUtf8()))
            mStrangers.insert(entry.toCaseFolded());
    return true;
}

QString FProjectFolder::freeName(const QString &wanted) const
{
    const QString plain = plainName(wanted);
    const int dot = plain.lastIndexOf('.');
    const int end = dot > 0 ? dot : plain.size();
    QString name = plain;
    for (int i = 2;; ++i) {
        const QString small = name.toCaseFolded();
        if (!mTaken.contains(small) && !mStrangers.contains(small) && !mOwn.contains(name.toUtf8()))
            return name;
        name = plain.left(end) + '-' + QString::number(i) + plain.mid(end);
    }
}

QString FProjectFolder::store(const void *owner, const QString &kept, const QString &wanted,
                              const QByteArray &bytes)
{
    const auto known = mStored.find(owner);
    if (known != mStored.end())
        return known->second;
    QString name = kept.mid(int(sizeof kFiles));
    const QString small = name.toCaseFolded();
    if (name.isEmpty() || mTaken.contains(small) || mStrangers.contains(small))
        name = freeName(wanted);
    mTaken.insert(name.toCaseFolded());
    const QString relative = QLatin1String(kFiles) + '/' + name;
    const QString path = mFolder + '/' + relative;
    if (QFileInfo(path).isSymLink() || !QFileInfo(path).isFile() || contentOf(path) != bytes)
        mChanges.push_back({name.toUtf8(), bytes});
    return mStored[owner] = relative;
}

bool FProjectFolder::stage(const std::vector<Change> &changes, QString *why)
{
    const QString staged = mFolder + '/' + kStage;
    if (!FSafeFile::removeTree(staged, why))
        return false;
    if (::mkdirat(mFile, kStage, 0777) != 0)
        return failed(why, QStringLiteral("make the folder"), staged);
    const FSafeCalls::Descriptor folder(openFolder(mFile, kStage));
    if (!folder.isOpen() || ::mkdirat(folder, kFiles, 0777) != 0)
        return failed(why, QStringLiteral("make a folder in"), staged);
    const FSafeCalls::Descriptor files(openFolder(folder, kFiles));
    if (!files.isOpen())
        return failed(why, QStringLiteral("open a folder in"), staged);
    for (const Change &change : changes) {
        const bool isScript = change.name == kScript;
        if (!FSafeFile::replaceIn(isScript ? folder : files, change.name, change.bytes, why))
            return false;
    }
    return FSafeFile::syncTree(staged, why);
}

bool FProjectFolder::save(const QByteArray &script, QString *why)
{
    const QString path = mFolder + '/' + kScript;
    const QByteArray old = contentOf(path);
    const bool isSame = QFileInfo::exists(path) && old == script;
    if (isSame && mChanges.empty())
        return true;
    if (mChanges.empty() && (namesIn(script) - mOwn).isEmpty() &&
        (mOwn - namesIn(script)).isEmpty())
        return FSafeFile::write(path, script, why);
    if (!isSame)
        mChanges.push_back({kScript, script});
    if (!stage(mChanges, why)) {
        QString ignored;
        FSafeFile::removeTree(mFolder + '/' + kStage, &ignored);
        return false;
    }
    if (FSafeCalls::calls().rename(mFile, kStage, kWhole, 0) != 0) {
        failed(why, QStringLiteral("save the project in"), mFolder);
        QString ignored;
        FSafeFile::removeTree(mFolder + '/' + kStage, &ignored);
        return false;
    }
    if (!FSafeCalls::syncFolder(mFile))
        return failed(why, QStringLiteral("bring to the disk"), mFolder);
    return settle(why);
}

/// Moves what a whole save has staged to its places. Each step may be the last of a process.
bool FProjectFolder::settle(QString *why)
{
    const FSafeCalls::Descriptor saved(openFolder(mFile, kWhole));
    if (!saved.isOpen())
        return errno == ENOENT || failed(why, QStringLiteral("open"), mFolder + '/' + kWhole);
    const QString folder = mFolder + '/' + kWhole;
    if (::mkdirat(mFile, kFiles, 0777) != 0 && errno != EEXIST)
        return failed(why, QStringLiteral("make the folder"), mFolder + '/' + kFiles);
    const FSafeCalls::Descriptor files(openFolder(mFile, kFiles));
    const FSafeCalls::Descriptor staged(openFolder(saved, kFiles));
    if (!files.isOpen() || (!staged.isOpen() && errno != ENOENT))
        return failed(why, QStringLiteral("open the files in"), mFolder);
    const FFileCalls &calls = FSafeCalls::calls();
    const auto move = [&](const QByteArray &relative) {
        const QByteArray from = QByteArray(kWhole) + '/' + relative;
        // Another user's save must not take the rights away that the old file gave.
        struct stat info;
        if (::fstatat(mFile, relative, &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(info.st_mode))
            ::fchmodat(mFile, from, info.st_mode & 07777, 0);
        return calls.rename(mFile, from, relative, 0) == 0 ||
               failed(why, QStringLiteral("put in its place"), mFolder + '/' + QString(relative));
    };
    for (const QString &name : QDir(folder + '/' + kFiles).entryList(QDir::Files | QDir::Hidden))
        if (!move(QByteArray(kFiles) + '/' + name.toUtf8()))
            return false;
    if (QFileInfo(folder + '/' + kScript).isFile()) {
        const QSet<QByteArray> now = namesIn(contentOf(folder + '/' + kScript));
        for (const QByteArray &gone : namesIn(contentOf(mFolder + '/' + kScript)) - now)
            if (calls.unlinkAt(files, gone, 0) != 0 && errno != ENOENT)
                return failed(why, QStringLiteral("remove"), mFolder + "/files/" + QString(gone));
        if (!FSafeCalls::syncFolder(files) || !move(kScript))
            return failed(why, QStringLiteral("bring to the disk"), mFolder);
    }
    if (!FSafeCalls::syncFolder(files) || !FSafeCalls::syncFolder(mFile))
        return failed(why, QStringLiteral("bring to the disk"), mFolder);
    return FSafeFile::removeTree(folder, why);
}
