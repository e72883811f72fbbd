// SPDX-License-Identifier: Apache-2.0
// The editor of a result template: what it does to the rules.
#include "fattribcmdsetaveragerows.h"
#include "fgenintreader.h"
#include "fgenintresultsfileedit.h"
#include "fgenintresultsfileeditor.h"
#include "fgeninttext.h"
#include "fhistory.h"
#include "flogmsg.h"
#include "fmarloctrl.h"
#include "fparameter.h"
#include "fpropertyeditor.h"
#include "fspinbox.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QTableWidget>
#include <QTimer>
#include <QToolButton>

namespace {
constexpr int kPreviewMilliseconds = 200;
}

std::shared_ptr<FGenIntResultsFileValue> FGenIntResultsFileEditor::currentValue() const
{
    const auto file = resultsFile();
    return file ? file->getCurrentValue().getPtr() : nullptr;
}

/// Changes the value under edit as one step; steps with the same key that follow each other are
/// one.
template <class Change>
void FGenIntResultsFileEditor::write(const char *text, const char *joinKey, Change change)
{
    const auto file = resultsFile();
    const auto value = currentValue();
    if (!file || !value || mRefreshing)
        return;
    const QScopedValueRollback<bool> own(mOwnChange, true);
    FHistoryTransaction step(nullptr, text, true);
    if (joinKey)
        FHistory::instance()->setJoinKey(std::string(joinKey) + file->getName() + "|" +
                                         value->mName);
    change(*file, *value);
    file->setOutOfDate(0);
    step.addStep(file);
}

void FGenIntResultsFileEditor::previewSoon()
{
    if (FMarloCtrl::instance()->isLoadingProject())
        refreshResultsPreview();
    else
        QTimer::singleShot(kPreviewMilliseconds, this,
                           &FGenIntResultsFileEditor::refreshResultsPreview);
}

QStringList FGenIntResultsFileEditor::sortedNames()
{
    QStringList names;
    const auto file = resultsFile();
    if (!file)
        return names;
    std::vector<FExpr<FObject, true>> values;
    for (const auto &value : file->values())
        values.emplace_back(value);
    // Of a long text the reader on the worker tells the order.
    if (mShown.size() <= kLongSample)
        FGenIntReader::sortResultsValues(values, mShown);
    for (const auto &value : values)
        names << Q(value.ptr<FGenIntResultsFileValue>()->mName);
    if (mShown.size() > kLongSample && mData && mData->values().size() == values.size()) {
        QStringList read;
        for (const FTableRow &row : mData->values())
            read << Q(row.name);
        QStringList a = read, b = names;
        std::sort(a.begin(), a.end());
        std::sort(b.begin(), b.end());
        if (a == b)
            names = read;
    }
    return names;
}

void FGenIntResultsFileEditor::refreshValuesSelector()
{
    const auto file = resultsFile();
    const QStringList names = sortedNames();
    if (file && !file->getCurrentValue() && !names.isEmpty())
        file->setCurrentValue(file->getValue(names.last()));
    const auto value = currentValue();
    const int current = value ? names.indexOf(Q(value->mName)) : -1;
    QStringList shown;
    for (int i = 0; i < mSelector->count(); ++i)
        shown << mSelector->itemText(i);
    if (shown == names && mSelector->currentIndex() == current)
        return; // what is being typed in it stays
    const QSignalBlocker quiet(mSelector);
    mSelector->clear();
    mSelector->addItems(names);
    mSelector->setCurrentIndex(current);
}

void FGenIntResultsFileEditor::enableValue()
{
    const bool isThere = currentValue() != nullptr;
    for (QWidget *one :
         std::initializer_list<QWidget *>{mSelector, mType, mDelete, mImportType, mLine, mColumn,
                                          mAnchor, mOccurrence, mAverage})
        one->setEnabled(isThere);
}

void FGenIntResultsFileEditor::refreshValue()
{
    refreshResultsValueType();
    refreshFileImportType();
    refreshResultsValues();
    refreshAnchor();
    refreshAverage();
    highlightCurrentValue();
}

