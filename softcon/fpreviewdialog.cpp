// SPDX-License-Identifier: Apache-2.0
#include "fpreviewdialog.h"

#include "fchanges.h"
#include "fconfigurationgenint.h"
#include "fdefinitiongenint.h"
#include "fdesign.h"
#include "feditor.h"
#include "fgenintcomputation.h"
#include "ficons.h"
#include "ftheme.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QScrollBar>
#include <QSplitter>
#include <QTextBlock>
#include <QTimer>
#include <QVBoxLayout>

namespace {
QWidget *titled(const QString &title, QWidget *content, QWidget *parent)
{
    auto *box = new QWidget(parent);
    auto *layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(FTheme::space(1));
    auto *label = new QLabel(title, box);
    label->setObjectName(QStringLiteral("sectionHeading"));
    layout->addWidget(label);
    layout->addWidget(content);
    return box;
}

FEditor *readOnlyText(const QString &name, const QString &accessible)
{
    auto *editor = new FEditor(3, 1);
    editor->setObjectName(name);
    editor->setAccessibleName(accessible);
    editor->setReadOnly(true);
    editor->setTabChangesFocus(true);
    return editor;
}

constexpr int kLinesAbove = 5; // what was changed first

/// The columns of a line that differ from those of another one.
std::pair<int, int> difference(const QString &line, const QString &other)
{
    int begin = 0, end = line.size(), otherEnd = other.size();
    while (begin < end && begin < otherEnd && line[begin] == other[begin])
        ++begin;
    while (end > begin && otherEnd > begin && line[end - 1] == other[otherEnd - 1]) {
        --end;
        --otherEnd;
    }
    return {begin, end};
}
} // namespace

void FPreviewDialog::show(const std::shared_ptr<FGenIntComputation> &computation, QWidget *parent)
{
    auto *dialog = new FPreviewDialog(computation, parent);
    dialog->QDialog::show();
}

FPreviewDialog::FPreviewDialog(const std::shared_ptr<FGenIntComputation> &computation,
                               QWidget *parent)
    : QDialog(parent)
    , mComputation(computation)
    , mDesign(new QComboBox(this))
    , mFiles(new QListWidget(this))
    , mTemplate(readOnlyText(QStringLiteral("previewTemplate"), tr("Template")))
    , mWritten(readOnlyText(QStringLiteral("previewWritten"), tr("Written text")))
{
    setObjectName(QStringLiteral("previewDialog"));
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Preview of %1").arg(Q(computation->getName())));
    resize(1080, 640);
    mDesign->setObjectName(QStringLiteral("previewDesign"));
    mDesign->setAccessibleName(tr("Design"));
    mFiles->setObjectName(QStringLiteral("previewFiles"));
    mFiles->setAccessibleName(tr("Files"));

    auto *layout = new QVBoxLayout(this);
    const int space = FTheme::space(3);
    layout->setContentsMargins(space, space, space, space);
    layout->setSpacing(FTheme::space(2));
    auto *above = new QHBoxLayout;
    auto *label = new QLabel(tr("&Design"), this);
    label->setBuddy(mDesign);
    above->addWidget(label);
    above->addWidget(mDesign);
    above->addStretch();
    layout->addLayout(above);
    auto *splitter = new QSplitter(this);
    splitter->addWidget(titled(tr("Input files"), mFiles, splitter));
    splitter->addWidget(titled(tr("Template"), mTemplate, splitter));
    splitter->addWidget(titled(tr("As it would be written"), mWritten, splitter));
    splitter->setSizes({160, 460, 460});
    splitter->setStretchFactor(1, 1);
    splitter->setStretchFactor(2, 1);
    splitter->setHandleWidth(1);
    splitter->setChildrenCollapsible(false);
    layout->addWidget(splitter, 1);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);

    for (const auto &[from, to] : {std::pair{mTemplate, mWritten}, {mWritten, mTemplate}}) {
        QScrollBar *other = to->verticalScrollBar();
        connect(from->verticalScrollBar(), &QScrollBar::valueChanged, other,
                [other](int value) { other->setValue(value); });
    }
    connect(mDesign, qOverload<int>(&QComboBox::activated), this, &FPreviewDialog::readAgain);
    connect(mFiles, &QListWidget::currentRowChanged, this, &FPreviewDialog::showFile);
    FChanges *feed = FChanges::instance();
    connect(feed, &FChanges::changed, this, [this] {
        listDesigns();
        readAgain();
    });
    connect(feed, &FChanges::projectClosing, this, &QDialog::close);
    connect(FTheme::instance(), &FTheme::changed, this, &FPreviewDialog::mark);
    listDesigns();
    mDesign->setCurrentText(Q(FDesign::chosen()->getName()));
    readAgain();
    mFiles->setCurrentRow(0);
    mFiles->setFocus();
}

