// SPDX-License-Identifier: Apache-2.0
// The editor of a result template: what its rules read, as a table and as marks in the text.
#include "fdesign.h"
#include "fgenintcells.h"
#include "fgenintencoding.h"
#include "fgenintreader.h"
#include "fgenintreadercore.h"
#include "fgenintresultsfileedit.h"
#include "fgenintresultsfileeditor.h"
#include "fgeninttext.h"
#include "ficons.h"
#include "fpathmanager.h"
#include "fsafefile.h"
#include "ftheme.h"
#include "ftoolbutton.h"

#include <QComboBox>
#include <QFile>
#include <QHeaderView>
#include <QLabel>
#include <QPointer>
#include <QScrollBar>
#include <QTableWidget>
#include <QTextBlock>
#include <QThreadPool>

namespace {
constexpr qint64 kLargestRun = 256 << 20; // bytes of a run's file that is shown
constexpr int kColumns = 3;               // value, type, button; the note stands behind
} // namespace

const FGenIntText &FGenIntResultsFileEditor::text()
{
    if (!mText) {
        mText = textOfSample(mShown);
        mAnchors.clear();
    }
    return *mText;
}

/// Bytes are searched faster; places are the same in a text of ASCII.
std::unique_ptr<FGenIntText> FGenIntResultsFileEditor::textOfSample(const QString &shown)
{
    const bool isAscii =
        std::all_of(shown.cbegin(), shown.cend(), [](QChar c) { return c.unicode() < 0x80; });
    return isAscii ? FGenIntText::fromBytes(shown.toStdString()) : FGenIntText::fromString(shown);
}

/// All that the table depends on.
QString FGenIntResultsFileEditor::previewKey() const
{
    const auto file = resultsFile();
    if (!file)
        return QString();
    const FGenIntColumns columns = FGenIntReader::columnsOf(*file);
    return QStringLiteral("%1|%2|%3|%4|%5|%6")
        .arg(quintptr(mShown.constData()))
        .arg(mShown.size())
        .arg(columns.numbers)
        .arg(columns.spacesAndTabs)
        .arg(columns.regExp, Q(file->getValues().toString()));
}

void FGenIntResultsFileEditor::refreshResultsPreview()
{
    const auto file = resultsFile();
    const QString key = previewKey();
    if (file && key == mPreviewed && mTable->rowCount() > 0)
        return;
    mPreviewed = key;
    ++mTask;
    mReading = false;
    if (!file || file->values().empty() || mShown.isEmpty()) {
        mData.reset();
        setResultsPreviewBlank();
        return;
    }
    // A worker reads what may take long, for its length or for the separator's expression.
    if (mShown.size() > kLongSample || hasExpression()) {
        readOnWorker();
        return;
    }
    mData = f_make_shared<FTableData>();
    FGenIntReader reader;
    if (mRunPath.isEmpty())
        reader.read(mResultsFile, mData, QString());
    else
        reader.readFile(mResultsFile, mData, mRunPath, QString());
    fillPreview();
}

void FGenIntResultsFileEditor::readOnWorker()
{
    const auto file = resultsFile();
    QVector<FGenIntRule> rules;
    for (const auto &value : file->values())
        rules.append(FGenIntReader::ruleOf(*value));
    mReading = true;
    const QPointer<FGenIntResultsFileEditor> self(this);
    QThreadPool::globalInstance()->start(
        [self, rules, text = mShown, task = mTask, columns = FGenIntReader::columnsOf(*file)] {
            const auto shown = textOfSample(text);
            const QVector<FGenIntReading> readings = FGenIntReaderCore(*shown).read(rules, columns);
            const FGenIntMarks::Places anchors = FGenIntMarks::findAnchorsOf(rules, *shown);
            QMetaObject::invokeMethod(qApp, [self, readings, anchors, task] {
                if (!self || self->mTask != task)
                    return;
                self->mReading = false;
                self->text();
                self->mAnchors = anchors;
                self->mData = f_make_shared<FTableData>();
                FGenIntReader().take(self->mResultsFile, self->mData, readings);
                self->refreshValuesSelector();
                self->fillPreview();
                if (self->hasExpression())
                    self->highlightCurrentValue();
            });
        });
}