void FGenIntResultsFileEditor::refreshResultsValues()
{
    const auto file = resultsFile();
    refreshValuesSelector();
    const QSignalBlocker quietLine(mLine), quietColumn(mColumn);
    mLine->setValue(file ? file->getCurLine() : 0);
    mColumn->setValue(file ? file->getCurColumn() : 0);
    enableValue();
    mRowsField->refresh();
}

void FGenIntResultsFileEditor::refreshAnchor()
{
    const auto file = resultsFile();
    if (!(mAnchor->hasFocus() && mAnchor->isModified()))
        mAnchor->setText(file ? file->getCurrentAnchor() : QString());
    const QSignalBlocker quiet(mOccurrence);
    mOccurrence->setCurrentIndex(
        int(file ? file->getCurrentOccurrence() : GenIntAnchorOccurrence::Last));
}

void FGenIntResultsFileEditor::refreshResultsValueType()
{
    const auto value = currentValue();
    const auto type = value ? value->mType.getExpr() : nullptr;
    const QSignalBlocker quiet(mType);
    mType->setCurrentIndex(qMax(0, type ? mType->findText(Q(type->getClass())) : 0));
    mType->setEnabled(value != nullptr);
}

void FGenIntResultsFileEditor::refreshFileImportType()
{
    const auto value = currentValue();
    const bool isFile = value && mType->currentText() == Q(FFileName::mpNull->getClass());
    mImportRow->setVisible(isFile && !value->mCalcAverage);
    if (!isFile)
        return;
    const QSignalBlocker quiet(mImportType);
    mImportType->setCurrentIndex(qMax(0, mImportType->findText(Q(value->mImportType))));
}

void FGenIntResultsFileEditor::refreshAverage()
{
    const auto value = currentValue();
    const bool averages = value && value->mCalcAverage;
    mAverage->setChecked(averages);
    mRowsField->setEnabled(averages);
    mRowsField->refresh();
    mAverage->setToolTip((averages ? QStringLiteral("deactivate") : QStringLiteral("activate")) +
                         QStringLiteral(" average calculation"));
    for (QWidget *one : {mTypeRow, mLineRow, mAnchorRow, mOccurrenceRow})
        one->setVisible(!averages);
    if (averages)
        mImportRow->hide();
    const QSignalBlocker quiet(mType);
    const QString number = Q(FDouble::mpNull->getClass());
    if (averages && mType->currentText() != number) {
        mTypeBefore = mType->currentText();
        mType->setCurrentText(number);
    }
}

void FGenIntResultsFileEditor::currentResultsValueChanged(const QString &name)
{
    const auto file = resultsFile();
    if (!file)
        return;
    const auto value = file->getValue(name);
    if (value && value.getExpr() != file->getCurrentValue().getExpr()) {
        const QScopedValueRollback<bool> own(mOwnChange, true);
        FHistoryTransaction step(nullptr, F_TEXT("change results value"), true);
        FHistory::instance()->setJoinKey("select:" + file->getName());
        file->setCurrentValue(value);
        step.addStep(file);
        mTypeBefore.clear();
    }
    refreshValue();
    mEdit->viewport()->update();
}

void FGenIntResultsFileEditor::fileImportTypeChanged(const QString &type)
{
    write(
        F_TEXT("change file import type"), nullptr,
        [&](FGenIntResultsFile &, FGenIntResultsFileValue &value) { value.mImportType = S(type); });
}

void FGenIntResultsFileEditor::valueTypeChanged(const QString &type)
{
    write(F_TEXT("change value type"), nullptr,
          [&](FGenIntResultsFile &, FGenIntResultsFileValue &value) {
              value.setTypeFromString(S(type));
              value.mImportType = type == Q(FFileName::mpNull->getClass())
                                      ? S(mImportType->currentText())
                                      : std::string();
          });
    refreshFileImportType();
    refreshResultsPreview();
}

void FGenIntResultsFileEditor::resultsLineChanged(int line)
{
    write(F_TEXT("change line"), "line:",
          [line](FGenIntResultsFile &, FGenIntResultsFileValue &value) { value.mLine = line; });
    previewSoon();
    highlightCurrentValue();
}

