// SPDX-License-Identifier: Apache-2.0
#include "fsoftconcomputationitem.h"

#include "fchanges.h"
#include "fdesign.h"
#include "fgenintcomputation.h"
#include "ficons.h"
#include "fruncontrol.h"
#include "fsoftconlayout.h"
#include "fsoftconscene.h"
#include "ftheme.h"

#include <QGraphicsSceneContextMenuEvent>
#include <QMenu>
#include <QPainter>

namespace {
constexpr int kWidth = 252, kHeight = 60; // the title bars meet the lower half of it
constexpr int kClockMilliseconds = 500;
constexpr int kIcon = 24, kStateIcon = 14;

struct Look
{
    const char *icon, *role;
};
Look lookOf(FSoftConComputationItem::State::Kind kind)
{
    using State = FSoftConComputationItem::State;
    switch (kind) {
    case State::Waiting:
        return {":/stateWaiting", "muted"};
    case State::Running:
        return {":/stateRunning", "accent"};
    case State::Finished:
        return {":/stateFinished", "good"};
    case State::Stale:
        return {":/stateStale", "warning"};
    case State::Failed:
        return {":/stateFailed", "bad"};
    default:
        return {nullptr, "muted"};
    }
}
} // namespace

FSoftConComputationItem::FSoftConComputationItem(FSoftConScene *scene, QGraphicsItem *parent,
                                                 const FExpr<FObject> &object)
    : FSoftConObjectItem(scene, parent, object, SoftConComputation,
                         QStringLiteral(":/computationImage"))
{
    setPixmapSize(QSize(kWidth, kHeight));
    mLabel->setVisible(false); // the card paints the name
    mClock.setInterval(kClockMilliseconds);
    connect(&mClock, &QTimer::timeout, this, &FSoftConComputationItem::refresh);
    connect(FRunControl::instance(), &FRunControl::changed, this,
            &FSoftConComputationItem::refresh);
    connect(FChanges::instance(), &FChanges::designChanged, this,
            &FSoftConComputationItem::refresh);
}

void FSoftConComputationItem::init()
{
    if (connectorScene())
        connectorScene()->setComputationItemSize(QSizeF(kWidth, kHeight));
    refresh();
}

std::shared_ptr<FExternComputation> FSoftConComputationItem::computation() const
{
    return getItemObject().ptr<FExternComputation>();
}

QRectF FSoftConComputationItem::boundingRect() const { return {0, 0, kWidth, kHeight}; }

FSoftConComputationItem::State FSoftConComputationItem::state() const
{
    State state;
    const auto own = computation();
    const auto design = FDesign::chosen();
    if (!own || !design)
        return state;
    state.design = Q(design->getName());
    for (const FRunQueue::Item &item : FRunQueue::background()->items()) {
        if (item.computation != own->getName() || item.design != design->getName())
            continue;
        state.kind = item.isRunning ? State::Running : State::Waiting;
        const qint64 seconds = item.since.secsTo(QDateTime::currentDateTimeUtc());
        state.text = item.isRunning ? tr("running for %1 s").arg(qMax<qint64>(0, seconds))
                                    : tr("waits for its turn");
        return state;
    }
    const FRunRecord *last = FRunControl::instance()->lastRun(own->getName(), design->getName());
    if (own->isRunningFor(design.get())) {
        state.kind = State::Running;
        state.text = tr("running");
    } else if (last && !last->succeeded()) {
        state.kind = State::Failed;
        state.reason = Q(last->reason);
        state.text = Q(last->reason).section('\n', 0, 0);
    } else if (own->getApplication().empty()) {
        state.text = tr("no program yet");
    } else if (own->isUpToDateFor(design)) {
        state.kind = State::Finished;
        state.text = last ? tr("finished in %1 s").arg(QString::number(last->seconds, 'f', 1))
                          : tr("finished");
    } else if (own->hasRunFor(design.get())) {
        state.kind = State::Stale;
        state.text = tr("out of date, run again");
    } else {
        state.text = tr("not run yet");
    }
    return state;
}

QString FSoftConComputationItem::getToolTip() const
{
    const auto own = computation();
    if (!own)
        return QString();
    QStringList lines{Q(own->getName())};
    if (!own->getApplication().empty())
        lines << Q(own->getApplication() + " " + own->getArguments()).trimmed();
    else
        lines << tr("No program yet: give its Application in Properties.");
    const State now = state();
    lines << tr("Design %1: %2").arg(now.design, now.reason.isEmpty() ? now.text : now.reason);
    return lines.join('\n');
}

