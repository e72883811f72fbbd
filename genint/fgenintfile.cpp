// SPDX-License-Identifier: Apache-2.0
#include "fgenintfile.h"

#include "fcmdbinder.h"
#include "fdefinitiongenint.h"
#include "fhistory.h"
#include "fmarloctrl.h"

#include <QFile>
#include <QFileInfo>
#include <QTextStream>

F_CLASS_IMPL(FGenIntFile)

const std::string ENTRYGROUP_EXPORTS = "Exports";

namespace
{
const QLatin1String kEncoded("[B64]");
}

FGenIntFile::FGenIntFile(std::string name) : FManaged(std::move(name))
{
    mManageFlag = 2;
}

QString FGenIntFile::getContent() const
{
    return QString::fromLatin1(QByteArray("[B64]") + mContent.toUtf8().toBase64());
}

std::shared_ptr<FGenIntFile> FGenIntFile::setContent(const QString &text)
{
    const auto self = shared_from_base<FGenIntFile>();
    if (text.startsWith(kEncoded)) {
        const QByteArray bytes = QByteArray::fromBase64(text.midRef(kEncoded.size()).toLatin1());
        mContent = bytes.isNull() ? QString() : QString::fromUtf8(bytes.constData());
    } else {
        mContent = text;
        // Plain texts of old projects carry their line feeds escaped.
        if (FMarloCtrl::instance()->isLoadingProject())
            mContent.replace(QLatin1String("\\n"), QLatin1String("\n"));
    }
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
    c.attribute("setContent", &FGenIntFile::setContent, &FGenIntFile::getContent, FArg{"content"})
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
