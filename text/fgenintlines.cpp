// SPDX-License-Identifier: Apache-2.0
#include "fgenintlines.h"

#include <algorithm>

namespace {
constexpr int kLongLine = 600;   ///< a longer one is no row of a table
constexpr int kLongTable = 2000; ///< rows

struct Shape
{
    int numbers = 0, words = 0;
    bool operator==(const Shape &other) const
    {
        return numbers == other.numbers && words == other.words;
    }
};

Shape shapeOf(const QString &line)
{
    Shape shape;
    bool inWord = false;
    for (int i = 0; i < line.size(); ++i) {
        if (line[i].isSpace()) {
            inWord = false;
        } else if (!inWord) {
            inWord = true;
            const QStringRef head = line.midRef(i, 3); // a sign and a point go ahead of the figures
            const bool hasFigure = std::any_of(head.begin(), head.end(), [](QChar c) {
                return c >= QLatin1Char('0') && c <= QLatin1Char('9');
            });
            ++(hasFigure && !line[i].isLetter() ? shape.numbers : shape.words);
        }
    }
    return shape;
}

bool namesHistory(const QString &heading)
{
    for (const char *word :
         {"iter", "step", "time", "cycle", "epoch", "increment", "index", "sweep", "frame"})
        if (heading.contains(QLatin1String(word), Qt::CaseInsensitive))
            return true;
    return false;
}
} // namespace

FGenIntSpan FGenIntLines::lineAround(const QString &text, int position)
{
    FGenIntSpan line;
    line.begin = position > 0 ? text.lastIndexOf(QLatin1Char('\n'), position - 1) + 1 : 0;
    line.end = text.indexOf(QLatin1Char('\n'), position);
    if (line.end < 0)
        line.end = text.size();
    return line;
}

QString FGenIntLines::textOf(const QString &text, const FGenIntSpan &line, int most)
{
    return text.mid(line.begin, std::min(line.end - line.begin, most));
}

int FGenIntLines::numbersIn(const QString &line) { return shapeOf(line).numbers; }

FGenIntLines::TableEnd FGenIntLines::tableEndAt(const QString &text, const FGenIntSpan &line)
{
    TableEnd end;
    const Shape shape = shapeOf(textOf(text, line, kLongLine));
    const auto isRow = [&](const FGenIntSpan &other) {
        return other.end - other.begin < kLongLine &&
               shapeOf(textOf(text, other, kLongLine)) == shape;
    };
    if (shape.numbers < 1 || !isRow(line) ||
        (line.end < text.size() && isRow(lineAround(text, line.end + 1))))
        return end;
    FGenIntSpan above = line;
    const auto goUp = [&] {
        if (above.begin == 0)
            return false;
        above = lineAround(text, above.begin - 1);
        return true;
    };
    int rows = 1;
    bool isAbove = goUp();
    for (; isAbove && rows < kLongTable && isRow(above); isAbove = goUp())
        ++rows;
    end.grows = rows == kLongTable;
    for (int i = 0; i < 3 && isAbove; ++i, isAbove = goUp())
        end.grows = end.grows || namesHistory(textOf(text, above, kLongLine));
    end.isLast = rows >= (end.grows ? 2 : 3);
    return end;
}