void FSoftConComputationItem::refresh()
{
    mState = state();
    const bool isUnderWay = mState.kind == State::Running || mState.kind == State::Waiting;
    if (isUnderWay != mClock.isActive())
        isUnderWay ? mClock.start() : mClock.stop();
    update();
}

void FSoftConComputationItem::updateItem() const
{
    if (const auto own = computation())
        setIconName(Q(own->getName()));
    updateIcon();
    const_cast<FSoftConComputationItem *>(this)->refresh();
}

void FSoftConComputationItem::updateIcon() const
{
    showPixmap(FIcons::pixmap(QStringLiteral(":/computationImage"), QSize(kWidth, kHeight)));
    const_cast<FSoftConComputationItem *>(this)->update();
}

void FSoftConComputationItem::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    painter->setRenderHint(QPainter::Antialiasing);
    const QRectF card = boundingRect().adjusted(1, 1, -1, -1);
    painter->setPen(
        QPen(FTheme::color(isSelected() || hasFocus() ? "accent" : "line"), hasFocus() ? 2 : 1.5));
    painter->setBrush(FTheme::color(isSelected() ? "selection" : "base"));
    painter->drawRoundedRect(card, 8, 8);

    const int left = FTheme::space(3), textLeft = left + kIcon + FTheme::space(3);
    painter->drawPixmap(left, (kHeight - kIcon) / 2,
                        FIcons::pixmap(QStringLiteral(":/computation"), QSize(kIcon, kIcon)));
    QFont font = painter->font();
    font.setBold(true);
    painter->setFont(font);
    painter->setPen(FTheme::color("text"));
    const int room = kWidth - textLeft - FTheme::space(3);
    const QRect nameLine(textLeft, FTheme::space(2), room, 22);
    painter->drawText(nameLine, Qt::AlignLeft | Qt::AlignVCenter,
                      QFontMetrics(font).elidedText(getIconName(), Qt::ElideMiddle, room));
    font.setBold(false);
    painter->setFont(font);
    const Look look = lookOf(mState.kind);
    int x = textLeft;
    if (look.icon) {
        painter->drawPixmap(
            x, 36,
            FIcons::pixmap(QLatin1String(look.icon), QSize(kStateIcon, kStateIcon), look.role));
        x += kStateIcon + FTheme::space(1);
    }
    painter->setPen(FTheme::color(look.role));
    const int left2 = textLeft + room - x;
    painter->drawText(QRect(x, 32, left2, 22), Qt::AlignLeft | Qt::AlignVCenter,
                      QFontMetrics(font).elidedText(mState.text, Qt::ElideRight, left2));
}

void FSoftConComputationItem::contextMenuEvent(QGraphicsSceneContextMenuEvent *event)
{
    FSoftConScene *scene = connectorScene();
    const auto own = computation();
    if (!scene || !own)
        return;
    QMenu menu;
    menu.setObjectName(QStringLiteral("computationMenu"));
    menu.setToolTipsVisible(true);
    const auto add = [&menu](const char *icon, const QString &text) {
        return menu.addAction(FIcons::icon(QLatin1String(icon)), text);
    };
    connect(add(":/start", tr("Run")), &QAction::triggered, scene, &FSoftConScene::runComputation);
    QAction *read = add(":/reread", tr("Read existing result files"));
    read->setEnabled(own->canReread());
    connect(read, &QAction::triggered, scene, &FSoftConScene::readResults);
    connect(add(":/configPreview", tr("Show preview of input files")), &QAction::triggered, scene,
            &FSoftConScene::showOutputFilesPreview);
    connect(add(":/filesaveas", tr("Export software connector to file")), &QAction::triggered,
            scene, &FSoftConScene::exportIntegration);
    menu.exec(event->screenPos());
    event->accept();
}

bool FSoftConComputationItem::sceneEventFilter(QGraphicsItem *watched, QEvent *event)
{
    if (event->type() == QEvent::GraphicsSceneContextMenu) {
        contextMenuEvent(static_cast<QGraphicsSceneContextMenuEvent *>(event));
        return true;
    }
    return FSoftConObjectItem::sceneEventFilter(watched, event);
}
