// SPDX-License-Identifier: Apache-2.0
#include "fsearchdialog.h"

#include "feditor.h"
#include "ficons.h"
#include "ftext.h"
#include "ftheme.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QTextBlock>
#include <QToolButton>

namespace {
constexpr int kCounted = 1 << 20; // characters of a text whose hits are counted
} // namespace

FSearchDialog::FSearchDialog(QPlainTextEdit *edit)
    : QWidget(edit)
    , mEdit(edit)
    , mFind(new QLineEdit(this))
    , mWith(new QLineEdit(this))
    , mSays(new QLabel(this))
    , mReplaceRow(new QWidget(this))
{
    setObjectName(QStringLiteral("searchBar"));
    setAttribute(Qt::WA_StyledBackground);
    setCursor(Qt::ArrowCursor);
    mFind->setObjectName(QStringLiteral("searchText"));
    mFind->setAccessibleName(tr("Text to find"));
    mFind->setPlaceholderText(tr("Find"));
    mFind->setClearButtonEnabled(true);
    mWith->setObjectName(QStringLiteral("replaceText"));
    mWith->setAccessibleName(tr("Replacement"));
    mWith->setPlaceholderText(tr("Replace with"));
    mSays->setObjectName(QStringLiteral("muted"));
    mCase = makeOption("searchCase", QStringLiteral("Aa"), tr("Match case"));
    mWord = makeOption("searchWord", QStringLiteral("\u201cw\u201d"), tr("Whole words"));
    mRegular = makeOption("searchRegular", QStringLiteral(".*"), tr("Regular expression"));
    mAll = makeOption("searchAll", QString(), QString());
    mAll->hide();
    makeRows();
    connect(mFind, &QLineEdit::textChanged, this, &FSearchDialog::changed);
    for (QToolButton *one : {mCase, mWord, mRegular})
        connect(one, &QToolButton::toggled, this, &FSearchDialog::changed);
    setFocusProxy(mFind);
    hide();
    if (auto *editor = qobject_cast<FEditor *>(edit))
        editor->setBottomBar(this);
}

QToolButton *FSearchDialog::makeButton(const char *name, const char *icon, const QString &tip)
{
    auto *button = new QToolButton(this);
    button->setObjectName(QLatin1String(name));
    button->setAutoRaise(true);
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    button->setIconSize(QSize(16, 16));
    if (*icon)
        button->setIcon(FIcons::icon(QLatin1String(icon)));
    return button;
}

QToolButton *FSearchDialog::makeOption(const char *name, const QString &text, const QString &tip)
{
    QToolButton *button = makeButton(name, "", tip);
    button->setText(text);
    button->setCheckable(true);
    return button;
}

void FSearchDialog::makeRows()
{
    QToolButton *before = makeButton("searchBefore", ":/chevronUp", tr("Previous (Shift+F3)"));
    QToolButton *next = makeButton("searchNext", ":/chevronDown", tr("Next (F3)"));
    QToolButton *close = makeButton("searchClose", ":/close", tr("Close (Esc)"));
    connect(
        before, &QToolButton::clicked, this, [this] { repeat(true); });
    connect(next, &QToolButton::clicked, this, [this] { repeat(false); });
    connect(close, &QToolButton::clicked, this, &QWidget::hide);
    auto *row = new QHBoxLayout;
    row->setSpacing(FTheme::space(1));
    for (QWidget *one : {static_cast<QWidget *>(mFind), static_cast<QWidget *>(mCase),
                         static_cast<QWidget *>(mWord), static_cast<QWidget *>(mRegular),
                         static_cast<QWidget *>(mAll), static_cast<QWidget *>(before),
                         static_cast<QWidget *>(next), static_cast<QWidget *>(mSays)})
        row->addWidget(one, one == mFind ? 1 : 0);
    row->addWidget(close);
    mFind->setMinimumWidth(120);

    auto *one = new QPushButton(tr("Replace"), this),
         *all = new QPushButton(tr("Replace all"), this);
    one->setObjectName(QStringLiteral("replaceOne"));
    all->setObjectName(QStringLiteral("replaceAll"));
    connect(one, &QPushButton::clicked, this, &FSearchDialog::replaceOne);
    connect(all, &QPushButton::clicked, this, &FSearchDialog::replaceAll);
    auto *second = new QHBoxLayout(mReplaceRow);
    second->setContentsMargins(0, 0, 0, 0);
    second->setSpacing(FTheme::space(1));
    second->addWidget(mWith, 1);
    second->addWidget(one);
    second->addWidget(all);
    second->addSpacing(close->sizeHint().width() + FTheme::space(1));
    mReplaceRow->hide();

    auto *rows = new QVBoxLayout(this);
    rows->setContentsMargins(FTheme::space(2), FTheme::space(1), FTheme::space(2),
                             FTheme::space(1));
    rows->setSpacing(FTheme::space(1));
    rows->addLayout(row);
    rows->addWidget(mReplaceRow);
}

