// SPDX-License-Identifier: Apache-2.0
#include "fgenintfile.h"

#include "fcmdbinder.h"
#include "fgenintencoding.h"
#include "fhistory.h"
#include "flogmsg.h"
#include "fmarloctrl.h"
#include "fproject.h"
#include "fprojectfolder.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>
#include <algorithm>

F_CLASS_IMPL(FGenIntFile)

const std::string ENTRYGROUP_EXPORTS = "Exports";

namespace {
const char kEncoded[] = "[B64]";
constexpr char kByteOrderMark[] = "\xef\xbb\xbf";

/// What setSource() takes.
QString stampOf(const QByteArray &bytes, const QString &path)
{
    const QByteArray sum = QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex();
    return QString::fromLatin1(sum) + QLatin1String("  ") + path;
}

/// The bits of a letter of base64 at each of the four places of a group.
struct FBase64Bits
{
    static constexpr uint32_t kNoLetter = 1; // no letter reaches the last bits
    FBase64Bits()
    {
        std::fill_n(&bits[0][0], 4 * 256, kNoLetter);
        const char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (uint32_t i = 0; i < 64; ++i)
            for (int place = 0; place < 4; ++place)
                bits[place][uchar(letters[i])] = i << (26 - 6 * place);
    }
    uint32_t bits[4][256];
};

/// Decodes base64; blanks and line ends between the letters don't count. Null, and the place of the
/// first character that can't stand there in \p bad, for anything else.
std::shared_ptr<std::string> decodedBase64(const char *base64, size_t size, size_t *bad)
{
    static const FBase64Bits sTable;
    auto bytes = std::make_shared<std::string>();
    FLargeText::reserve(bytes.get(), size / 4 * 3 + 1);
    bytes->resize(size / 4 * 3 + 1);
    size_t at = 0, count = 0;
    for (; at + 4 <= size; at += 4, count += 3) {
        const auto *in = reinterpret_cast<const uchar *>(base64 + at);
        const uint32_t group = sTable.bits[0][in[0]] | sTable.bits[1][in[1]] |
                               sTable.bits[2][in[2]] | sTable.bits[3][in[3]];
        if (group & FBase64Bits::kNoLetter)
            break;
        qToBigEndian(group, &(*bytes)[count]);
    }
    bytes->resize(count);
    // The rest letter by letter: the last group, or text that is broken into lines.
    uint32_t group = 0;
    int letters = 0, ends = 0;
    for (; at < size; ++at) {
        const auto letter = uchar(base64[at]);
        if (letter == ' ' || letter == '\n' || letter == '\r' || letter == '\t')
            continue;
        *bad = at;
        if (letter == '=') {
            ++ends;
            continue;
        }
        const uint32_t bits = sTable.bits[3][letter];
        if (bits == FBase64Bits::kNoLetter || ends > 0)
            return nullptr;
        group = group << 6 | bits >> 8;
        if (++letters == 4) {
            bytes->push_back(char(group >> 16));
            bytes->push_back(char(group >> 8));
            bytes->push_back(char(group));
            group = letters = 0;
        }
    }
    *bad = size;
    if (letters == 1 || (ends > 0 && letters + ends != 4) || ends > 2)
        return nullptr;
    if (letters >= 2)
        bytes->push_back(char(group >> (letters == 2 ? 4 : 10)));
    if (letters == 3)
        bytes->push_back(char(group >> 2));
    return bytes;
}
} // namespace

FGenIntFile::FGenIntFile(std::string name)
    : FManaged(std::move(name))
{
    mManageFlag = 2;
}

QString FGenIntFile::getContent() const
{
    QByteArray bytes =
        mUtf8 ? QByteArray::fromRawData(mUtf8->data(), int(mUtf8->size())) : mContent.toUtf8();
    // Reading drops a byte order mark at the start, so one that belongs to the text stands twice.
    if (bytes.startsWith(kByteOrderMark))
        bytes.prepend(kByteOrderMark);
    return QString::fromLatin1(kEncoded + bytes.toBase64());
}

