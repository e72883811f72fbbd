// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTWRITERCORE_H
#define FGENINTWRITERCORE_H
#include <QByteArray>
#include <QString>
#include <QVector>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

/// Where one tag stands in a text: the opening mark starts at \a start, the closing one stops
/// before \a end.
struct FGenIntTag
{
    int start;
    int nameStart;
    int nameLength;
    int end;
};

/// Finds the tags of a template, "<entry>NAME</entry>": a tag reaches to the first closing mark
/// behind its opening one, and its name is whatever stands between them.
///
/// Listing the entries of a file takes the marks as they are written here, writing takes them in
/// any case; callers say which they need. A text is gone through once.
class FGenIntTagScanner
{
public:
    /// \p *unclosedAt becomes the position of an opening mark that is never closed, or -1.
    static QVector<FGenIntTag> scan(const QString &text, Qt::CaseSensitivity marks,
                                    int *unclosedAt = nullptr);
    /// The names in order, duplicates included.
    static std::vector<QString> names(const QString &text, Qt::CaseSensitivity marks);
    /// Each name once, in order of first appearance; names that differ in case are different.
    static std::vector<QString> distinctNames(const QString &text, Qt::CaseSensitivity marks);
};

/// Changes tags by their literal text, in any case of name and marks. These look for the whole tag
/// wherever it stands, also within the name of another tag.
namespace FGenIntTagText {
/// \p name between lower-case marks.
QString tag(const QString &name);
bool containsTag(const QString &text, const QString &name);
/// Renames tags. Nothing is changed when a name is empty or both are equal.
QString updateTag(const QString &text, const QString &oldName, const QString &newName);
/// Puts \p plain where the tags stood.
QString replaceTag(const QString &text, const QString &name, const QString &plain);
} // namespace FGenIntTagText

/// Looks up entries by the names that tags use: paths without array indices, in any case.
///
/// Built once per write from the keys of the entry map in the map's order.
class FGenIntEntryNames
{
public:
    explicit FGenIntEntryNames(const std::vector<QString> &keysInMapOrder);

    /// Positions, in map order, of all keys that a tag with this name means. The caller takes the
    /// first whose entry evaluates.
    const std::vector<int> &candidates(const QString &tagName) const;

    /// A key without its indices: empty segments dropped, each cut from its last "[" on.
    static QString stripped(const QString &key);

private:
    std::unordered_map<std::u32string, std::vector<int>> mPositions;
};

/// A template prepared for writing: tags known, fixed stretches in UTF-8. Worth keeping between
/// designs as long as isFor() says that the template is the same.
class FGenIntExpander
{
public:
    /// Sets the text for a tag and returns true, or returns false: then the tag vanishes. Called
    /// once per tag, in order, also behind the point where the file ends early.
    using Value = std::function<bool(const QString &name, QString *text)>;
    using Sink = std::function<void(const char *data, qint64 size)>;

    /// With \p forceWindowsLineEndings a carriage return is put before every line feed of the
    /// template, whatever stands there, and in the names of tags too; values stay as they are.
    FGenIntExpander(const QString &text, bool forceWindowsLineEndings);

    /// The same for a text that is at hand in UTF-8, without going through UTF-16. \p text must be
    /// valid UTF-8; its memory is shared.
    FGenIntExpander(std::shared_ptr<const std::string> text, bool forceWindowsLineEndings);

    bool isFor(const QString &text, bool forceWindowsLineEndings) const;
    bool isFor(const std::shared_ptr<const std::string> &text, bool forceWindowsLineEndings) const
    {
        return mForceWindowsLineEndings == forceWindowsLineEndings && mUtf8 == text;
    }

    /// Hands the file of a design to \p sink, piece by piece: the UTF-8 form of the expanded text
    /// up to its first zero character. The rest of a template from an unclosed tag on is left out.
    void expandTo(const Value &value, const Sink &sink) const;
    QByteArray expandUtf8(const Value &value) const;

    /// The whole expanded text, zero characters included.
    static QString expand(const QString &text, bool forceWindowsLineEndings, const Value &value);

private:
    /// Fixed text between tags. Halves of a surrogate pair at its ends are kept apart: the other
    /// half may come from a value.
    struct Stretch
    {
        int start = 0; // in mFixed
        int size = 0;  // up to the first zero character
        ushort lowAtStart = 0;
        ushort highAtEnd = 0;
        bool hasZero = false;
    };
    bool prepare(const QByteArray &utf8);
    void prepare(const QString &text);
    void addStretch(Stretch stretch, int end);
    void addName(const QString &name);

    QString mText;
    std::shared_ptr<const std::string> mUtf8;
    bool mForceWindowsLineEndings = false;
    QByteArray mFixed;
    std::vector<Stretch> mStretches; // one before each tag and one at the end
    std::vector<int> mTagNames;      // of each tag, in mNames
    std::vector<QString> mNames;
};
#endif
