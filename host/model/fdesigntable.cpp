// SPDX-License-Identifier: Apache-2.0
#include "fdesigntable.h"

#include "fbasictype.h"
#include "fhistory.h"
#include "fobjectmanager.h"
#include "fparameter.h"

#include <cmath>
#include <map>
#include <set>

namespace {
constexpr size_t kMostErrors = 100;

struct Cell
{
    std::string text;
    size_t line = 1, column = 1;
};
using Line = std::vector<Cell>;

/// What separates the cells of the first line: what stands there most often outside quotes.
char separatorOf(const std::string &text)
{
    std::map<char, int> counts;
    bool inQuotes = false;
    for (const char c : text)
        if (c == '"')
            inQuotes = !inQuotes;
        else if (!inQuotes && (c == '\n' || c == '\r'))
            break;
        else if (!inQuotes)
            ++counts[c];
    char best = ',';
    for (const char c : {';', '\t'})
        if (counts[c] > counts[best])
            best = c;
    return best;
}

class Reader
{
public:
    Reader(std::string text, std::string file)
        : mText(std::move(text))
        , mFile(std::move(file))
        , mSeparator(separatorOf(mText))
    {
    }
    FDesignTable::Outcome read();

private:
    bool readLine(Line *line);
    void readCell(Cell *cell);
    void step();
    bool atEnd() const { return mAt >= mText.size(); }
    bool isSeparator() const { return mText[mAt] == mSeparator; }
    bool isLineEnd() const { return mText[mAt] == '\n' || mText[mAt] == '\r'; }
    void fail(const Cell &cell, FReason reason)
    {
        mOutcome.errors.push_back({mFile, cell.line, cell.column, std::move(reason)});
    }
    bool readHeader(const Line &line);
    void readDesign(const Line &line);
    FExprBase valueOf(const Cell &cell, size_t column);
    void apply();

