// SPDX-License-Identifier: Apache-2.0
#include "fmodelpanel.h"

#include "factions.h"
#include "fcmdmanager.h"
#include "fdispatcher.h"
#include "ficons.h"
#include "fmodeltree.h"
#include "fruncontrol.h"
#include "fselectionset.h"
#include "ftheme.h"

#include <QGuiApplication>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QSortFilterProxyModel>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

namespace {
constexpr int kLeastWidth = 180;

/// Name at the left, value and state at the right.
class Delegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const override
    {
        return QSize(120, option.fontMetrics.height() + FTheme::space(2));
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &given,
               const QModelIndex &index) const override
    {
        QStyleOptionViewItem option = given;
        const QString icon = index.data(FModelTree::StateIconRole).toString();
        const QString detail = index.data(FModelTree::DetailRole).toString();
        int right = FTheme::space(2);
        const int side = 16;
        QRect row = option.rect;
        // The ground of the whole row first; the name then leaves room for what stands right of it.
        const QWidget *view = option.widget;
        view->style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, painter, view);
        if (!icon.isEmpty()) {
            const QRect place(row.right() - right - side + 1, row.center().y() - side / 2 + 1, side,
                              side);
            painter->drawPixmap(
                place.topLeft(),
                FIcons::pixmap(icon, place.size(), painter->device()->devicePixelRatioF()));
            right += side + FTheme::space(1);
        }
        if (!detail.isEmpty()) {
            const int width =
                qMin(option.fontMetrics.horizontalAdvance(detail) + 2, row.width() / 2);
            const QRect place(row.right() - right - width + 1, row.top(), width, row.height());
            painter->save();
            painter->setPen(FTheme::color("muted"));
            painter->setFont(option.font);
            painter->drawText(place, Qt::AlignVCenter | Qt::AlignRight,
                              option.fontMetrics.elidedText(detail, Qt::ElideRight, width));
            painter->restore();
            right += width + FTheme::space(2);
        }
        initStyleOption(&option, index);
        option.rect.setRight(row.right() - right);
        option.state &= ~QStyle::State_Selected; // the ground is there
        option.backgroundBrush = QBrush();
        view->style()->drawControl(QStyle::CE_ItemViewItem, &option, painter, view);
    }
};

/// Tells its panel of a context menu asked for by key as well.
class View : public QTreeView
{
public:
    using QTreeView::QTreeView;

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QTreeView::paintEvent(event);
        if (model() && model()->rowCount() > 0)
            return;
        QPainter painter(viewport());
        painter.setPen(FTheme::color("muted"));
        const int space = FTheme::space(4);
        painter.drawText(viewport()->rect().adjusted(space, space, -space, -space),
                         Qt::AlignTop | Qt::AlignLeft | Qt::TextWordWrap, emptyText);
    }

public:
    QString emptyText;
};
} // namespace

FModelPanel::FModelPanel(QWidget *parent)
    : QWidget(parent)
    , mTree(new FModelTree(this))
    , mFiltered(new QSortFilterProxyModel(this))
    , mFilter(new QLineEdit(this))
{
    mFiltered->setSourceModel(mTree);
    mFiltered->setRecursiveFilteringEnabled(true);
    mFiltered->setFilterCaseSensitivity(Qt::CaseInsensitive);
    auto *view = new View(this);
    view->emptyText = tr("Nothing here yet. Insert a parameter or a connector by the menu Insert.");
    mView = view;
    mView->setObjectName(QStringLiteral("modelTree"));
    mView->setAccessibleName(tr("Model"));
    mView->setModel(mFiltered);
    mView->setItemDelegate(new Delegate(mView));
    mView->setHeaderHidden(true);
    mView->setUniformRowHeights(true);
    mView->setIndentation(FTheme::space(4));
    mView->setSelectionMode(QAbstractItemView::ExtendedSelection);
    mView->setEditTriggers(QAbstractItemView::EditKeyPressed);
    mView->setDragEnabled(true);
    mView->setExpandsOnDoubleClick(false);
    mView->setFrameShape(QFrame::NoFrame);
    mView->setContextMenuPolicy(Qt::CustomContextMenu);
    mFilter->setObjectName(QStringLiteral("modelFilter"));
    mFilter->setAccessibleName(tr("Filter of the model"));
    mFilter->setPlaceholderText(tr("Filter"));
    mFilter->setClearButtonEnabled(true);
    mFilter->addAction(FIcons::icon(QStringLiteral(":/find")), QLineEdit::LeadingPosition);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto *above = new QHBoxLayout;
    above->setContentsMargins(FTheme::space(2), FTheme::space(2), FTheme::space(2),
                              FTheme::space(2));
    above->addWidget(mFilter);
    layout->addLayout(above);
    layout->addWidget(mView, 1);
    layout->addStretch();
    setMinimumWidth(kLeastWidth);

    // States of runs come and go without a change of the model.
    connect(FRunControl::instance(), &FRunControl::changed, mView->viewport(),
            qOverload<>(&QWidget::update));
    connect(mFilter, &QLineEdit::textChanged, this, [this](const QString &text) {
        mFiltered->setFilterFixedString(text);
        if (!text.isEmpty())
            mView->expandAll();
    });
    connect(mView->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &FModelPanel::tellSelection);
    connect(mView, &QTreeView::doubleClicked, this, &FModelPanel::openAt);
    connect(mView, &QTreeView::activated, this, [this](const QModelIndex &index) {
        if (QGuiApplication::mouseButtons() == Qt::NoButton)
            openAt(index);
    });
    connect(mView, &QTreeView::customContextMenuRequested, this, &FModelPanel::showMenu);
    connect(FChanges::instance(), &FChanges::selectionChanged, this, &FModelPanel::followSelection);
    // Headings stand open from the start, and so does what comes later.
    const auto open = [this](const QModelIndex &parent, int first, int last) {
        if (!parent.isValid())
            for (int row = first; row <= last; ++row)
                mView->expand(mFiltered->index(row, 0));
        else if (!parent.parent().isValid() && mFiltered->rowCount(parent) <= 1)
            mView->expand(parent);
    };
    connect(mFiltered, &QAbstractItemModel::rowsInserted, this, open);
    open({}, 0, mFiltered->rowCount() - 1);
}

