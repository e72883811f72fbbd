// SPDX-License-Identifier: Apache-2.0
#include "fpaneltable.h"

#include "ftheme.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>

FPanelTable::FPanelTable(QWidget *parent, QString emptyText)
    : QTableView(parent)
    , mEmptyText(std::move(emptyText))
{
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setEditTriggers(NoEditTriggers);
    setShowGrid(false);
    setWordWrap(false);
    setTabKeyNavigation(false);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollMode(ScrollPerPixel);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + FTheme::space(2));
    horizontalHeader()->setStretchLastSection(true);
    horizontalHeader()->setHighlightSections(false);
    horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    connect(this, &QTableView::doubleClicked, this, &FPanelTable::opened);
}

void FPanelTable::setEmptyText(const QString &text)
{
    mEmptyText = text;
    viewport()->update();
}

void FPanelTable::paintEvent(QPaintEvent *event)
{
    QTableView::paintEvent(event);
    if (model() && model()->rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(FTheme::color("muted"));
    const int space = FTheme::space(3);
    painter.drawText(viewport()->rect().adjusted(space, space, -space, -space),
                     Qt::AlignTop | Qt::AlignLeft | Qt::TextWordWrap, mEmptyText);
}

bool FPanelTable::event(QEvent *event)
{
    // Copying means these rows while the table has the focus.
    if (event->type() == QEvent::ShortcutOverride &&
        static_cast<QKeyEvent *>(event)->matches(QKeySequence::Copy)) {
        event->accept();
        return true;
    }
    return QTableView::event(event);
}

void FPanelTable::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Copy)) {
        Q_EMIT copyRequested();
        return;
    }
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
        currentIndex().isValid()) {
        Q_EMIT opened(currentIndex());
        return;
    }
    QTableView::keyPressEvent(event);
}
