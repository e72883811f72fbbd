// SPDX-License-Identifier: Apache-2.0
#ifndef FUSERFILE_H
#define FUSERFILE_H
#include <QFile>
#include <string>

/// Opens what a user names. Only regular files are taken, so that nothing waits for a writer or
/// grows without end, and only up to a size that can be worked on. Reasons are words without the
/// name.
namespace FUserFile {
constexpr qint64 kMostBytes = qint64(256) << 20; // of a project, a definition, a template
constexpr qint64 kAnySize = -1;

/// Opens \p file, which knows its name, for reading.
bool open(QFile *file, QString *why, qint64 most = kMostBytes,
          QIODevice::OpenMode mode = QIODevice::ReadOnly);
/// Reads the whole file.
bool read(const QString &path, std::string *bytes, QString *why, qint64 most = kMostBytes);
/// Why more than \p most bytes are refused.
QString tooLarge(qint64 size, qint64 most = kMostBytes);
} // namespace FUserFile
#endif
