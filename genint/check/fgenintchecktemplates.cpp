// SPDX-License-Identifier: Apache-2.0
#include "fconfigurationgenint.h"
#include "ffilevalues.h"
#include "fgenintcheckparts.h"
#include "fgenintwritercore.h"

#include <QHash>
#include <algorithm>

using namespace FGenIntCheckParts;

namespace {
const QLatin1String kOpen("<entry>"), kClose("</entry>");

/// Number of changes that make one text the other.
int distance(const QString &a, const QString &b)
{
    std::vector<int> row(size_t(b.size()) + 1);
    for (size_t k = 0; k < row.size(); ++k)
        row[k] = int(k);
    for (int i = 0; i < a.size(); ++i) {
        int diagonal = row[0]++;
        for (int k = 0; k < b.size(); ++k) {
            const int above = row[size_t(k) + 1];
            row[size_t(k) + 1] =
                a[i] == b[k] ? diagonal : 1 + std::min({diagonal, above, row[size_t(k)]});
            diagonal = above;
        }
    }
    return row.back();
}

/// The entries of a definition by the names that tags use.
class FTagTargets
{
public:
    explicit FTagTargets(FDefinitionGenInt &definition)
    {
        std::map<QString, std::shared_ptr<FEntryDef>> targets;
        for (const auto &entry : definition.getNameMap())
            targets.emplace(Q(entry.first), entry.second.ptr<FEntryDef>());
        for (const auto &handle : definition.getFiles(0))
            if (const auto file = handle.getPtr())
                targets.emplace(Q(ENTRYGROUP_EXPORTS) + "|" + file->getFileName(), nullptr);
        for (const auto &target : targets) {
            mKeys.push_back(target.first);
            mEntries.push_back(target.second);
        }
        mNames = std::make_unique<FGenIntEntryNames>(mKeys);
        mUsed.assign(mKeys.size(), false);
    }
    /// Index of what a tag stands for, which counts as used from now on; -1 for nothing.
    int use(const QString &name)
    {
        const int found = find(name);
        if (found >= 0)
            mUsed[size_t(found)] = true;
        return found;
    }
    int find(const QString &name) const
    {
        const std::vector<int> &found = mNames->candidates(name);
        return found.empty() ? -1 : found.front();
    }
    const std::vector<QString> &keys() const { return mKeys; }
    /// The definition of an entry; null for a file.
    const std::shared_ptr<FEntryDef> &entry(int index) const { return mEntries[size_t(index)]; }
    bool isUsed(int index) const { return mUsed[size_t(index)]; }
    /// The names that a tag may use, those of files last.
    std::vector<QString> valueNames() const
    {
        std::vector<QString> names;
        for (const bool files : {false, true})
            for (size_t i = 0; i < mKeys.size(); ++i)
                if (mEntries[i] ? !files && !mEntries[i]->isGroup() : files)
                    names.push_back(FGenIntEntryNames::stripped(mKeys[i]));
        return names;
    }

private:
    std::vector<QString> mKeys;
    std::vector<std::shared_ptr<FEntryDef>> mEntries;
    std::vector<bool> mUsed;
    std::unique_ptr<FGenIntEntryNames> mNames;
};

/// Values that a run hands over as files need no tag.
bool isFileValue(const FEntryDef &entry)
{
    const auto type = entry.getType();
    return type && (type->isTypeOf(FInputFile::mpNull) || type->isTypeOf(FGeometryExport::mpNull) ||
                    type->isTypeOf(FResultsFileName::mpNull));
}

struct FOccurrence
{
    FGenIntTag tag;
    int count = 0;
};

/// Tags that are alike, in the order in which they first appear.
template <class Key>
std::vector<FOccurrence> distinct(const QVector<FGenIntTag> &tags, const Key &key)
{
    std::vector<FOccurrence> found;
    QHash<QString, int> known;
    for (const FGenIntTag &tag : tags) {
        const QString name = key(tag);
        if (name.isNull())
            continue;
        const int at = known.value(name, int(found.size()));
        if (at == int(found.size())) {
            known.insert(name, at);
            found.push_back({tag, 0});
        }
        ++found[size_t(at)].count;
    }
    return found;
}

std::string times(int count)
{
    return count > 1 ? " (" + fromNumber(count, 10) + " times)" : std::string();
}

QString nameOf(const QString &text, const FGenIntTag &tag)
{
    return text.mid(tag.nameStart, tag.nameLength);
}

/// True for a tag that swallowed the opening mark of another one, or that has no name: these are
/// told of by their marks.
bool isBroken(const QString &name)
{
    return name.trimmed().isEmpty() || name.contains(kOpen, Qt::CaseInsensitive);
}
} // namespace