void FSearchDialog::setReplace(bool replace)
{
    mReplaceRow->setVisible(replace && !mEdit->isReadOnly());
    updateGeometry();
}

void FSearchDialog::setElsewhere(const QString &title, const Elsewhere &elsewhere)
{
    mElsewhere = elsewhere;
    mAll->setText(title);
    mAll->setToolTip(tr("Go on in the other files where this one has no further hit"));
    mAll->show();
}

void FSearchDialog::setExpression(const FSearchDialog &other)
{
    mCase->setChecked(other.mCase->isChecked());
    mWord->setChecked(other.mWord->isChecked());
    mRegular->setChecked(other.mRegular->isChecked());
    mAll->setChecked(other.mAll->isChecked());
    mFind->setText(other.mFind->text());
}

void FSearchDialog::open()
{
    const QString selected = mEdit->textCursor().selectedText();
    if (!selected.isEmpty() && !selected.contains(QChar::ParagraphSeparator))
        mFind->setText(selected);
    show();
    raise();
    mFind->selectAll();
    mFind->setFocus(Qt::ShortcutFocusReason);
    changed();
}

QRegExp FSearchDialog::expression() const
{
    const QString text = mFind->text();
    if (text.isEmpty())
        return QRegExp();
    QString pattern = mRegular->isChecked() ? text : QRegExp::escape(text);
    if (mWord->isChecked())
        pattern = "\\b(?:" + pattern + ")\\b";
    const QRegExp expression = FText::compiled(pattern, mCase->isChecked());
    return expression.isValid() ? expression : QRegExp();
}

QTextCursor FSearchDialog::find(QTextDocument *document, const QRegExp &given, int position,
                                bool backward)
{
    QRegExp expression(given);
    if (expression.isEmpty())
        return QTextCursor();
    QTextBlock block = document->findBlock(position);
    int from = position - block.position();
    for (; block.isValid(); block = backward ? block.previous() : block.next()) {
        const QString line = block.text();
        int at = -1;
        if (!backward)
            at = from <= line.size() ? expression.indexIn(line, from) : -1;
        else if (from != 0)
            at = expression.lastIndexIn(line, from < 0 ? -1 : from - 1);
        if (at >= 0 && expression.matchedLength() > 0) {
            QTextCursor hit(block);
            hit.setPosition(block.position() + at);
            hit.setPosition(block.position() + at + expression.matchedLength(),
                            QTextCursor::KeepAnchor);
            return hit;
        }
        from = backward ? -1 : 0;
    }
    return QTextCursor();
}

void FSearchDialog::select(const QTextCursor &hit)
{
    mEdit->setTextCursor(hit);
    // The bar must not cover what was found.
    mEdit->ensureCursorVisible();
}

