// SPDX-License-Identifier: Apache-2.0
#include "fgenintcheckparts.h"
#include "fsafefile.h"

using namespace FGenIntCheckParts;

namespace {
/// What is odd about the characters of a text, and where each kind first stands.
struct FCharacters
{
    explicit FCharacters(const QString &text)
    {
        const QChar *units = text.constData();
        const int size = text.size();
        for (int i = 0; i < size; ++i) {
            const ushort u = units[i].unicode();
            if (u == '\r') {
                const bool pair = i + 1 < size && units[i + 1] == QLatin1Char('\n');
                (pair ? windows : bare).add(i);
                i += pair;
            } else if (u == '\n') {
                unix.add(i);
            } else if (u == 0) {
                zeros.add(i);
            } else if (u == 0xFFFD) {
                unreadable.add(i);
            } else if (u == 0xFEFF) {
                byteOrderMarks.add(i);
            } else if (mayBeginTwice(units + i, size - i)) {
                // Bytes of UTF-8, each taken for a character.
                const int more = u < 0xE0 ? 1 : u < 0xF0 ? 2 : 3;
                int k = 1;
                while (k <= more && i + k < size && (units[i + k].unicode() & 0xFFC0) == 0x80)
                    ++k;
                if (k > more)
                    encodedTwice.add(i);
            }
        }
    }
    /// Of what begins so, the letters of Western, Greek and Cyrillic texts, and signs whose next
    /// byte would be a control character. The rest stands in good texts as well: "ß»", "à »".
    static bool mayBeginTwice(const QChar *units, int size)
    {
        const ushort u = units[0].unicode();
        return (u >= 0xC2 && u <= 0xC3) || (u >= 0xCE && u <= 0xD1) ||
               (u >= 0xE2 && u <= 0xF4 && size > 1 && units[1].unicode() >= 0x80 &&
                units[1].unicode() < 0xA0);
    }
    struct Kind
    {
        qint64 count = 0;
        int first = -1;
        void add(int at) { first = count++ == 0 ? at : first; }
    };
    Kind unix, windows, bare, zeros, unreadable, byteOrderMarks, encodedTwice;
};

void checkLineEnds(const FGenIntFile &file, const FCharacters &characters,
                   FGenIntTextPlaces *places, FGenIntFindings *findings)
{
    const std::pair<const FCharacters::Kind *, const char *> kinds[] = {
        {&characters.unix, "LF"}, {&characters.windows, "CR LF"}, {&characters.bare, "CR"}};
    std::string list;
    const FCharacters::Kind *rarest = nullptr;
    int different = 0;
    for (const auto &kind : kinds) {
        if (kind.first->count == 0)
            continue;
        ++different;
        list += (list.empty() ? "" : " and ") + counted(kind.first->count, "line", "lines") +
                " with " + kind.second;
        if (!rarest || kind.first->count < rarest->count)
            rarest = kind.first;
    }
    if (different > 1)
        findings->hint(file, "the line ends are mixed")
            .in(file.getFileName())
            .at(places->lineOf(rarest->first), 0)
            .between(list, "one kind of line end");
    if (file.getForceWindowsLineEndings() && characters.windows.count > 0)
        findings
            ->hint(file, "Windows line ends are forced on a text that has them already: lines "
                         "would end in CR CR LF")
            .in(file.getFileName())
            .at(places->lineOf(characters.windows.first), 0)
            .between(counted(characters.windows.count, "line", "lines") + " with CR LF",
                     "lines with LF");
}
} // namespace

void FGenIntCheckParts::checkFile(const FGenIntFile &file, FGenIntFindings *findings)
{
    const bool isInput = file.isTypeOf(FGenIntCommandFile::mpNull);
    const QString problem = relativePathProblem(file.getFileName());
    if (!problem.isEmpty())
        findings
            ->error(file, std::string("the file name can't be ") +
                              (isInput ? "written to" : "read from") +
                              " the run folder: " + S(problem))
            .in(file.getFileName())
            .between(shown(file.getFileName()), "a name relative to the run folder, within it");

    const QString &text = file.text();
    const FCharacters characters(text);
    FGenIntTextPlaces places(text);
    checkLineEnds(file, characters, &places, findings);
    const auto hint = [&](const FCharacters::Kind &kind, const char *message, const char *one,
                          const char *many, const char *expected) {
        findings->hint(file, message)
            .in(file.getFileName())
            .at(places.lineOf(kind.first), places.columnOf(kind.first))
            .between(counted(kind.count, one, many), expected);
    };
    if (isInput && characters.zeros.count > 0)
        findings
            ->error(file,
                    "the written file would end here: the rest, " +
                        counted(text.size() - characters.zeros.first, "character", "characters") +
                        ", would be lost")
            .in(file.getFileName())
            .at(places.lineOf(characters.zeros.first), places.columnOf(characters.zeros.first))
            .between("a zero character", "text");
    if (characters.unreadable.count > 0)
        hint(characters.unreadable, "bytes in another encoding were lost when the text was taken",
             "unreadable character", "unreadable characters", "UTF-8 text throughout");
    if (characters.encodedTwice.count > 0)
        hint(characters.encodedTwice, "the encodings are mixed: UTF-8 was taken for Latin-1 here",
             "character that is encoded twice", "characters that are encoded twice",
             "UTF-8 text throughout");
    if (characters.byteOrderMarks.count > 0)
        hint(characters.byteOrderMarks, "a byte order mark stands in the text", "mark", "marks",
             "no byte order mark");
}
