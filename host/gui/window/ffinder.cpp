// SPDX-License-Identifier: Apache-2.0
#include "ffinder.h"

#include "factions.h"
#include "ficons.h"
#include "flooks.h"
#include "fobjectmanager.h"
#include "fselectionset.h"
#include "ftheme.h"

#include <QApplication>
#include <QKeyEvent>
#include <QListWidget>
#include <QMenu>
#include <QPainter>
#include <QStyledItemDelegate>
#include <algorithm>

namespace {
constexpr size_t kShown = 60;

/// How well \p text fits what was typed: 0 not at all, less is better.
int fit(const QString &text, const QStringList &words)
{
    int sum = 0;
    for (const QString &word : words) {
        const int at = text.indexOf(word, 0, Qt::CaseInsensitive);
        if (at < 0)
            return 0;
        const bool beginsWord = at == 0 || !text[at - 1].isLetterOrNumber();
        sum += (at == 0 ? 1 : beginsWord ? 20 : 60) + qMin(at, 30);
    }
    return sum + qMin(text.size(), 60) / 4 + 1;
}

/// The name at the left, kind and shortcut muted at the right.
class Delegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const override
    {
        return QSize(200, option.fontMetrics.height() + FTheme::space(3));
    }
    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override
    {
        QStyledItemDelegate::paint(painter, option, index);
        painter->save();
        painter->setPen(FTheme::color("muted"));
        painter->setFont(option.font);
        painter->drawText(option.rect.adjusted(0, 0, -FTheme::space(3), 0),
                          Qt::AlignRight | Qt::AlignVCenter, index.data(Qt::UserRole).toString());
        painter->restore();
    }
};
} // namespace

FFinder::FFinder(QWidget *parent)
    : QLineEdit(parent)
    , mList(new QListWidget(parent ? parent->window() : nullptr))
{
    setObjectName(QStringLiteral("finder"));
    setAccessibleName(tr("Find anything"));
    setPlaceholderText(tr("Find anything   Ctrl+K"));
    setToolTip(tr("Any action, object or template by typing (Ctrl+K)"));
    addAction(FIcons::icon(QStringLiteral(":/find")), QLineEdit::LeadingPosition);
    setMinimumWidth(240);
    setMaximumWidth(300);
    setFocusPolicy(Qt::ClickFocus);
    mList->setObjectName(QStringLiteral("finderList"));
    mList->setAccessibleName(tr("What was found"));
    mList->setWindowFlags(Qt::ToolTip);
    mList->setFocusPolicy(Qt::NoFocus);
    mList->setItemDelegate(new Delegate(mList));
    mList->hide();
    mList->setMouseTracking(true);
    connect(mList, &QListWidget::itemClicked, this, &FFinder::choose);
    connect(this, &QLineEdit::textEdited, this, &FFinder::search);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget *, QWidget *now) {
        if (now != this)
            mList->hide();
    });
    window()->installEventFilter(this);
}

void FFinder::begin()
{
    setFocus(Qt::ShortcutFocusReason);
    selectAll();
    search();
}

void FFinder::focusInEvent(QFocusEvent *event)
{
    QLineEdit::focusInEvent(event);
    search();
}

bool FFinder::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Move || event->type() == QEvent::Resize)
        place();
    else if (event->type() == QEvent::WindowDeactivate)
        mList->hide();
    return QLineEdit::eventFilter(watched, event);
}

void FFinder::place()
{
    if (!mList->isVisible() && mHits.empty())
        return;
    const int width = qMax(this->width(), 460);
    const int rows = qBound(1, mList->count(), 12);
    const int height = rows * mList->sizeHintForRow(0) + 2 * mList->frameWidth() + 2;
    QPoint corner = mapToGlobal(QPoint(this->width() - width, this->height() + 4));
    mList->setGeometry(QRect(corner, QSize(width, qMax(height, 40))));
}

void FFinder::search()
{
    QStringList words = text().simplified().split(' ', Qt::SkipEmptyParts);
    std::vector<std::pair<int, Hit>> found;
    for (const FActionInfo &info : FActions::instance()->all()) {
        QAction *action = FActions::instance()->action(info.id);
        const QString name = QString(action->text()).remove('&');
        const int rank = words.isEmpty() ? 1000 : fit(name, words);
        if (rank == 0)
            continue;
        Hit hit{name,
                info.menu,
                info.icon,
                info.shortcut.toString(QKeySequence::NativeText),
                action->isEnabled(),
                [action] { action->trigger(); }};
        found.emplace_back(rank + (hit.isUsable ? 0 : 200), hit);
    }
    if (!words.isEmpty())
        for (const auto &object : FObjectManager::instance()->all()) {
            const FClassLook &look = FLooks::of(*object);
            if (look.isHidden)
                continue;
            const int rank = fit(FLooks::nameOf(*object), words);
            if (rank == 0)
                continue;
            std::weak_ptr<FObject> weak = object;
            found.emplace_back(
                rank, Hit{FLooks::nameOf(*object), look.noun, look.icon, QString(), true, [weak] {
                              const auto target = weak.lock();
                              if (!target || target->isDestroyed())
                                  return;
                              FSelectionSet::instance()->set({FExprBase(target)}, true);
                              const auto &open = FLooks::of(*target).open;
                              if (open)
                                  open(*target);
                          }});
        }
    std::stable_sort(found.begin(), found.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    if (found.size() > kShown)
        found.resize(kShown);
    mHits.clear();
    mList->clear();
    for (auto &one : found) {
        auto *item = new QListWidgetItem(FIcons::icon(one.second.icon), one.second.text, mList);
        item->setData(Qt::UserRole, one.second.hint.isEmpty()
                                        ? one.second.kind
                                        : one.second.kind + "   " + one.second.hint);
        if (!one.second.isUsable)
            item->setFlags(Qt::NoItemFlags);
        mHits.push_back(std::move(one.second));
    }
    if (mHits.empty()) {
        auto *item = new QListWidgetItem(tr("Nothing is called so."), mList);
        item->setFlags(Qt::NoItemFlags);
    } else {
        mList->setCurrentRow(0);
    }
    mList->show();
    place();
}

void FFinder::choose()
{
    const int row = mList->currentRow();
    mList->hide();
    if (row < 0 || size_t(row) >= mHits.size() || !mHits[size_t(row)].isUsable)
        return;
    const auto open = mHits[size_t(row)].open;
    clear();
    clearFocus();
    if (open)
        open();
}

void FFinder::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down: {
        const int step = event->key() == Qt::Key_Up ? -1 : 1;
        mList->setCurrentRow(qBound(0, mList->currentRow() + step, mList->count() - 1));
        return;
    }
    case Qt::Key_Return:
    case Qt::Key_Enter:
        choose();
        return;
    case Qt::Key_Escape:
        mList->hide();
        clear();
        clearFocus();
        return;
    default:
        QLineEdit::keyPressEvent(event);
    }
}