void FGenIntResultsFileEditor::setResultsPreviewBlank()
{
    mTable->clear();
    mTable->setRowCount(1);
    mTable->setColumnCount(2);
    mTable->setHorizontalHeaderLabels({tr("Value"), tr("Type")});
    mTable->setVerticalHeaderLabels({tr("Name")});
    auto *hint = new QTableWidgetItem(tr("please add a value"));
    QFont font = mTable->font();
    font.setItalic(true);
    hint->setFont(font);
    hint->setToolTip(tr("A double click on a number of the sample makes a value too"));
    mTable->setItem(0, 0, hint);
    mTable->setItem(0, 1, new QTableWidgetItem);
    mTable->resizeColumnsToContents();
    mTable->resizeRowsToContents();
    paintMarks();
}

void FGenIntResultsFileEditor::fillPreview()
{
    if (!mData || mData->rowCount() * mData->columnCount() == 0) {
        setResultsPreviewBlank();
        return;
    }
    const int rows = mData->rowCount(), columns = mData->columnCount() + 2;
    bool hasNotes = false;
    for (const FTableRow &row : mData->values())
        hasNotes = hasNotes || !row.notes.isEmpty();
    if (mTable->columnCount() < kColumns)
        mTable->clear();
    mTable->setRowCount(rows);
    mTable->setColumnCount(columns + hasNotes);
    QFont italic = mTable->horizontalHeader()->font();
    italic.setItalic(true);
    QStringList titles{tr("Value"), tr("Type"), QString()};
    if (hasNotes)
        titles << tr("Doubt");
    for (int i = 0; i < titles.size(); ++i) {
        auto *title = new QTableWidgetItem(titles[i]);
        title->setFont(italic);
        mTable->setHorizontalHeaderItem(i, title);
    }
    for (int row = 0; row < rows; ++row) {
        const QString type =
            Q(row < int(mData->rowTexts().size()) ? mData->rowTexts()[size_t(row)] : std::string());
        const QStringList halves = type.split('|', Qt::SkipEmptyParts);
        const double number = mData->getElementAt(row, 0);
        auto *value = new QTableWidgetItem;
        bool isNumber = true;
        if (halves.size() == 2) {
            value->setText(halves[1]);
        } else if (std::isnan(number)) {
            value->setText(QStringLiteral("not a number"));
            value->setFont(italic);
            value->setForeground(FTheme::color("bad"));
            isNumber = false;
        } else {
            value->setText(QString::number(number, 'g', 6));
        }
        value->setTextAlignment(Qt::AlignCenter);
        value->setToolTip(QStringLiteral("row index:%1,column index:%2").arg(row).arg(0));
        mTable->setItem(row, 0, value);
        mTable->setItem(row, 1, new QTableWidgetItem(halves.size() == 2 ? halves[0] : type));
        auto *button = qobject_cast<FToolButton *>(mTable->cellWidget(row, 2));
        if (!button) {
            button = new FToolButton;
            button->setIcon(FIcons::icon(QStringLiteral(":/parameter")));
            button->setAutoRaise(true);
            button->setToolTip(tr("Create parameter"));
            button->setAccessibleName(tr("Create parameter"));
            connect(button, &QToolButton::clicked, this, &FGenIntResultsFileEditor::createParam);
            mTable->setCellWidget(row, 2, button);
        }
        button->setEnabled(isNumber);
        if (hasNotes) {
            const FTableRow *read =
                row < int(mData->values().size()) ? &mData->values()[size_t(row)] : nullptr;
            auto *note = new QTableWidgetItem(read ? Q(read->note()) : QString());
            note->setToolTip(note->text());
            note->setForeground(FTheme::color("warning"));
            mTable->setItem(row, 3, note);
        }
    }
    QStringList names;
    for (int row = 0; row < rows; ++row) {
        const auto &headers = mData->rowHeaders();
        const QString name = row < int(headers.size()) ? Q(headers[size_t(row)]) : QString();
        names << (name.isEmpty() ? QString::number(row) : name);
    }
    mTable->setVerticalHeaderLabels(names);
    mTable->resizeColumnsToContents();
    if (hasNotes)
        mTable->horizontalHeader()->setStretchLastSection(true);
    paintMarks();
}