const QString &FGenIntFile::text() const
{
    if (mContent.isNull() && mUtf8)
        mContent = QString::fromUtf8(mUtf8->data(), int(mUtf8->size()));
    return mContent;
}

std::shared_ptr<FGenIntFile> FGenIntFile::setContent(const QString &text)
{
    if (text.startsWith(kEncoded)) {
        // Passes over what is no base64, and ends at a zero.
        const QByteArray bytes = QByteArray::fromBase64(text.mid(sizeof kEncoded - 1).toLatin1());
        return takeUtf8(std::make_shared<const std::string>(bytes.constData()));
    }
    mContent = text.isNull() ? QLatin1String("") : text;
    mUtf8 = nullptr;
    mUnescaped = FMarloCtrl::instance()->isLoadingProject() ? mContent.count("\\n") : 0;
    // Plain texts of old projects carry their line feeds escaped.
    if (FMarloCtrl::instance()->isLoadingProject())
        mContent.replace(QLatin1String("\\n"), QLatin1String("\n"));
    return contentChanged();
}

/// A script is somebody's file, so what is broken in it is told rather than passed over.
FOutcome<std::shared_ptr<FGenIntFile>> FGenIntFile::setContentFromScript(const FUtf8Text &text)
{
    const std::string &given = *text.text;
    constexpr size_t start = sizeof kEncoded - 1;
    if (given.compare(0, start, kEncoded) == 0) {
        size_t bad = 0;
        const auto bytes = decodedBase64(given.data() + start, given.size() - start, &bad);
        if (!bytes) {
            bad += start;
            return {nullptr,
                    FReason("character " + fromNumber((unsigned long)bad + 1) + " of the content",
                            "base64",
                            bad < given.size() ? "\"" + given.substr(bad, 8) + "\"" : "its end")};
        }
        const size_t zero = bytes->find('\0');
        if (zero != std::string::npos)
            return {nullptr, FReason("byte " + fromNumber((unsigned long)zero + 1) +
                                         " of the decoded content",
                                     "text", "a zero character")};
        return {takeUtf8(bytes), {}};
    }
    if (given.compare(0, 3, kByteOrderMark) == 0 ||
        (FMarloCtrl::instance()->isLoadingProject() && given.find("\\n") != std::string::npos))
        return {setContent(Q(given)), {}};
    return {takeUtf8(text.text), {}};
}

FOutcome<std::shared_ptr<FGenIntFile>> FGenIntFile::setContentFile(const QString &relative)
{
    const FProjectFolder *folder = FProject::instance()->loadedFolder();
    if (!folder)
        return {nullptr, FReason("only a project that is kept as a folder takes texts from files")};
    auto bytes = std::make_shared<std::string>();
    QString why;
    if (!folder->read(relative, bytes.get(), &why))
        return {nullptr, FReason("the text " + S(relative) + " can't be read: " + S(why))};
    const size_t bad =
        std::min(bytes->find('\0'), FUtf8::firstBadByte(bytes->data(), bytes->size()));
    if (bad != std::string::npos)
        return {nullptr,
                FReason("byte " + fromNumber((unsigned long)bad + 1) + " of " + S(relative),
                        "UTF-8 text",
                        "0x" + S(QString::number(uchar((*bytes)[bad]), 16).toUpper()))};
    if (bytes->compare(0, 3, kByteOrderMark) == 0)
        bytes->insert(0, kByteOrderMark); // one is dropped
    mContentFile = relative;
    return {takeUtf8(bytes), {}};
}

QString FGenIntFile::getContentFile() const
{
    if (FProjectFolder *folder = FProject::instance()->savedFolder())
        mContentFile = folder->store(
            this, mContentFile, mFileName.isEmpty() ? Q(getName()) : mFileName,
            mUtf8 ? QByteArray::fromRawData(mUtf8->data(), int(mUtf8->size())) : mContent.toUtf8());
    return mContentFile;
}

