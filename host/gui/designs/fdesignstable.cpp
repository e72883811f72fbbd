// SPDX-License-Identifier: Apache-2.0
#include "fdesignstable.h"

#include "fdesignsmodel.h"
#include "ftheme.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QSortFilterProxyModel>
#include <QToolTip>

namespace {
bool isOwn(const QKeyEvent &key)
{
    return key.matches(QKeySequence::Copy) || key.matches(QKeySequence::Paste) ||
           key.matches(QKeySequence::Delete) || key.key() == Qt::Key_F2 ||
           (key.key() == Qt::Key_D && key.modifiers() == Qt::ControlModifier);
}

FDesignsModel *sourceOf(const QModelIndex &index, QModelIndex *source)
{
    const auto *shown = qobject_cast<const QSortFilterProxyModel *>(index.model());
    *source = shown ? shown->mapToSource(index) : index;
    return shown ? qobject_cast<FDesignsModel *>(shown->sourceModel()) : nullptr;
}
} // namespace

QWidget *FDesignsDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                        const QModelIndex &index) const
{
    auto *field = new QLineEdit(parent);
    field->setObjectName(QStringLiteral("designCell"));
    field->setFrame(false);
    field->setProperty("cell", true);
    field->setProperty("place", QPersistentModelIndex(index));
    QModelIndex source;
    const FDesignsModel *model = sourceOf(index, &source);
    if (model && model->kind(source.column()) != FDesignsModel::Name)
        field->setAlignment(Qt::AlignRight);
    return field;
}

bool FDesignsDelegate::accepts(QWidget *editor) const
{
    const QModelIndex index = editor->property("place").value<QPersistentModelIndex>();
    QModelIndex source;
    FDesignsModel *model = sourceOf(index, &source);
    if (!model || !source.isValid())
        return true;
    if (model->setData(source, static_cast<QLineEdit *>(editor)->text(), Qt::EditRole))
        return true;
    editor->setProperty("wrong", true);
    editor->style()->polish(editor);
    QToolTip::showText(editor->mapToGlobal(QPoint(0, editor->height())), model->reason(), editor);
    Q_EMIT refused(model->reason());
    return false;
}

void FDesignsDelegate::setModelData(QWidget *editor, QAbstractItemModel *,
                                    const QModelIndex &) const
{
    accepts(editor);
}

bool FDesignsDelegate::eventFilter(QObject *watched, QEvent *event)
{
    auto *editor = qobject_cast<QLineEdit *>(watched);
    if (editor && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if ((key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Tab ||
             key == Qt::Key_Backtab) &&
            !accepts(editor))
            return true; // stays, to be mended
    }
    return QStyledItemDelegate::eventFilter(watched, event);
}

FDesignsTable::FDesignsTable(QWidget *parent)
    : QTableView(parent)
{
    setObjectName(QStringLiteral("designsTable"));
    setAccessibleName(tr("Designs"));
    setFrameShape(QFrame::NoFrame);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(DoubleClicked | EditKeyPressed | AnyKeyPressed);
    setTabKeyNavigation(true);
    setHorizontalScrollMode(ScrollPerPixel);
    setWordWrap(false);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + FTheme::space(2) + 2);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setSectionsMovable(true);
    horizontalHeader()->setDefaultSectionSize(110);
    horizontalHeader()->setMinimumSectionSize(48);
    horizontalHeader()->setSortIndicator(-1, Qt::AscendingOrder);
}

bool FDesignsTable::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride && state() != EditingState &&
        isOwn(*static_cast<QKeyEvent *>(event))) {
        event->accept();
        return true;
    }
    return QTableView::event(event);
}

void FDesignsTable::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Copy))
        Q_EMIT copyRequested();
    else if (event->matches(QKeySequence::Paste))
        Q_EMIT pasteRequested();
    else if (event->matches(QKeySequence::Delete))
        Q_EMIT clearRequested();
    else if (event->key() == Qt::Key_D && event->modifiers() == Qt::ControlModifier)
        Q_EMIT duplicateRequested();
    else
        QTableView::keyPressEvent(event);
}

void FDesignsTable::paintEvent(QPaintEvent *event)
{
    QTableView::paintEvent(event);
    if (!model() || model()->rowCount() > 1)
        return;
    QPainter painter(viewport());
    painter.setPen(FTheme::color("muted"));
    const int top = rowViewportPosition(0) + rowHeight(0);
    painter.drawText(viewport()->rect().adjusted(FTheme::space(3), qMax(0, top) + FTheme::space(4),
                                                 -FTheme::space(3), 0),
                     Qt::AlignTop | Qt::AlignLeft | Qt::TextWordWrap,
                     tr("Each design gives variables other values. Press New, or paste rows from a "
                        "spreadsheet."));
}
