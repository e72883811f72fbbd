// SPDX-License-Identifier: Apache-2.0
#ifndef OTHERRUN_H
#define OTHERRUN_H

#include "testseed.h"

#include <QDir>
#include <QMap>
#include <QRegularExpression>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <random>
#include <vector>

struct Place
{
    int begin, length;
};

/// Numbers that a user would point at.
inline std::vector<Place> numbersIn(const QString &text)
{
    static const QRegularExpression sNumber(
        "(?<=^|[\\s=:(,|])[-+]?(\\d+\\.\\d+|\\.\\d+|\\d+)([eE][-+]?\\d+)?(?=$|[\\s,;)|%])",
        QRegularExpression::MultilineOption);
    std::vector<Place> numbers;
    for (auto all = sNumber.globalMatch(text); all.hasNext();) {
        const auto match = all.next();
        numbers.push_back({match.capturedStart(), match.capturedLength()});
    }
    return numbers;
}

/// What comes again and again in an output: from a line like \p begin to the next, or to \p end.
struct Block
{
    const char *file, *begin, *end;
};
static const Block kBlocks[] = {
    {"openfoam-cavity.log", "^Time = ", "^End"},
    {"openfoam-minmax.dat", "^0.*mag", "^never"},
    {"lammps-melt.log", "^ {2,}\\d+ +\\S+ +-\\S+ +0 ", "^Loop"},
    {"gnuplot-fit.log", "^   [\\d*] ", "^iter"},
    {"mopac-water.out", "^ CYCLE:", "^$"},
    {"glpsol.log", "^\\* +\\d+: obj", "^OPTIMAL"},
    {"cbc.log", "^Cbc0012I", "^Cbc0031I"},
    {"block.dat", "^ temperatures for set HOT", "^never"},
};

inline std::vector<Place> blocksIn(const QString &text, const QString &file)
{
    std::vector<Place> blocks;
    for (const Block &block : kBlocks) {
        if (file != QLatin1String(block.file))
            continue;
        bool open = false;
        int at = 0;
        for (const QString &line : text.split('\n')) {
            const bool begins = line.contains(QRegularExpression(block.begin));
            if (open && (begins || line.contains(QRegularExpression(block.end)))) {
                blocks.back().length = at - blocks.back().begin;
                open = false;
            }
            if (begins) {
                blocks.push_back({at, text.size() - at});
                open = true;
            }
            at += line.size() + 1;
        }
    }
    return blocks;
}

/// The output of another run: other figures, another date, more lines ahead, more repetitions.
class OtherRun
{
public:
    OtherRun(const QString &text, const QString &file)
        : mBlocks(blocksIn(text, file))
        , mPlace(size_t(text.size()))
    {
        for (int i = some(6); i > 0; --i)
            mInserted[0] +=
                QString("Case %1 in /scratch/run-%2/case started\n").arg(i).arg(some(9999));
        if (mBlocks.empty())
            lengthenTables(text);
        else
            repeat(text, mBlocks[size_t(some(int(mBlocks.size()) - 1))]);
        for (int i = 0; i < text.size(); ++i) {
            out += mInserted.value(i);
            mPlace[size_t(i)] = out.size();
            out += text[i];
        }
        change("\\d*\\.\\d+|(?<![\\w.])\\d{2,}(?![\\w.])|\\d+:\\d+:\\d+", [this](QChar c) {
            return c.isDigit() && c != QChar('0') ? QChar('1' + some(9)) : c;
        });
        out.replace(QRegularExpression("\\bNov\\b"), "Feb");
    }
    /// False for what has no counterpart: a repetition in the midst of others, the end of a table.
    bool hasPlace(int begin) const
    {
        return std::none_of(
            mUnasked.begin(), mUnasked.end(),
            [&](const Place &place) {
                return begin >= place.begin && begin < place.begin + place.length;
            });
    }
    int placeOf(int begin) const { return mPlace[size_t(begin)]; }
    QString out;

private:
    int some(int limit) { return limit < 1 ? 0 : int(mRandom() % uint(limit)); }
    void repeat(const QString &text, const Place &block)
    {
        for (int n = 1 + some(4); n > 0; --n)
            mInserted[block.begin + block.length] += text.mid(block.begin, block.length);
        for (size_t i = 1; i + 1 < mBlocks.size(); ++i)
            mUnasked.push_back(mBlocks[i]);
    }
    /// Repeats the row ahead of the last one, and puts remarks between paragraphs.
    void lengthenTables(const QString &text)
    {
        static const QRegularExpression sNumber("^[-+(]*\\d\\S*$");
        Place row = {0, 0};
        int rows = 0, shape = -1, at = 0;
        for (const QString &line : (text + "\n\n").split('\n')) {
            const QStringList words = line.simplified().split(' ');
            const int numbers = words.filter(sNumber).size();
            const int found = words.size() * 100 + numbers;
            if (found != shape && rows > 3 && shape % 100 > 1) {
                repeat(text, row);
                mUnasked.push_back({row.begin + row.length, at - row.begin - row.length});
            }
            if (line.trimmed().isEmpty() && at > 0 && at < text.size() && some(8) == 0 &&
                text.mid(at + 1, 30).contains(QRegularExpression("^\\s*[A-Za-z]")))
                mInserted[at] += "\nWarning: small entries were left out\n";
            rows = found == shape ? rows + 1 : 1;
            shape = found;
            mBefore = mRow;
            mRow = {at, line.size() + 1};
            row = mBefore;
            at += line.size() + 1;
        }
    }
    template <class Other>
    void change(const char *what, Other other)
    {
        for (auto all = QRegularExpression(what).globalMatch(QString(out)); all.hasNext();) {
            const auto match = all.next();
            for (int i = match.capturedStart(); i < match.capturedEnd(); ++i)
                out[i] = other(out[i]);
        }
    }
    std::mt19937 mRandom{testSeed()};
    std::vector<Place> mBlocks, mUnasked;
    QMap<int, QString> mInserted;
    Place mBefore = {0, 0}, mRow = {0, 0};
    std::vector<int> mPlace;
};

/// Outputs of solvers that are kept in the source.
inline QFileInfoList outputs()
{
    QFileInfoList files;
    for (const char *folder :
         {F_TEST_DATA "/output", F_SOURCE_DIR "/examples/beam/samples",
          F_SOURCE_DIR "/examples/filter/samples", F_SOURCE_DIR "/examples/chain/samples"})
        for (const QFileInfo &file : QDir(folder).entryInfoList(QDir::Files))
            if (file.suffix() != "md")
                files << file;
    return files;
}
#endif
