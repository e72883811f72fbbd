// SPDX-License-Identifier: Apache-2.0
#include "fgenintfile.h"

#include "fcmdbinder.h"
#include "fdefinitiongenint.h"
#include "fhistory.h"
#include "fmarloctrl.h"

#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <QtEndian>
#include <algorithm>

F_CLASS_IMPL(FGenIntFile)

const std::string ENTRYGROUP_EXPORTS = "Exports";

namespace
{
const QLatin1String kEncoded("[B64]");

/// The bits of a letter of base64 at each of the four places of a group; kNoLetter for all others.
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

/// The library's decoder, which passes over anything that is no letter, sped up for whole groups.
QByteArray decodedBase64(const QByteArray &base64)
{
    static const FBase64Bits sTable;
    const auto *in = reinterpret_cast<const uchar *>(base64.constData());
    const uchar *end = in + base64.size() / 4 * 4;
    QByteArray bytes(base64.size() / 4 * 3 + 1, Qt::Uninitialized);
    char *out = bytes.data();
    for (; in != end; in += 4, out += 3) {
        const uint32_t group = sTable.bits[0][in[0]] | sTable.bits[1][in[1]] |
                               sTable.bits[2][in[2]] | sTable.bits[3][in[3]];
        if (group & FBase64Bits::kNoLetter)
            break;
        qToBigEndian(group, out);
    }
    bytes.truncate(int(out - bytes.constData()));
    const int done = bytes.size() / 3 * 4;
    if (done < base64.size())
        bytes += QByteArray::fromBase64(base64.mid(done));
    return bytes;
}

/// The text in base64; a zero byte ends it.
FGenIntContent decoded(const QByteArray &base64)
{
    QByteArray bytes = decodedBase64(base64);
    const int zero = bytes.indexOf('\0');
    if (zero >= 0)
        bytes.truncate(zero);
    return FGenIntContent::fromUtf8(bytes);
}
} // namespace

FGenIntFile::FGenIntFile(std::string name) : FManaged(std::move(name))
{
    mManageFlag = 2;
}

FGenIntContent FGenIntContent::fromUtf8(const QByteArray &bytes)
{
    FGenIntContent content(QString(QLatin1String("")));
    uchar all = 0;
    for (const char c : bytes) // no way out of the loop, so that it is done in vectors
        all |= uchar(c);
    if (all >= 0x80) {
        content.mText = QString::fromUtf8(bytes);
    } else if (!bytes.isEmpty()) {
        content.mText = QString();
        content.mAscii = bytes;
    }
    return content;
}

const QString &FGenIntContent::text() const
{
    if (mText.isEmpty() && !mAscii.isEmpty())
        mText = QString::fromLatin1(mAscii);
    return mText;
}

QString FGenIntFile::getContent() const
{
    const QByteArray bytes = mContent.ascii().isNull() ? text().toUtf8() : mContent.ascii();
    return QString::fromLatin1(QByteArray("[B64]") + bytes.toBase64());
}

std::shared_ptr<FGenIntFile> FGenIntFile::setContent(const QString &text)
{
    if (text.startsWith(kEncoded))
        return changeContent(decoded(text.midRef(kEncoded.size()).toLatin1()));
    // Plain texts of old projects carry their line feeds escaped.
    if (FMarloCtrl::instance()->isLoadingProject())
        return changeContent(QString(text).replace(QLatin1String("\\n"), QLatin1String("\n")));
    return changeContent(text);
}

std::shared_ptr<FGenIntFile>
FGenIntFile::setContentUtf8(const std::shared_ptr<const FString> &text)
{
    const std::string &utf8 = text->value();
    const int start = kEncoded.size();
    if (utf8.compare(0, size_t(start), kEncoded.data()) != 0)
        return setContent(Q(utf8));
    return changeContent(
        decoded(QByteArray::fromRawData(utf8.data() + start, int(utf8.size()) - start)));
}

std::shared_ptr<FGenIntFile> FGenIntFile::changeContent(const FGenIntContent &content)
{
    const auto self = shared_from_base<FGenIntFile>();
    mContent = content;
    setOutOfDate(0);
    FHistoryTransaction transaction(nullptr, "set content", true);
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
    FHistoryTransaction transaction(nullptr, "set file name", true);
    transaction.addStep(self);
    std::shared_ptr<FDefinitionGenInt> owner;
    for (const auto &definition : getEntities<FDefinitionGenInt>())
        for (const auto &file : definition.getPtr()->getFiles(0))
            if (file.getExpr() == self)
                owner = definition.getPtr();
    if (owner && !FMarloCtrl::instance()->isLoadingProject()) {
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
    FHistoryTransaction transaction(nullptr, "set force Windows line endings", true);
    transaction.addStep(shared_from_this());
}

void FGenIntFile::initFromFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    setContent(stream.readAll());
    file.close();
    const QString name = QFileInfo(path).fileName();
    setFileName(name);
    setName(S(name));
}

void FGenIntFile::init(const std::shared_ptr<FGenIntFile> &source)
{
    FManaged::init(source);
}

void FGenIntFile::visitState(FStateVisitor &state)
{
    FManaged::visitState(state);
    state(mFileName)(mContent)(mForceWindowsLineEndings);
}

void FGenIntFile::initCmds()
{
    FCmdBinder<FGenIntFile> c;
    c.attribute("setContent", &FGenIntFile::setContentUtf8, &FGenIntFile::getContent,
                FArg{"content"})
        .title("Content")
        .hidden()
        .guiThread()
        .systemFlag(2);
    c.attribute("setFileName", &FGenIntFile::setFileName, &FGenIntFile::getFileName,
                FArg{"fileName"})
        .title("File Name")
        .component("")
        .hidden()
        .guiThread()
        .systemFlag(2);
    c.attribute("setForceWindowsLineEndings", &FGenIntFile::setForceWindowsLineEndings,
                &FGenIntFile::getForceWindowsLineEndings, FArg{"forceWindowsLineEndings"})
        .title("Force Windows Line Endings")
        .guiThread();
}
