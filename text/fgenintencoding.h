// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTENCODING_H
#define FGENINTENCODING_H
#include <QByteArray>
#include <QString>

/// Encodings of text files that are kept byte for byte: UTF-8 under the empty name, and
/// "UTF-8-BOM", "UTF-16LE", "UTF-16BE" (these three with their mark), "ISO-8859-1".
namespace FGenIntEncoding {
bool isKnown(const QString &encoding);
/// Takes a file apart into its text and its encoding. False, and the reason in \p why, if the text
/// couldn't be written back to the same bytes.
bool decode(const QByteArray &bytes, QString *text, QString *encoding, QString *why);
/// The bytes of a text. False, and the position of the first character that the encoding lacks in
/// \p bad, if there is one.
bool encode(const QString &text, const QString &encoding, QByteArray *bytes, int *bad);
} // namespace FGenIntEncoding
#endif