/// Keeps the bytes where they say the same as the text made of them: large templates are written as
/// they were read.
std::shared_ptr<FGenIntFile> FGenIntFile::takeUtf8(const std::shared_ptr<const std::string> &given)
{
    const bool same = given->compare(0, 3, kByteOrderMark) != 0 &&
                      FUtf8::firstBadByte(given->data(), given->size()) == std::string::npos;
    mUnescaped = 0;
    mContent = same ? QString() : QString::fromUtf8(given->data(), int(given->size()));
    mUtf8 = same ? given : nullptr;
    return contentChanged();
}

std::shared_ptr<FGenIntFile> FGenIntFile::contentChanged()
{
    const auto self = shared_from_base<FGenIntFile>();
    setOutOfDate(0);
    FHistoryTransaction transaction(nullptr, F_TEXT("set content"), true);
    transaction.addStep(self);
    return self;
}

std::shared_ptr<FGenIntFile> FGenIntFile::setFileName(const QString &name)
{
    const auto self = shared_from_base<FGenIntFile>();
    if (name == mFileName)
        return self;
    const QString old = mFileName;
    mFileName = name;
    setOutOfDate(0);
    FHistoryTransaction transaction(nullptr, F_TEXT("set file name"), true);
    transaction.addStep(self);
    if (FMarloCtrl::instance()->isLoadingProject())
        return self;               // references are as they were saved
    std::shared_ptr<FObject> kept; // renaming tags must not end it
    FGenIntFileOwner *owner = nullptr;
    clients().forEach([&](FObject *client) {
        auto *candidate = dynamic_cast<FGenIntFileOwner *>(client);
        if (candidate && !client->isDestroyed() && candidate->ownsFile(this)) {
            owner = candidate;
            kept = client->shared_from_this();
        }
    });
    if (owner) {
        owner->updateCommandFiles(S(old), S(name));
        // References to files carry the group in front.
        const std::string group = ENTRYGROUP_EXPORTS + "|";
        if (!old.isEmpty() && !name.isEmpty())
            owner->updateCommandFiles(group + S(old), group + S(name));
    }
    return self;
}

void FGenIntFile::setForceWindowsLineEndings(bool force)
{
    mForceWindowsLineEndings = force;
    FHistoryTransaction transaction(nullptr, F_TEXT("set force Windows line endings"), true);
    transaction.addStep(shared_from_this());
}

FStatus FGenIntFile::setEncoding(const QString &encoding)
{
    if (!FGenIntEncoding::isKnown(encoding))
        return {FReason::unexpected("ISO-8859-1, UTF-8-BOM, UTF-16LE, UTF-16BE or nothing",
                                    "\"" + S(encoding) + "\"")};
    mEncoding = encoding.isNull() ? QLatin1String("") : encoding;
    setOutOfDate(0);
    FHistoryTransaction transaction(nullptr, F_TEXT("set encoding"), true);
    transaction.addStep(shared_from_this());
    return {};
}

void FGenIntFile::initFromFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    QString text, encoding, why;
    const QByteArray bytes = file.readAll();
    if (!FGenIntEncoding::decode(bytes, &text, &encoding, &why)) {
        FLogMsg::error(getClass(), S(path) + " can't be kept byte for byte", S(why), nullptr);
        return;
    }
    FHistoryTransaction transaction(nullptr, F_TEXT("set content"), true);
    if (text.startsWith(kEncoded))
        setContent(text); // the saved form of another file
    else
        takeUtf8(std::make_shared<const std::string>(S(text)));
    if (encoding != mEncoding)
        setEncoding(encoding);
    setSource(stampOf(bytes, QFileInfo(path).absoluteFilePath()));
    const QString name = QFileInfo(path).fileName();
    setFileName(name);
    setName(S(name));
}