std::string FGenIntCheckParts::shown(const QString &text, int length)
{
    QString line = text.simplified();
    if (line.size() > length)
        line = line.left(length - 3) + "...";
    return "\"" + S(line) + "\"";
}

std::string FGenIntCheckParts::counted(qint64 count, const char *one, const char *many)
{
    return fromNumber((long long)count, 10) + " " + (count == 1 ? one : many);
}

std::string FGenIntCheckParts::alike(const QString &name, const std::vector<QString> &names,
                                     const char *what)
{
    const auto folded = [](const QString &text) { return text.trimmed().toCaseFolded(); };
    const auto last = [](const QString &text) { return text.section('|', -1); };
    const QString own = folded(name);
    const QString *best = nullptr;
    int least = (own.size() < 4 ? 1 : std::max(2, int(own.size()) / 3)) + 1;
    for (const QString &other : names) {
        const QString theirs = folded(other);
        if (theirs.size() > 200 || own.size() > 200)
            continue;
        const int d = std::min(distance(own, theirs), distance(last(own), last(theirs)));
        if (d < least && d < last(theirs).size()) {
            least = d;
            best = &other;
        }
    }
    if (best)
        return shown(*best, 200);
    std::string list;
    for (size_t i = 0; i < names.size() && i < 5; ++i)
        list += (i ? ", " : "") + shown(names[i]);
    if (names.size() > 5)
        list += " ...";
    return names.empty() ? std::string("nothing, there is no ") + what
                         : std::string("the name of ") + what + ": " + list;
}

int FGenIntTextPlaces::lineOf(int position)
{
    if (position < mPosition) {
        mPosition = mLineStart = 0;
        mLine = 1;
    }
    for (; mPosition < position; ++mPosition)
        if (mText[mPosition] == QLatin1Char('\n')) {
            ++mLine;
            mLineStart = mPosition + 1;
        }
    return mLine;
}

int FGenIntTextPlaces::columnOf(int position)
{
    lineOf(position);
    int column = 1;
    for (int i = mLineStart; i < position; ++i)
        column += !mText[i].isLowSurrogate();
    return column;
}