void FGenIntResultsFileEditor::resultsColumnChanged(int column)
{
    write(F_TEXT("change column"),
          "column:", [column](FGenIntResultsFile &, FGenIntResultsFileValue &value) {
              value.mColumn = column;
          });
    previewSoon();
    highlightCurrentValue();
}

void FGenIntResultsFileEditor::anchorChanged()
{
    const auto file = resultsFile();
    if (!file || FMarloCtrl::instance()->isBusy() || !mAnchor->isModified())
        return;
    mAnchor->setModified(false);
    if (mAnchor->text() == file->getCurrentAnchor())
        return;
    write(F_TEXT("change anchor"), nullptr,
          [this](FGenIntResultsFile &one, FGenIntResultsFileValue &) {
              one.setCurrentAnchor(mAnchor->text());
          });
    previewSoon();
    highlightCurrentValue();
}

void FGenIntResultsFileEditor::occurrenceChanged(const QString &text)
{
    const bool isFirst = text == mOccurrence->itemText(0);
    write(isFirst ? F_TEXT("change occurrence to first") : F_TEXT("change occurrence to last"),
          nullptr, [&](FGenIntResultsFile &file, FGenIntResultsFileValue &) {
              file.setCurrentOccurrence(isFirst ? GenIntAnchorOccurrence::First
                                                : GenIntAnchorOccurrence::Last);
          });
    refreshResultsPreview();
    highlightCurrentValue();
    mEdit->viewport()->update();
}

void FGenIntResultsFileEditor::averageToggled(bool on)
{
    write(on ? F_TEXT("active average calculation") : F_TEXT("deactivate average calculation"),
          nullptr, [&](FGenIntResultsFile &, FGenIntResultsFileValue &value) {
              value.mCalcAverage = on;
              const auto type = value.mType.getExpr();
              if (on) {
                  mTypeBefore = type ? Q(type->getClass()) : QString();
                  value.setTypeFromString(FDouble::mpNull->getClass());
              } else if (!mTypeBefore.isEmpty()) {
                  value.setTypeFromString(S(mTypeBefore));
              }
          });
    refreshResultsValueType();
    refreshFileImportType();
    refreshAverage();
    previewSoon();
    highlightCurrentValue();
}

void FGenIntResultsFileEditor::averageChanged(const FExpr<FUnsigned> &rows) const
{
    auto *self = const_cast<FGenIntResultsFileEditor *>(this);
    self->write(F_TEXT("change average rows"), nullptr,
                [&](FGenIntResultsFile &, FGenIntResultsFileValue &value) {
                    value.mNumAverageRows = rows;
                });
    self->refreshResultsPreview();
    self->highlightCurrentValue();
}

QString FGenIntResultsFileEditor::getNextItemAferDeletion(const QComboBox *selector) const
{
    const int current = selector->currentIndex();
    if (current >= 1)
        return selector->itemText(current - 1);
    return selector->count() > 1 ? selector->itemText(current + 1) : selector->itemText(current);
}

void FGenIntResultsFileEditor::deleteResultsValue(bool)
{
    const QString next = getNextItemAferDeletion(mSelector);
    write(F_TEXT("delete results value"), nullptr,
          [&](FGenIntResultsFile &file, FGenIntResultsFileValue &) {
              file.deleteCurrentValue();
              file.setCurrentValue(file.getValue(next));
          });
    refreshValuesSelector();
    refreshValue();
    refreshResultsPreview();
}

void FGenIntResultsFileEditor::addResultsValue(bool)
{
    const auto file = resultsFile();
    if (!file)
        return;
    const auto value = currentValue();
    {
        const QScopedValueRollback<bool> own(mOwnChange, true);
        FHistoryTransaction step(nullptr, F_TEXT("add results value"), true);
        FExpr<FUnsigned> rows;
        if (value && value->mNumAverageRows)
            rows = value->mNumAverageRows.isExpression()
                       ? value->mNumAverageRows
                       : FExpr<FUnsigned>(f_make_shared<FUnsigned>(value->averageRows()));
        file->addValue(QString(), mLine->value(), mColumn->value(), mAnchor->text(),
                       mOccurrence->currentText(), mAverage->isChecked(), rows);
        step.addStep(file);
    }
    refreshValuesSelector();
    refreshValue();
    refreshResultsPreview();
}