void FGenIntFile::setSource(const QString &source)
{
    const int path = source.indexOf(QLatin1String("  ")) + 2;
    const QString folder = QFileInfo(FProject::instance()->path()).absolutePath();
    mSource = path < 2 || QDir::isAbsolutePath(source.mid(path))
                  ? source
                  : source.left(path) + QDir::cleanPath(folder + '/' + source.mid(path));
    FHistoryTransaction transaction(nullptr, F_TEXT("set source"), true);
    transaction.addStep(shared_from_this());
}

QString FGenIntFile::sourcePath() const
{
    const int path = mSource.indexOf(QLatin1String("  ")) + 2;
    return path < 2 ? QString() : mSource.mid(path);
}

QString FGenIntFile::getSource() const
{
    const QString path = sourcePath();
    const QString project = FProject::instance()->savedPath();
    const QString folder = QFileInfo(project).absolutePath() + '/';
    return !project.isEmpty() && path.startsWith(folder) && folder.size() > 1
               ? mSource.left(mSource.size() - path.size()) + path.mid(folder.size())
               : mSource;
}

bool FGenIntFile::readChangedSource(QString *text, QString *source) const
{
    QFile file(sourcePath());
    const QFileInfo info(file);
    if (mSource.isEmpty() || !info.isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = file.readAll();
    *source = stampOf(bytes, sourcePath());
    if (*source == mSource)
        return false;
    QString encoding, why;
    return FGenIntEncoding::decode(bytes, text, &encoding, &why);
}

void FGenIntFile::init(const std::shared_ptr<FGenIntFile> &source) { FManaged::init(source); }

void FGenIntFile::visitState(FStateVisitor &state)
{
    FManaged::visitState(state);
    state(mFileName)(mContent)(mUtf8)(mForceWindowsLineEndings)(mEncoding)(mSource);
}

void FGenIntFile::initCmds()
{
    FCmdBinder<FGenIntFile> c;
    c.attribute("setContent", &FGenIntFile::setContentFromScript, &FGenIntFile::getContent,
                FArg{"content"})
        .title(F_TEXT("Content"))
        .hidden()
        .guiThread()
        .systemFlag(2)
        .savedIf([](const FObject *) { return !FProject::instance()->savedFolder(); });
    c.attribute("setContentFile", &FGenIntFile::setContentFile, &FGenIntFile::getContentFile,
                FArg{"contentFile"})
        .title(F_TEXT("Content File"))
        .hidden()
        .systemFlag(2)
        .ownProjectOnly()
        .savedIf([](const FObject *) { return FProject::instance()->savedFolder(); });
    c.attribute("setFileName", &FGenIntFile::setFileName, &FGenIntFile::getFileName,
                FArg{"fileName"})
        .title(F_TEXT("File Name"))
        .component("")
        .hidden()
        .guiThread()
        .systemFlag(2);
    c.attribute("setEncoding", &FGenIntFile::setEncoding, &FGenIntFile::getEncoding,
                FArg{"encoding"})
        .title(F_TEXT("Encoding"))
        .hidden()
        .systemFlag(2)
        .savedIf([](const FObject *object) {
            return !static_cast<const FGenIntFile *>(object)->getEncoding().isEmpty();
        });
    c.attribute("setSource", &FGenIntFile::setSource, &FGenIntFile::getSource, FArg{"source"})
        .title(F_TEXT("Source"))
        .hidden()
        .systemFlag(2)
        .savedIf([](const FObject *object) {
            return !static_cast<const FGenIntFile *>(object)->getSource().isEmpty();
        });
    c.attribute("setForceWindowsLineEndings", &FGenIntFile::setForceWindowsLineEndings,
                &FGenIntFile::getForceWindowsLineEndings, FArg{"forceWindowsLineEndings"})
        .title(F_TEXT("Force Windows Line Endings"))
        .guiThread();
}