std::vector<std::shared_ptr<FObject>> FModelPanel::selected() const
{
    std::vector<std::shared_ptr<FObject>> found;
    QModelIndexList rows = mView->selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end());
    for (const QModelIndex &row : rows)
        if (const auto object = mTree->objectAt(mFiltered->mapToSource(row)))
            found.push_back(object);
    return found;
}

QModelIndex FModelPanel::shownIndexOf(const FObject *object) const
{
    return mFiltered->mapFromSource(mTree->indexOf(object));
}

void FModelPanel::tellSelection()
{
    if (mTelling)
        return;
    mTelling = true;
    std::vector<FExprBase> objects;
    for (const auto &object : selected())
        objects.emplace_back(object);
    FSelectionSet::instance()->set(objects, true);
    mTelling = false;
}

void FModelPanel::followSelection()
{
    QItemSelection selection;
    QModelIndex first;
    for (const auto &object : FSelectionSet::instance()->getObjects()) {
        const QModelIndex index = shownIndexOf(object.getExpr().get());
        if (!index.isValid())
            continue;
        if (!first.isValid())
            first = index;
        selection.select(index, index);
    }
    mTelling = true; // what the tree marks is what is selected already
    mView->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    if (first.isValid() && !mView->selectionModel()->isSelected(mView->currentIndex())) {
        mView->selectionModel()->setCurrentIndex(first, QItemSelectionModel::NoUpdate);
        mView->scrollTo(first);
    }
    mTelling = false;
}

void FModelPanel::highlight(const std::vector<FExpr<FObject, true>> &objects)
{
    if (objects.empty())
        return;
    const QModelIndex index = shownIndexOf(objects.front().getExpr().get());
    if (index.isValid())
        mView->scrollTo(index);
}

void FModelPanel::editName()
{
    if (mView->currentIndex().isValid())
        mView->edit(mView->currentIndex());
}

void FModelPanel::setProjectOpen(bool open)
{
    mFilter->setVisible(open);
    mView->setVisible(open);
}

void FModelPanel::focusFilter()
{
    mFilter->setFocus(Qt::ShortcutFocusReason);
    mFilter->selectAll();
}

void FModelPanel::openAt(const QModelIndex &index)
{
    const auto object = mTree->objectAt(mFiltered->mapToSource(index));
    if (!object) {
        mView->setExpanded(index, !mView->isExpanded(index));
        return;
    }
    const auto managed = std::dynamic_pointer_cast<FManaged>(object);
    if (managed && managed->doubleClickedInTree())
        return;
    const auto &open = FLooks::of(*object).open;
    if (!open || !open(*object))
        mView->setExpanded(index, !mView->isExpanded(index));
}

void FModelPanel::showMenu(const QPoint &place)
{
    QMenu menu(this);
    const auto objects = selected();
    if (!objects.empty()) {
        // What the classes of all of them offer.
        std::vector<FCmdManager::Info> entries;
        for (const auto &info : FCmdManager::instance()->all())
            if (!info->menuEntry.empty() && info->receiver &&
                std::all_of(objects.begin(), objects.end(), [&](const auto &object) {
                    return object->classInfo().isA(*info->receiver) &&
                           !FCmdManager::instance()->isHidden(object->classInfo(), *info);
                }))
                entries.push_back(info);
        std::stable_sort(entries.begin(), entries.end(), [](const auto &a, const auto &b) {
            return a->menuPosition < b->menuPosition;
        });
        for (const auto &info : entries) {
            QAction *action = menu.addAction(FIcons::icon(Q(info->menuIcon)), Q(info->menuEntry));
            connect(action, &QAction::triggered, this, [objects, name = info->name] {
                std::vector<FExprBase> receivers(objects.begin(), objects.end());
                FDispatcher::execute(receivers, name);
            });
        }
        if (!entries.empty())
            menu.addSeparator();
    }
    for (const char *id : {"editRename", "editCopy", "editPaste", "editDelete"})
        if (QAction *action = FActions::instance()->action(QLatin1String(id)))
            menu.addAction(action);
    menu.exec(mView->viewport()->mapToGlobal(place));
}