bool FGenIntResultsFileEditor::hasExpression() const
{
    const auto file = resultsFile();
    return file && FGenIntSeparator(FGenIntReader::columnsOf(*file)).isExpression();
}

/// An expression may run on for ever and can't be interrupted here: a cell is looked for when the
/// reader, which can be ended, has found it.
bool FGenIntResultsFileEditor::isCellSafe(const FGenIntResultsFileValue &value) const
{
    if (!hasExpression())
        return true;
    if (mReading || !mData || mPreviewed != previewKey())
        return false;
    for (const FTableRow &row : mData->values())
        if (row.name == value.mName)
            return !std::isnan(row.value) || !row.cell.isEmpty();
    return false;
}

void FGenIntResultsFileEditor::highlightCurrentValue()
{
    const auto file = resultsFile();
    const auto value = currentValue();
    mMarks = FGenIntMarks();
    if (file && value && isLoaded()) {
        mMarks = FGenIntMarks::of(
            *mEdit->document(), text(), FGenIntReader::ruleOf(*value),
            isCellSafe(*value) ? FGenIntReader::columnsOf(*file) : FGenIntColumns(), mAnchors);
        if (!isCellSafe(*value))
            mMarks.cells.clear();
        // What was marked comes into sight, the cell first of all, and its line from the start.
        mEdit->horizontalScrollBar()->setValue(0);
        for (const auto *spans : {&mMarks.lines, &mMarks.cells})
            if (!spans->isEmpty()) {
                QTextCursor cursor(mEdit->document());
                cursor.setPosition(spans->first().begin);
                mEdit->setTextCursor(cursor);
            }
        if (mMarks.lines.isEmpty() && mMarks.hasAnchor) {
            QTextCursor cursor(mEdit->document());
            cursor.setPosition(mMarks.anchor.begin);
            mEdit->setTextCursor(cursor);
        }
        if (mEdit->textCursor().block().blockNumber() != 0)
            mEdit->ensureCursorVisible();
    }
    paintMarks();
}

/// Marks are painted over the text, not written into it; the anchor comes last of all.
void FGenIntResultsFileEditor::paintMarks()
{
    QList<QTextEdit::ExtraSelection> all;
    QVector<FEditor::LineMark> map;
    const auto paint = [&](const FGenIntMarks::Span &span, const QColor &ground,
                           const QColor &colour) {
        QTextEdit::ExtraSelection one;
        one.cursor = QTextCursor(mEdit->document());
        one.cursor.setPosition(span.begin);
        one.cursor.setPosition(span.begin + span.length, QTextCursor::KeepAnchor);
        one.format.setBackground(ground);
        one.format.setForeground(colour);
        all << one;
    };
    for (const FTableRow &row : mData ? mData->values() : std::vector<FTableRow>()) {
        const QTextBlock block = mEdit->document()->findBlockByNumber(int(row.place.line) - 1);
        if (row.place.line < 1 || !block.isValid())
            continue;
        const bool isDoubtful = !row.notes.isEmpty();
        map.append({block.blockNumber(), isDoubtful ? "warning" : "accent"});
        if (!isDoubtful || row.place.first < 1)
            continue;
        QTextEdit::ExtraSelection one;
        one.cursor = QTextCursor(block);
        const int last = block.position() + block.length() - 1;
        one.cursor.setPosition(qMin(last, block.position() + row.place.first - 1));
        one.cursor.setPosition(qMin(last, block.position() + row.place.last),
                               QTextCursor::KeepAnchor);
        one.format.setUnderlineStyle(QTextCharFormat::WaveUnderline);
        one.format.setUnderlineColor(FTheme::color("warning"));
        all << one;
    }
    for (const auto &line : mMarks.lines)
        paint(line, sResultLineBackground, sResultLineForeground);
    for (const auto &cell : mMarks.cells)
        paint(cell, sColumnBackground, sColumnForeground);
    if (mMarks.hasAnchor)
        paint(mMarks.anchor, sAnchorBackground, sAnchorForeground);
    mEdit->setExtraSelections(all);
    mEdit->setLineMarks(map);
    tellDifference();
}