void FSearchDialog::repeat(bool backward)
{
    const QRegExp wanted = expression();
    if (wanted.isEmpty()) {
        changed();
        return;
    }
    QTextDocument *document = mEdit->document();
    const QTextCursor now = mEdit->textCursor();
    QTextCursor hit =
        find(document, wanted, backward ? now.selectionStart() : now.selectionEnd(), backward);
    bool isWrapped = false;
    if (hit.isNull() && mAll->isChecked() && mElsewhere && mElsewhere(*this, backward))
        return;
    if (hit.isNull()) {
        hit = find(document, wanted, backward ? document->characterCount() - 1 : 0, backward);
        isWrapped = true;
    }
    if (hit.isNull()) {
        mSays->setText(tr("nothing found"));
        return;
    }
    select(hit);
    tellCount();
    if (isWrapped)
        mSays->setText(mSays->text() + (backward ? tr(" (from the end)") : tr(" (from the top)")));
}

void FSearchDialog::tellCount()
{
    QTextDocument *document = mEdit->document();
    const QRegExp wanted = expression();
    if (wanted.isEmpty() || document->characterCount() > kCounted) {
        mSays->clear();
        return;
    }
    int count = 0, current = 0;
    const int here = mEdit->textCursor().selectionStart();
    for (QTextCursor hit = find(document, wanted, 0, false); !hit.isNull() && count < 10000;
         hit = find(document, wanted, hit.selectionEnd(), false)) {
        ++count;
        if (hit.selectionStart() == here && mEdit->textCursor().hasSelection())
            current = count;
    }
    mSays->setText(count == 0     ? tr("nothing found")
                   : current == 0 ? tr("%1 found").arg(count)
                                  : tr("%1 of %2").arg(current).arg(count));
}

void FSearchDialog::changed()
{
    const QRegExp wanted = expression();
    const bool isWrong = wanted.isEmpty() && !mFind->text().isEmpty();
    if (mFind->property("wrong").toBool() != isWrong) {
        mFind->setProperty("wrong", isWrong);
        mFind->style()->unpolish(mFind);
        mFind->style()->polish(mFind);
    }
    if (wanted.isEmpty()) {
        mSays->setText(isWrong ? tr("no regular expression") : QString());
        Q_EMIT resetHighlighting();
    } else {
        Q_EMIT highlightingRequested(wanted);
        tellCount();
    }
}

QString FSearchDialog::replacement(const QRegExp &expression) const
{
    QString text = mWith->text();
    if (!mRegular->isChecked())
        return text;
    QString made;
    for (int i = 0; i < text.size(); ++i)
        if (text[i] == '\\' && i + 1 < text.size() && text[i + 1].isDigit())
            made += expression.cap(text[++i].digitValue());
        else
            made += text[i];
    return made;
}

void FSearchDialog::replaceOne()
{
    QRegExp wanted = expression();
    QTextCursor cursor = mEdit->textCursor();
    if (!wanted.isEmpty() && wanted.exactMatch(cursor.selectedText()))
        cursor.insertText(replacement(wanted));
    repeat(false);
}

void FSearchDialog::replaceAll()
{
    QRegExp wanted = expression();
    if (wanted.isEmpty())
        return;
    QTextCursor step(mEdit->document());
    step.beginEditBlock();
    int count = 0;
    for (QTextCursor hit = find(mEdit->document(), wanted, 0, false); !hit.isNull();
         hit = find(mEdit->document(), wanted, hit.position(), false)) {
        wanted.exactMatch(hit.selectedText());
        hit.insertText(replacement(wanted));
        ++count;
    }
    step.endEditBlock();
    mSays->setText(count == 0 ? tr("nothing found") : tr("%1 replaced").arg(count));
}

void FSearchDialog::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        hide();
    else if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        if (mWith->hasFocus())
            replaceOne();
        else
            repeat(event->modifiers() & Qt::ShiftModifier);
    else if (event->key() == Qt::Key_F3)
        repeat(event->modifiers() & Qt::ShiftModifier);
    else
        QWidget::keyPressEvent(event);
    event->accept();
}

void FSearchDialog::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous())
        Q_EMIT resetHighlighting();
}
