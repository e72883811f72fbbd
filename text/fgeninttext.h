// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTTEXT_H
#define FGENINTTEXT_H

#include "fmappedfile.h"

#include <QString>
#include <memory>
#include <string>
#include <vector>

/// Holds the text that rules are read from: a mapped file, or a string.
///
/// A file stays as it is mapped and is looked at piece by piece, only where somebody asks; of UTF-8
/// with letters outside ASCII decode() gives the lines. Another encoding, which a byte order mark
/// tells, and what doesn't decode line by line is decoded into UTF-16 once. All positions count
/// units of the present form, from 0. Not thread-safe, not even for const calls:
/// the text remembers what it has already looked at.
class FGenIntText
{
public:
    FGenIntText(const FGenIntText &) = delete;
    FGenIntText &operator=(const FGenIntText &) = delete;

    /// Opens a regular file. Null, and the reason in words in \p why, for anything that cannot be
    /// read: a missing file, a directory, a FIFO, a socket, a device.
    static std::unique_ptr<FGenIntText> fromFile(const QString &path, QString *why);
    static std::unique_ptr<FGenIntText> fromString(const QString &text);
    /// As from a file that holds \p bytes.
    static std::unique_ptr<FGenIntText> fromBytes(std::string bytes);

    /// True if the file was cut or written since it was opened: what was read is void.
    bool hasChanged() const { return mMap.hasChanged(); }
    bool isEmpty() const { return mSize == 0; }
    qint64 size() const { return mSize; }
    /// True if the text is held as UTF-16, false if as bytes.
    bool isWide() const { return mWide != nullptr; }
    const uchar *bytes() const { return mBytes; }
    const char16_t *wide() const { return mWide; }
    QString mid(qint64 from, qint64 length) const;

    /// Looks at a stretch: counts its line feeds and notices bytes that are not ASCII.
    void examine(qint64 from, qint64 to) const;
    /// True once a byte was seen that is not ASCII.
    bool isForeign() const { return mForeign; }
    /// True if such a byte stands in the stretch, which is examined.
    bool isForeign(qint64 from, qint64 to) const;
    /// The units of a stretch of bytes that ends behind or ahead of a character of ASCII.
    QString decode(qint64 from, qint64 to) const;
    /// False once the bytes turned out not to serve: what was derived from them so far is void, and
    /// widen() is due.
    bool isPlain() const { return mPlain; }
    void giveUpBytes() const { mPlain = false; }
    /// Goes over to UTF-16; positions got before are void.
    void widen() const;

    /// Position of the \p n th line feed (from 1) at or behind \p from, before \p limit; -1 if
    /// none.
    qint64 lineFeedFrom(qint64 from, qint64 n, qint64 limit) const;
    /// Position of the \p n th line feed (from 1) before \p end, counted backward; -1 if there are
    /// not so many, and then \p found, if given, holds how many there are.
    qint64 lineFeedBefore(qint64 end, qint64 n, qint64 *found = nullptr) const;
    /// Number of line feeds before \p position.
    qint64 lineFeedsUpTo(qint64 position) const;

    static constexpr qint64 kBlock = 1 << 16; ///< units that are examined together

private:
    FGenIntText() = default;
    void setBytes(const uchar *bytes, qint64 size);
    quint32 block(qint64 index) const;
    bool decodesByLine(qint64 from, qint64 to) const;
    const uchar *whole() const;

    FMappedFile mMap;
    std::string mRead; ///< content of a file that cannot be mapped
    QString mString;
    mutable const uchar *mBytes = nullptr;
    mutable const char16_t *mWide = nullptr;
    mutable qint64 mSize = 0;
    mutable bool mPlain = true;
    mutable bool mForeign = false;
    mutable std::unique_ptr<char16_t[]> mDecoded;
    mutable std::vector<quint32>
        mBlocks; ///< line feeds of each block, and kForeign; kUnseen before
    static constexpr quint32 kUnseen = ~0U, kForeign = 1U << 31;
};
#endif