void FGenIntCheckParts::checkMarks(const FGenIntCommandFile &file, FGenIntFindings *findings)
{
    const QString &text = file.text();
    FGenIntTextPlaces places(text);
    int unclosed = -1;
    if (file.unescapedLineFeeds() > 0)
        findings
            ->hint(file, "a backslash and an n in the project became a line end" +
                             times(file.unescapedLineFeeds()))
            .in(file.getFileName())
            .between("text without [B64]", "the text as turnbuckle add --template stores it, if "
                                           "the backslash belongs to it, as in C:\\new");
    const QVector<FGenIntTag> tags = FGenIntTagScanner::scan(text, Qt::CaseInsensitive, &unclosed);
    const auto hint = [&](int position, const std::string &message) -> FGenIntFinding & {
        return findings->hint(file, message)
            .in(file.getFileName())
            .at(places.lineOf(position), places.columnOf(position));
    };
    const auto error = [&](int position, const std::string &message) -> FGenIntFinding & {
        return findings->error(file, message)
            .in(file.getFileName())
            .at(places.lineOf(position), places.columnOf(position));
    };
    const auto tagText = [&](const FGenIntTag &tag) {
        return shown(text.mid(tag.start, tag.end - tag.start));
    };
    int position = 0;
    const auto stray = [&](int end) {
        for (int at = position;
             (at = text.indexOf(kClose, at, Qt::CaseInsensitive)) >= 0 && at < end;
             at += kClose.size())
            error(at, "a closing mark without an opening one would stand in the written file")
                .between(shown(text.mid(at, kClose.size())), "<entry> before it");
    };
    for (const FGenIntTag &tag : tags) {
        stray(tag.start);
        position = tag.end;
        const QString name = nameOf(text, tag);
        if (name.contains(kOpen, Qt::CaseInsensitive))
            error(tag.start, "the tag isn't closed before the next one opens: all up to the next "
                             "closing mark would be lost")
                .between(tagText(tag), "</entry> behind the name");
        else if (name.trimmed().isEmpty())
            error(tag.start, "the tag is empty and would vanish")
                .between(tagText(tag), "the name of an entry between the marks");
    }
    if (unclosed >= 0)
        error(unclosed, "the tag isn't closed: the rest of the file, " +
                            counted(text.size() - unclosed, "character", "characters") +
                            ", would be lost")
            .between(shown(text.mid(unclosed, 100), 40), "</entry> behind the name");
    else
        stray(text.size());

    const auto oddMarks = [&](const FGenIntTag &tag) {
        const bool plain = text.midRef(tag.start, kOpen.size()) == kOpen &&
                           text.midRef(tag.end - kClose.size(), kClose.size()) == kClose;
        return plain ? QString() : nameOf(text, tag) + "";
    };
    for (const FOccurrence &odd : distinct(tags, oddMarks)) {
        const QString name = nameOf(text, odd.tag);
        if (!isBroken(name))
            hint(odd.tag.start,
                 "the tag is written, but its marks in capitals don't show in editors and lists" +
                     times(odd.count))
                .between(tagText(odd.tag), shown(FGenIntTagText::tag(name)));
    }
}

void FGenIntCheckParts::checkEntries(FDefinitionGenInt &definition, FGenIntFindings *findings)
{
    FTagTargets targets(definition);
    constexpr size_t kSuggestions = 50; // they take time with many entries
    size_t suggested = 0;
    const auto files = definition.getFiles(0);
    for (const auto &handle : files) {
        const auto file = handle.ptr<FGenIntCommandFile>();
        if (!file)
            continue;
        const QString &text = file->text();
        FGenIntTextPlaces places(text);
        const auto key = [&](const FGenIntTag &tag) {
            const QString name = nameOf(text, tag);
            return isBroken(name) ? QString() : name;
        };
        for (const FOccurrence &one :
             distinct(FGenIntTagScanner::scan(text, Qt::CaseInsensitive), key)) {
            const QString name = nameOf(text, one.tag);
            const int target = targets.use(name);
            const auto entry = target < 0 ? nullptr : targets.entry(target);
            if (target >= 0 && !(entry && entry->isGroup()))
                continue;
            std::string expected;
            if (target >= 0)
                expected = "the name of an entry in the group";
            else if (suggested++ < kSuggestions)
                expected = alike(name, targets.valueNames(), "an entry");
            findings
                ->error(*file, target >= 0
                                   ? "the tag names a group of entries, which has no value" +
                                         times(one.count)
                                   : "the tag has no entry in definition " + definition.getName() +
                                         " and would vanish" + times(one.count))
                .in(file->getFileName())
                .at(places.lineOf(one.tag.start), places.columnOf(one.tag.start))
                .between(shown(name, 200), expected);
        }
    }
    for (size_t i = 0; i < targets.keys().size(); ++i) {
        const auto &entry = targets.entry(int(i));
        if (!entry || entry->isGroup() || isFileValue(*entry) || targets.isUsed(int(i)))
            continue;
        const QString name = FGenIntEntryNames::stripped(targets.keys()[i]);
        const int other = targets.find(name);
        if (other == int(i))
            findings->hint(definition, "no template uses the entry " + shown(name, 200))
                .between("", shown(FGenIntTagText::tag(name), 200) + " in a template");
        else
            findings->hint(definition, "no template can use the entry " + shown(name, 200))
                .between("tags of this name stand for " + shown(targets.keys()[size_t(other)], 200),
                         "names that differ in more than the case of letters");
    }
}
