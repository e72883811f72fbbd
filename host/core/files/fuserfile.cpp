// SPDX-License-Identifier: Apache-2.0
#include "fuserfile.h"

#include "fsafecalls.h"
#include "ftext.h"

#include <algorithm>

using namespace FSafeCalls;

QString FUserFile::tooLarge(qint64 size, qint64 most)
{
    return QStringLiteral("it has %1 bytes, at most %2 MiB are taken").arg(size).arg(most >> 20);
}

bool FUserFile::open(QFile *file, QString *why, qint64 most, QIODevice::OpenMode mode)
{
    const auto refuse = [&](const QString &reason) {
        *why = reason;
        return false;
    };
    QByteArray native;
    if (!nativePath(file->fileName(), &native, why))
        return false;
    // Looked at before it is opened, since opening a device may do something and a pipe waits, and
    // after, since it may have become something else.
    struct stat info;
    if (stat(native.constData(), &info) != 0)
        return refuse(systemWords(errno));
    if (!S_ISREG(info.st_mode))
        return refuse(kindOf(info.st_mode));
    if (!file->open(mode))
        return refuse(file->errorString());
    QString reason;
    if (fstat(file->handle(), &info) != 0)
        reason = systemWords(errno);
    else if (!S_ISREG(info.st_mode))
        reason = kindOf(info.st_mode);
    else if (most != kAnySize && info.st_size > most)
        reason = tooLarge(info.st_size, most);
    if (reason.isEmpty())
        return true;
    file->close();
    return refuse(reason);
}

bool FUserFile::read(const QString &path, std::string *bytes, QString *why, qint64 most)
{
    QFile file(path);
    if (!open(&file, why, most))
        return false;
    const qint64 size = file.size();
    FLargeText::reserve(bytes, size_t(size) + 1);
    bytes->resize(size_t(size));
    qint64 done = 0;
    for (;;) {
        // A byte more than there should be, which shows the end and what was added meanwhile.
        if (done == qint64(bytes->size()))
            bytes->resize(bytes->size() + (done == size ? 1 : std::min<qint64>(done, 1 << 20)));
        const qint64 got = file.read(&(*bytes)[size_t(done)], qint64(bytes->size()) - done);
        if (got < 0) {
            *why = file.errorString();
            return false;
        }
        if (got == 0)
            break;
        done += got;
        if (most != kAnySize && done > most) {
            *why = tooLarge(done, most);
            return false;
        }
    }
    bytes->resize(size_t(done));
    if (done < size)
        *why = QStringLiteral("it changed meanwhile");
    return done >= size;
}