/// Parameters that consist of the reference to the value alone follow its name.
bool FGenIntResultsFileEditor::renameReferences(const QString &from, const QString &to)
{
    const auto owner = computation();
    const auto file = resultsFile();
    if (!owner || !file)
        return false;
    const auto reference = [&](const QString &value) {
        return owner->getName() + ".getResults().getTable(" +
               FLiteral::quoted(S(file->getFileName())) + ").getElementAt(" +
               FLiteral::quoted(S(value)) + ")";
    };
    std::set<std::shared_ptr<FObject>> clients;
    owner->getClients(clients);
    const std::string old = reference(from);
    bool found = false;
    for (const auto &client : clients) {
        const auto parameter = std::dynamic_pointer_cast<FParameter>(client);
        if (!parameter || parameter->getValue().toString() != old)
            continue;
        const FExprBase renamed = FExprBase::resolve(reference(to));
        if (renamed)
            parameter->setValue(renamed);
        found = true;
    }
    return found;
}

void FGenIntResultsFileEditor::currentResultsValueNameChanged(const QString &text)
{
    const auto file = resultsFile();
    const auto value = currentValue();
    if (!file || !value || FMarloCtrl::instance()->isBusy())
        return;
    const QString old = Q(value->mName);
    if (text == old)
        return;
    {
        const QScopedValueRollback<bool> own(mOwnChange, true);
        FHistoryTransaction step(nullptr, F_TEXT("change results value name"), true);
        FHistory::instance()->setJoinKey("name:" + file->getName());
        const QString given = file->setCurValueName(text);
        renameReferences(old, given);
        const QSignalBlocker quiet(mSelector);
        const int place = mSelector->lineEdit()->cursorPosition();
        mSelector->setItemText(mSelector->currentIndex(), given);
        if (mSelector->lineEdit()->text() != given)
            mSelector->lineEdit()->setText(given);
        mSelector->lineEdit()->setCursorPosition(place);
    }
    refreshResultsPreview();
}

void FGenIntResultsFileEditor::selectValueViaCell(int row, int)
{
    const QTableWidgetItem *header = mTable->verticalHeaderItem(row);
    if (!header)
        return;
    const int index =
        mSelector->findText(header->text(), Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (index < 0)
        return;
    if (index == mSelector->currentIndex())
        currentResultsValueChanged(header->text());
    else
        mSelector->setCurrentIndex(index);
}

void FGenIntResultsFileEditor::selectValueViaHeader(int row) { selectValueViaCell(row, 0); }

void FGenIntResultsFileEditor::createParam()
{
    const auto fail = [](const QString &detail) {
        FLogMsg::error("Resultsfile Editor", "Cannot create parameter.", S(detail), nullptr);
    };
    const auto owner = computation();
    if (!owner)
        return;
    const auto file = resultsFile();
    if (!file) {
        fail(QStringLiteral("No template file found."));
        return;
    }
    // The button that was pressed, by mouse or by key.
    int row = -1, column = -1;
    for (int i = 0; i < mTable->rowCount(); ++i)
        if (sender() && mTable->cellWidget(i, 2) == sender()) {
            row = i;
            column = 2;
        }
    if (row < 0) {
        const QPoint mouse = mTable->viewport()->mapFromGlobal(QCursor::pos());
        row = mTable->rowAt(mouse.y());
        column = mTable->columnAt(mouse.x());
    }
    const QTableWidgetItem *header = row >= 0 ? mTable->verticalHeaderItem(row) : nullptr;
    if (column < 2 || !header) {
        fail(QStringLiteral("Index out of range."));
        return;
    }
    file->createParam(header->text(), Q(owner->getName()), true);
}