    struct Row
    {
        Cell place;
        std::string name;
        std::vector<FExprBase> values;
    };
    std::string mText, mFile;
    char mSeparator;
    size_t mAt = 0, mLine = 1, mColumn = 1;
    bool mHasNames = false;
    std::vector<std::shared_ptr<FParameter>> mParameters;
    std::vector<bool> mIsText;
    std::vector<Row> mRows;
    std::set<std::string> mNames;
    FDesignTable::Outcome mOutcome;
};

void Reader::step()
{
    const char c = mText[mAt++];
    if (c == '\n' || (c == '\r' && (atEnd() || mText[mAt] != '\n'))) {
        ++mLine;
        mColumn = 1;
    } else if ((static_cast<unsigned char>(c) & 0xC0) != 0x80 && c != '\r') {
        ++mColumn; // characters, not bytes
    }
}

void Reader::readCell(Cell *cell)
{
    cell->line = mLine;
    cell->column = mColumn;
    while (!atEnd() && mText[mAt] == ' ')
        step();
    if (atEnd() || mText[mAt] != '"') {
        while (!atEnd() && !isSeparator() && !isLineEnd()) {
            cell->text += mText[mAt];
            step();
        }
        cell->text = S(Q(cell->text).trimmed());
        return;
    }
    step();
    for (bool isOpen = true; isOpen;) {
        if (atEnd()) {
            fail(*cell, FReason::unexpected("a quote at the end of the cell", "end of file"));
            return;
        }
        const char c = mText[mAt];
        step();
        if (c != '"')
            cell->text += c;
        else if (!atEnd() && mText[mAt] == '"')
            cell->text += mText[mAt], step();
        else
            isOpen = false;
    }
    while (!atEnd() && mText[mAt] == ' ')
        step();
    if (atEnd() || isSeparator() || isLineEnd())
        return;
    Cell here;
    here.line = mLine;
    here.column = mColumn;
    fail(here, FReason::unexpected("the end of the cell behind its quote",
                                   std::string("\"") + mText[mAt] + "\""));
    while (!atEnd() && !isSeparator() && !isLineEnd())
        step();
}

/// The next line that isn't empty.
bool Reader::readLine(Line *line)
{
    while (!atEnd() && isLineEnd())
        step();
    line->clear();
    if (atEnd())
        return false;
    for (;;) {
        line->emplace_back();
        readCell(&line->back());
        if (atEnd() || isLineEnd())
            break;
        step();
    }
    if (!atEnd() && mText[mAt] == '\r')
        step();
    if (!atEnd() && mText[mAt] == '\n')
        step();
    return line->size() > 1 || !line->front().text.empty() || readLine(line);
}

bool Reader::readHeader(const Line &line)
{
    std::map<std::string, const Cell *> seen;
    for (size_t i = 0; i < line.size(); ++i) {
        const Cell &cell = line[i];
        const auto object = FObjectManager::instance()->find(cell.text);
        if (i == 0 && !object && (cell.text.empty() || cell.text == "design")) {
            mHasNames = true;
            continue;
        }
        const auto parameter = std::dynamic_pointer_cast<FParameter>(object);
        if (!parameter)
            fail(cell, FReason::unexpected("the name of a parameter", "\"" + cell.text + "\""));
        else if (!seen.emplace(cell.text, &cell).second)
            fail(cell, FReason("the parameter " + cell.text + " has a column already, at " +
                               std::to_string(seen[cell.text]->column)));
        mParameters.push_back(parameter);
        const auto klass = parameter ? parameter->currentValue().valueClass() : nullptr;
        mIsText.push_back(klass && klass->isA(FString::staticClass()));
    }
    if (mParameters.empty() && mOutcome.errors.empty())
        fail(line.front(), FReason::unexpected("the names of parameters", "none"));
    return mOutcome.errors.empty();
}

FExprBase Reader::valueOf(const Cell &cell, size_t column)
{
    if (mIsText[column])
        return FExprBase(f_make_shared<FString>(cell.text));
    QString text = Q(cell.text);
    if (mSeparator != ',' && text.count(',') == 1 && !text.contains('.'))
        text.replace(',', '.');
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    if (!isNumber || !std::isfinite(number))
        fail(cell,
             FReason::unexpected("a number for " + mParameters[column]->getName(),
                                 cell.text.empty() ? "an empty cell" : "\"" + cell.text + "\""));
    return FExprBase(f_make_shared<FDouble>(number));
}

void Reader::readDesign(const Line &line)
{
    const size_t wanted = mParameters.size() + mHasNames;
    if (line.size() != wanted)
        return fail(line.front(), FReason::unexpected(std::to_string(wanted) + " cells",
                                                      std::to_string(line.size())));
    Row row;
    row.place = line.front();
    if (mHasNames && !line.front().text.empty()) {
        row.name = line.front().text;
        std::string correct = row.name;
        FObjectName::correctName(correct);
        const auto object = FObjectManager::instance()->find(row.name);
        if (correct != row.name)
            fail(line.front(), FReason::unexpected("the name of a design", "\"" + row.name + "\""));
        else if (object && !std::dynamic_pointer_cast<FDesign>(object))
            fail(line.front(), FReason("the name " + row.name + " is taken"));
        else if (!mNames.insert(row.name).second)
            fail(line.front(), FReason("the design " + row.name + " has a line already"));
    }
    for (size_t i = 0; i < mParameters.size(); ++i)
        row.values.push_back(valueOf(line[i + mHasNames], i));
    mRows.push_back(std::move(row));
}

FDesignTable::Outcome Reader::read()
{
    if (!QString::fromUtf8(mText.data(), int(mText.size())).contains(QChar::ReplacementCharacter)) {
        Line line;
        if (!readLine(&line))
            fail(Cell(), FReason::unexpected("a line with the names of parameters", "nothing"));
        else if (readHeader(line))
            while (mOutcome.errors.size() < kMostErrors && readLine(&line))
                readDesign(line);
        if (mOutcome.errors.empty() && mRows.empty())
            fail(Cell(), FReason::unexpected("a line for each design", "none"));
    } else {
        fail(Cell(), FReason::unexpected("UTF-8", "other bytes"));
    }
    if (mOutcome.errors.empty())
        apply();
    return std::move(mOutcome);
}

void Reader::apply()
{
    const FHistoryTransaction step(nullptr, F_TEXT("Import designs"), true);
    int next = 1;
    for (Row &row : mRows) {
        while (row.name.empty()) {
            const std::string free = "d" + std::to_string(next++);
            if (!FObjectManager::instance()->find(free) && !mNames.count(free))
                row.name = free;
        }
        auto design =
            std::dynamic_pointer_cast<FDesign>(FObjectManager::instance()->find(row.name));
        if (!design)
            design = FDesign::create(row.name);
        for (size_t i = 0; i < mParameters.size(); ++i) {
            double present = 0, wanted = 0;
            // The baseline's own expressions stay where they give that number.
            const bool isSame = design == FDesign::baseline() && !mIsText[i] &&
                                FConvert::toDouble(FExprBase(mParameters[i]), &present) &&
                                FConvert::toDouble(row.values[i], &wanted) && present == wanted;
            if (!isSame)
                design->setValue(mParameters[i]->getName(), row.values[i]);
        }
        mOutcome.designs.push_back(std::move(design));
    }
}
} // namespace

FDesignTable::Outcome FDesignTable::read(const QByteArray &text, const std::string &file)
{
    const int mark = text.startsWith("\xef\xbb\xbf") ? 3 : 0;
    return Reader(text.mid(mark).toStdString(), file).read();
}

QByteArray FDesignTable::line(const QStringList &cells, char separator)
{
    QByteArray text;
    bool isFirst = true;
    for (const QString &cell : cells) {
        QByteArray bytes = cell.toUtf8();
        const bool isPlain = !bytes.contains(separator) && !bytes.contains('"') &&
                             !bytes.contains('\n') && !bytes.contains('\r') &&
                             bytes == bytes.trimmed();
        if (!isPlain)
            bytes = '"' + bytes.replace('"', "\"\"") + '"';
        if (!std::exchange(isFirst, false))
            text += separator;
        text += bytes;
    }
    return text + "\r\n";
}