/// The marks follow fixed steps; where the reader reads another place, words say so.
void FGenIntResultsFileEditor::tellDifference()
{
    QString says;
    const auto value = currentValue();
    const FTableRow *read = nullptr;
    if (value && mData && mPreviewed == previewKey())
        for (const FTableRow &row : mData->values())
            if (row.name == value->mName)
                read = &row;
    if (read && !read->notes.isEmpty())
        says = Q(read->name) + ": " + read->notes.join(QStringLiteral(", "));
    if (read && !value->mCalcAverage) {
        const QTextBlock block = mEdit->document()->findBlockByNumber(int(read->place.line) - 1);
        const int at = read->place.line > 0 && read->place.first > 0 && block.isValid()
                           ? block.position() + read->place.first - 1
                           : -1;
        const int marked = mMarks.cells.isEmpty() ? -1 : mMarks.cells.first().begin;
        if (at != marked && !(at >= 0 && marked >= 0 && qAbs(at - marked) <= 1)) {
            if (!says.isEmpty())
                says += '\n';
            says += at < 0 ? tr("Nothing is read where the mark stands.")
                           : tr("Read is %1, line %2, column %3%4.")
                                 .arg(read->cell)
                                 .arg(read->place.line)
                                 .arg(read->place.first)
                                 .arg(marked < 0 ? QString() : tr(", not the marked cell"));
        }
    }
    mTells->setText(says);
    mTells->setVisible(!says.isEmpty());
}

/// Paths of this result file in the runs that exist, by design.
QStringList FGenIntResultsFileEditor::runFiles() const
{
    QStringList found;
    const auto file = resultsFile();
    const auto owner = computation();
    if (!file || !owner)
        return found;
    for (const auto &design : FDesign::all()) {
        QString why;
        const QString path =
            design ? safeJoin(Q(FPathManager::instance()->getResultsDirAbs(owner, design)),
                              file->getFileName(), &why)
                   : QString();
        if (!path.isEmpty() && QFile::exists(path))
            found << Q(design->getName()) + '\n' + path;
    }
    return found;
}

void FGenIntResultsFileEditor::refreshRuns()
{
    const QString current = mSource->currentData().toString();
    const QSignalBlocker quiet(mSource);
    mSource->clear();
    mSource->addItem(tr("Stored sample"));
    for (const QString &run : runFiles())
        mSource->addItem(tr("Run of %1").arg(run.section('\n', 0, 0)), run.section('\n', 1));
    mSource->setCurrentIndex(qMax(0, mSource->findData(current)));
    mSource->setEnabled(mSource->count() > 1);
    if (mSource->count() == 1)
        mSourceTells->setText(tr("No run has left this file yet."));
    else if (mSourceTells->text().startsWith(tr("No run")))
        mSourceTells->clear();
    if (!mRunPath.isEmpty() && mSource->findData(mRunPath) < 0)
        showRun(QString());
}

void FGenIntResultsFileEditor::showRun(const QString &path)
{
    if (path == mRunPath)
        return;
    QString shown;
    mSourceTells->clear();
    if (path.isEmpty()) {
        shown = shownForm(loadedText());
        mSource->setCurrentIndex(0);
    } else {
        QFile file(path);
        QString encoding, why;
        if (!file.open(QIODevice::ReadOnly))
            why = file.errorString();
        else if (file.size() > kLargestRun)
            why = tr("larger than 256 MB");
        else if (FGenIntEncoding::decode(file.readAll(), &shown, &encoding, &why))
            shown = shownForm(shown);
        if (!why.isEmpty()) {
            mSourceTells->setText(tr("%1 can't be shown: %2").arg(path, why));
            mSource->setCurrentIndex(qMax(0, mSource->findData(mRunPath)));
            return;
        }
        mSource->setCurrentIndex(qMax(0, mSource->findData(path)));
    }
    mRunPath = path;
    mShown = shown;
    mText.reset();
    mEdit->setPlainText(shown);
    refreshValuesSelector();
    refreshResultsPreview();
    highlightCurrentValue();
}
