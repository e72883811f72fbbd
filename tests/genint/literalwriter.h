// SPDX-License-Identifier: Apache-2.0
#ifndef LITERALWRITER_H
#define LITERALWRITER_H
#include <QString>
#include <QStringList>
#include <QTextStream>
#include <map>
#include <vector>

/// The rules for writing a template, one step after the other and without any care for speed: what
/// the fast road is compared with.
namespace LiteralWriter {
struct Entry
{
    bool evaluates = true;
    bool writesNothing = false; // evaluates to something that has no text
    QString text;
};
using Entries = std::map<QString, Entry>;

inline QString strippedKey(const QString &key)
{
    QStringList parts = key.split(QStringLiteral("|"), Qt::SkipEmptyParts, Qt::CaseSensitive);
    for (QString &part : parts) {
        const int bracket = part.lastIndexOf(QStringLiteral("["), -1, Qt::CaseSensitive);
        if (bracket >= 0)
            part = part.left(bracket);
    }
    return parts.join(QStringLiteral("|"));
}

/// The key that a tag finds, or the end.
inline Entries::const_iterator find(const Entries &entries, const QString &name)
{
    for (auto it = entries.begin(); it != entries.end(); ++it)
        if (QString::compare(strippedKey(it->first), name, Qt::CaseInsensitive) == 0 &&
            it->second.evaluates)
            return it;
    return entries.end();
}

/// \p skipped gets the names of tags without an entry.
inline QString expand(const QString &original, const Entries &entries, bool forceWindowsLineEndings,
                      QStringList *skipped)
{
    const QString open = QStringLiteral("<entry>"), close = QStringLiteral("</entry>");
    QString text = original, result;
    QTextStream out(&result);
    if (forceWindowsLineEndings)
        text.replace(QStringLiteral("\n"), QStringLiteral("\r\n"));
    int position = 0;
    for (;;) {
        const int start = text.indexOf(open, position, Qt::CaseInsensitive);
        if (start < 0) {
            out << text.mid(position);
            break;
        }
        out << text.mid(position, start - position);
        const int end = text.indexOf(close, start + open.size(), Qt::CaseInsensitive);
        if (end < 0)
            break;
        const QString name = text.mid(start + open.size(), end - start - open.size());
        position = end + close.size();
        const auto found = find(entries, name);
        if (found == entries.end())
            skipped->append(name);
        else if (!found->second.writesNothing)
            out << found->second.text;
    }
    out.flush();
    return result;
}

/// The bytes of the file: the text as UTF-8, as a string that ends at its first zero.
inline QByteArray fileBytes(const QString &expanded)
{
    const QByteArray utf8 = expanded.toUtf8();
    return QByteArray(utf8.constData());
}

inline std::vector<QString> names(const QString &text, Qt::CaseSensitivity marks, bool distinct)
{
    const QString open = QStringLiteral("<entry>"), close = QStringLiteral("</entry>");
    std::vector<QString> result;
    int position = 0;
    for (;;) {
        const int start = text.indexOf(open, position, marks);
        if (start < 0)
            return result;
        const int end = text.indexOf(close, start + open.size(), marks);
        if (end < 0)
            return result;
        const QString name = text.mid(start + open.size(), end - start - open.size());
        position = end + close.size();
        bool there = false;
        for (const QString &each : result)
            there = there || each == name;
        if (!distinct || !there)
            result.push_back(name);
    }
}
} // namespace LiteralWriter
#endif