void FPreviewDialog::listDesigns()
{
    const QString now = mDesign->currentText();
    QStringList names, shown;
    for (const auto &design : FDesign::all())
        names << Q(design->getName());
    for (int i = 0; i < mDesign->count(); ++i)
        shown << mDesign->itemText(i);
    if (names == shown)
        return;
    mDesign->clear();
    mDesign->addItems(names);
    mDesign->setCurrentText(names.contains(now) ? now : names.value(0));
}

void FPreviewDialog::readAgain()
{
    const auto computation = mComputation.lock();
    if (!computation || computation->isDestroyed()) {
        close();
        return;
    }
    const auto configuration = computation->getConfiguration().ptr<FConfigurationGenInt>();
    const auto definition =
        configuration ? configuration->getDefinition().ptr<FDefinitionGenInt>() : nullptr;
    const auto before = std::move(mTexts);
    mTexts.clear();
    if (definition) {
        std::map<std::string, std::string> written;
        for (const auto &design : FDesign::all())
            if (Q(design->getName()) == mDesign->currentText()) {
                const FDesign::Scope scope(design);
                written = configuration->preview();
            }
        for (const auto &one : definition->getFiles(0))
            if (const auto file = one.getPtr()) {
                const auto text = written.find(S(file->getFileName()));
                mTexts[file->getFileName()] = {file->text(),
                                               text == written.end() ? QString() : Q(text->second)};
            }
    }
    if (mTexts == before)
        return;
    const QString current = mFiles->currentItem() ? mFiles->currentItem()->text() : QString();
    QStringList names, shown;
    for (const auto &one : mTexts)
        names << one.first;
    for (int i = 0; i < mFiles->count(); ++i)
        shown << mFiles->item(i)->text();
    if (names != shown) {
        const QSignalBlocker quiet(mFiles);
        mFiles->clear();
        mFiles->addItems(names);
        for (int i = 0; i < mFiles->count(); ++i)
            mFiles->item(i)->setIcon(FIcons::icon(QStringLiteral(":/template")));
        mFiles->setCurrentRow(qMax(0, names.indexOf(current)));
    }
    showFile();
}

void FPreviewDialog::showFile()
{
    const QString name = mFiles->currentItem() ? mFiles->currentItem()->text() : QString();
    const auto texts = mTexts.find(name);
    const bool isNew = name != mShown;
    const int place = mTemplate->verticalScrollBar()->value();
    mShown = name;
    mTemplate->setPlainText(texts == mTexts.end() ? QString() : texts->second.first);
    mWritten->setPlainText(texts == mTexts.end() ? QString() : texts->second.second);
    mTemplate->verticalScrollBar()->setValue(place);
    mark();
    if (isNew) // once the text has its place on the screen
        QTimer::singleShot(0, this, &FPreviewDialog::showFirstChange);
}

void FPreviewDialog::showFirstChange()
{
    const auto marks = mTemplate->extraSelections();
    const int line = marks.isEmpty() ? 0 : marks.front().cursor.blockNumber();
    mTemplate->verticalScrollBar()->setValue(qMax(0, line - kLinesAbove));
}

/// Lines are paired from the start, and from the end behind the first pair of unequal count.
void FPreviewDialog::mark()
{
    QTextCharFormat format;
    format.setBackground(FTheme::color("warning-ground"));
    format.setForeground(FTheme::color("warning"));
    const int lines[2] = {mTemplate->blockCount(), mWritten->blockCount()};
    QList<QTextEdit::ExtraSelection> marks[2];
    const int surplus = lines[1] - lines[0];
    bool isBehind = false;
    QTextBlock block = mTemplate->document()->firstBlock();
    QTextBlock other = mWritten->document()->firstBlock();
    while (block.isValid() && other.isValid()) {
        if (block.text() != other.text()) {
            const auto here = difference(block.text(), other.text());
            const auto there = difference(other.text(), block.text());
            const QTextBlock blocks[2] = {block, other};
            const std::pair<int, int> places[2] = {here, there};
            for (int side = 0; side < 2; ++side) {
                if (places[side].first >= places[side].second)
                    continue;
                QTextEdit::ExtraSelection selection;
                selection.format = format;
                selection.cursor = QTextCursor(blocks[side]);
                selection.cursor.setPosition(blocks[side].position() + places[side].first);
                selection.cursor.setPosition(blocks[side].position() + places[side].second,
                                             QTextCursor::KeepAnchor);
                marks[side].append(selection);
            }
            if (!isBehind && surplus > 0) { // a value of several lines
                isBehind = true;
                for (int i = 0; i < surplus && other.next().isValid(); ++i) {
                    other = other.next();
                    QTextEdit::ExtraSelection selection;
                    selection.format = format;
                    selection.cursor = QTextCursor(other);
                    selection.cursor.select(QTextCursor::LineUnderCursor);
                    marks[1].append(selection);
                }
            }
        }
        block = block.next();
        other = other.next();
    }
    mTemplate->setExtraSelections(marks[0]);
    mWritten->setExtraSelections(marks[1]);
}
