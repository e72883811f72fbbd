// SPDX-License-Identifier: Apache-2.0
#include "fgenintreadercore.h"

#include "fgenintcells.h"
#include "fgenintreadpass.h"
#include "fgenintslowread.h"

#include <algorithm>
#include <limits>

namespace {

FGenIntReading givenUp(int rule, bool hasReader)
{
    FGenIntReading reading;
    reading.rule = rule;
    reading.value = std::numeric_limits<double>::quiet_NaN();
    if (hasReader)
        reading.notes << QStringLiteral("read took too long");
    else
        reading.notes << QStringLiteral("turnbuckle-reader is missing");
    return reading;
}

/// True if an anchor can't be looked for, or be left behind, in the bytes of the text.
bool needsUnits(const FGenIntText &text, const QVector<FGenIntRule> &rules)
{
    const auto isForeign = [](const FGenIntRule &rule) {
        return std::any_of(rule.anchor.begin(), rule.anchor.end(),
                           [](char c) { return static_cast<uchar>(c) >= 0x80; });
    };
    return !text.isPlain() ||
           (text.isForeign() && std::any_of(rules.begin(), rules.end(), isForeign));
}

template <class U>
QVector<FGenIntReading> readAs(const FGenIntText &text, const QVector<FGenIntRule> &rules,
                               const FGenIntColumns &columns, int timeLimitMs, bool countLines)
{
    FGenIntReadPass<U> pass(text, rules, columns);
    pass.setCountLines(countLines);
    pass.start(timeLimitMs);
    QElapsedTimer clock;
    clock.start();
    bool hasReader = true;
    QVector<FGenIntReading> readings;
    readings.reserve(rules.size());
    for (int rule : pass.order()) {
        FGenIntReading reading;
        const auto outcome = pass.evaluate(rule, &reading);
        if (outcome == FGenIntReadPass<U>::NeedsLongSearch) {
            // What the other process finds out about the text is lost, so nothing is left to find.
            text.examine(0, text.size());
            if (text.isWide() || !needsUnits(text, rules)) {
                const qint64 left = std::max<qint64>(0, timeLimitMs - clock.elapsed());
                readings += FGenIntSlowRead::read(text, rules, columns, countLines, readings.size(),
                                                  static_cast<int>(left), &hasReader);
            }
        }
        if (outcome != FGenIntReadPass<U>::Done)
            break;
        readings.append(reading);
    }
    while (readings.size() < rules.size())
        readings.append(givenUp(pass.order()[static_cast<size_t>(readings.size())], hasReader));
    return readings;
}
} // namespace

FGenIntReaderCore::FGenIntReaderCore(const FGenIntText &text)
    : mText(text)
{
}

QVector<FGenIntReading> FGenIntReaderCore::read(const QVector<FGenIntRule> &rules,
                                                const FGenIntColumns &columns) const
{
    if (mText.isEmpty() || rules.isEmpty())
        return {};
    if (!mText.isWide()) {
        const auto readings = readAs<uchar>(mText, rules, columns, mTimeLimitMs, mCountLines);
        if (!needsUnits(mText, rules))
            return readings;
        mText.widen();
    }
    return readAs<char16_t>(mText, rules, columns, mTimeLimitMs, mCountLines);
}

int FGenIntReaderCore::getAnchorPos(const FGenIntRule &rule, const QString &text)
{
    const QString anchor = QString::fromStdString(rule.anchor);
    if (anchor.isEmpty())
        return -1;
    return rule.first ? text.indexOf(anchor, 0, Qt::CaseInsensitive)
                      : text.lastIndexOf(anchor, -1, Qt::CaseInsensitive);
}

void FGenIntReaderCore::parseLine(int &position, int &length, QRegExp &separator, int line,
                                  const QString &anchor, const QString &text, int column,
                                  bool numberMode)
{
    position = 0;
    length = 0;
    if (numberMode)
        separator.setPattern(FGenIntSeparator::pattern(FGenIntColumns()));
    if (line == 0 && !anchor.isEmpty())
        position = text.indexOf(anchor, 0, Qt::CaseInsensitive) + anchor.size();
    int cursor = position;
    for (int i = 0; i < column; ++i) {
        position = text.indexOf(separator, cursor);
        if (position < 0)
            return;
        const int matched = separator.matchedLength();
        cursor = position = position + matched;
        if (matched == 0)
            break; // it matches the same nothing again and again
    }
    const int found = text.indexOf(separator, cursor);
    if (numberMode) {
        position = found < 0 ? position : found;
        length = found < 0 ? 0 : separator.matchedLength();
    } else {
        length = (found < 0 ? text.size() : found) - position;
    }
}

void FGenIntReaderCore::sortRules(QVector<FGenIntRule> &rules, const QString &text)
{
    if (text.isEmpty())
        return;
    const auto held = FGenIntText::fromString(text);
    const FGenIntReadPass<char16_t> pass(*held, rules, FGenIntColumns());
    QVector<FGenIntRule> sorted;
    for (int index : pass.order())
        sorted.append(rules[index]);
    rules = sorted;
}
