// SPDX-License-Identifier: Apache-2.0
#include "fsoftconchainpage.h"

#include "fchanges.h"
#include "fgenintcomputation.h"
#include "ficons.h"
#include "fini.h"
#include "flogmsg.h"
#include "fruncontrol.h"
#include "fsafefile.h"
#include "fselectionset.h"
#include "fsoftconlooks.h"
#include "ftheme.h"

#include <QAccessible>
#include <QFileDialog>
#include <QFileInfo>
#include <QGraphicsItem>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QStyleOptionGraphicsItem>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <QtMath>

namespace {
const char *const kFolder = "Chain/pictureFolder";
constexpr int kWidest = 240, kPad = 12, kSoonMilliseconds = 100;
constexpr double kSmallest = 0.1, kLargest = 4;

struct Look
{
    const char *role, *icon;
};

Look lookOf(FStudy::State state)
{
    switch (state) {
    case FStudy::Running:
        return {"accent", ":/stateRunning"};
    case FStudy::UpToDate:
        return {"good", ":/stateFinished"};
    case FStudy::Earlier:
        return {"muted", ":/stateFinished"};
    case FStudy::Stale:
        return {"warning", ":/stateStale"};
    case FStudy::Failed:
        return {"bad", ":/stateFailed"};
    case FStudy::NotRun:
        break;
    }
    return {"muted", ""};
}

QString stateWord(FStudy::State state)
{
    return FSoftConChainPage::tr(FGenIntGraph::stateText(state));
}

QFont boldFont(QFont font)
{
    font.setBold(true);
    return font;
}

int linesOf(const FGenIntGraph::Node &node)
{
    return 1 + !node.detail.empty() + (node.kind == FGenIntGraph::Computation);
}

QString toolTipOf(const FGenIntGraph::Node &node)
{
    QStringList lines{Q(node.label)};
    if (!node.detail.empty())
        lines << Q(node.detail);
    if (node.kind == FGenIntGraph::File)
        lines << FSoftConChainPage::tr("a file that %1 leaves").arg(Q(node.computation->getName()));
    if (node.kind == FGenIntGraph::Value)
        lines << FSoftConChainPage::tr("a value of %1").arg(Q(node.computation->getName()));
    if (node.kind == FGenIntGraph::Computation)
        lines << (node.reason.empty() ? stateWord(node.state) : Q(node.reason));
    return lines.join('\n');
}

class Box : public QGraphicsItem
{
public:
    enum { Type = UserType + 77 };
    Box(const FGenIntGraph::Node &node, int index, const FSoftConChainPage *page)
        : mNode(node)
        , mIndex(index)
        , mPage(page)
    {
        setPos(node.x, node.y);
        setToolTip(toolTipOf(node));
        setZValue(1);
    }
    int type() const override { return Type; }
    int index() const { return mIndex; }
    QRectF boundingRect() const override
    {
        return QRectF(0, 0, mNode.width, mNode.height).adjusted(-2, -2, 2, 2);
    }
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    const FGenIntGraph::Node mNode;
    int mIndex;
    const FSoftConChainPage *mPage;
};

void Box::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    const bool isComputation = mNode.kind == FGenIntGraph::Computation;
    const bool isSelected = mNode.object && mNode.object->isSelected();
    const bool isCurrent = mPage->current() == mIndex && mPage->view()->hasFocus();
    const Look look = lookOf(mNode.state);
    const char *role = isCurrent || isSelected ? "accent" : isComputation ? look.role : "line";
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(FTheme::color(role), isCurrent ? 2.5 : isComputation ? 2 : 1.2));
    painter->setBrush(FTheme::color(
        isSelected                                                              ? "selection"
        : mNode.kind == FGenIntGraph::File || mNode.kind == FGenIntGraph::Value ? "alternate"
                                                                                : "base"));
    const QRectF card(0.5, 0.5, mNode.width - 1, mNode.height - 1);
    const double radius = mNode.kind == FGenIntGraph::Parameter ? card.height() / 2 : 6;
    painter->drawRoundedRect(card, radius, radius);
    const double room = card.width() - 2 * kPad;
    double y = kPad / 2.0;
    const auto line = [&](const QFont &font, const char *textRole, const QString &text,
                          const char *icon = "") {
        const QFontMetricsF metrics(font);
        painter->setFont(font);
        painter->setPen(FTheme::color(textRole));
        const double height = metrics.height();
        const double left = *icon ? height : 0;
        const QString shown = metrics.elidedText(text, Qt::ElideMiddle, room - left);
        const double width = metrics.horizontalAdvance(shown) + left;
        const double x = card.left() + (card.width() - width) / 2;
        if (*icon) {
            const int size = int(height) - 4;
            painter->drawPixmap(QPointF(x, y + 2),
                                FIcons::pixmap(QLatin1String(icon), QSize(size, size), textRole));
        }
        painter->drawText(QRectF(x + left, y, width, height), Qt::AlignLeft | Qt::AlignVCenter,
                          shown);
        y += height + 2;
    };
    const QFont font = mPage->font();
    line(boldFont(font), "text", Q(mNode.label));
    if (!mNode.detail.empty())
        line(font, "muted", Q(mNode.detail));
    if (isComputation)
        line(font, look.role, stateWord(mNode.state), look.icon);
}

/// A curve from box to box with a head of an arrow.
QPainterPath curve(const FGenIntGraph::Node &from, const FGenIntGraph::Node &to, QPainterPath *head)
{
    const QPointF start(from.x + from.width, from.y + from.height / 2);
    const QPointF end(to.x - 1, to.y + to.height / 2);
    const QPointF bend(qMax(28.0, qAbs(end.x() - start.x()) / 2), 0);
    QPainterPath path(start);
    path.cubicTo(start + bend, end - bend, end - QPointF(6, 0));
    head->moveTo(end);
    head->lineTo(end + QPointF(-8, -4));
    head->lineTo(end + QPointF(-8, 4));
    head->closeSubpath();
    return path;
}

FGenIntGraph graphOfProject()
{
    const FRunControl *runs = FRunControl::instance();
    return FGenIntGraph::ofProject(
        [runs](const std::string &computation, const std::string &design) {
            return runs->lastRun(computation, design);
        });
}

int indexAt(const QGraphicsView *view, const QPoint &place)
{
    const auto *box = qgraphicsitem_cast<Box *>(view->itemAt(place));
    return box ? box->index() : -1;
}
} // namespace

FSoftConChainPage::FSoftConChainPage(QWidget *parent)
    : QWidget(parent)
    , mView(new QGraphicsView(this))
    , mEmpty(new QLabel(tr("Nothing is coupled yet: insert a connector, or drop a file of a "
                           "program on the window."),
                        this))
{
    auto *tools = new QHBoxLayout;
    tools->setContentsMargins(FTheme::space(3), FTheme::space(2), FTheme::space(3),
                              FTheme::space(2));
    const auto add = [&](const char *name, const char *icon, const QString &text,
                         const QString &tip, auto run) {
        auto *button = new QToolButton(this);
        button->setObjectName(QLatin1String(name));
        button->setText(text);
        button->setToolTip(tip);
        button->setAutoRaise(true);
        button->setFocusPolicy(Qt::TabFocus);
        if (*icon) {
            button->setIcon(FIcons::icon(QLatin1String(icon)));
            button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        }
        connect(button, &QToolButton::clicked, this, run);
        tools->addWidget(button);
    };
    add(
        "fitChain", "", tr("Fit"), tr("Show the whole picture (Ctrl+0)"), [this] { fit(); });
    add("exportChain", ":/export", tr("Export as SVG\u2026"),
        tr("Write the picture to a file, in light colours"), [this] { exportPicture(); });
    tools->addStretch();
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(tools);
    layout->addWidget(mView, 1);
    mEmpty->setObjectName(QStringLiteral("muted"));
    mEmpty->setAlignment(Qt::AlignCenter);
    mEmpty->setWordWrap(true);
    layout->addWidget(mEmpty, 1);
    mView->setScene(new QGraphicsScene(mView));
    mView->setFrameShape(QFrame::NoFrame);
    mView->setRenderHint(QPainter::Antialiasing);
    mView->setTransformationAnchor(QGraphicsView::AnchorUnderMouse);
    mView->setAccessibleName(tr("Picture of the chain"));
    mView->installEventFilter(this);
    mView->viewport()->installEventFilter(this);
    setFocusProxy(mView);

    mSoon.setSingleShot(true);
    mSoon.setInterval(kSoonMilliseconds);
    connect(&mSoon, &QTimer::timeout, this, &FSoftConChainPage::rebuild);
    FChanges *changes = FChanges::instance();
    connect(changes, &FChanges::changed, this, &FSoftConChainPage::changedSoon);
    connect(changes, &FChanges::designChanged, this, &FSoftConChainPage::changedSoon);
    connect(changes, &FChanges::selectionChanged, this, &FSoftConChainPage::followSelection);
    connect(changes, &FChanges::projectChanged, this, [this](unsigned events) {
        mIsFitted = mIsFitted && !(events & FChanges::Opened);
        changedSoon();
    });
    connect(changes, &FChanges::projectClosing, this, [this] {
        mView->scene()->clear();
        mGraph = FGenIntGraph();
        mCurrent = -1;
        mIsStale = true;
    });
    connect(FTheme::instance(), &FTheme::changed, this, &FSoftConChainPage::changedSoon);
    connect(FRunControl::instance(), &FRunControl::changed, this, &FSoftConChainPage::changedSoon);
}

void FSoftConChainPage::show(QTabWidget *documents)
{
    FSoftConChainPage *page = nullptr;
    for (int i = 0; i < documents->count() && !page; ++i)
        page = qobject_cast<FSoftConChainPage *>(documents->widget(i));
    if (!page) {
        page = new FSoftConChainPage;
        documents->addTab(page, FIcons::icon(QStringLiteral(":/connector")), tr("Chain"));
        connect(FChanges::instance(), &FChanges::projectClosing, page, [page, documents] {
            documents->removeTab(documents->indexOf(page));
            page->deleteLater();
        });
    }
    documents->setCurrentWidget(page);
    page->setFocus();
}

void FSoftConChainPage::changedSoon()
{
    mIsStale = true;
    if (isVisible() && !mSoon.isActive())
        mSoon.start();
}

void FSoftConChainPage::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (mIsStale)
        rebuild();
}

void FSoftConChainPage::rebuild()
{
    if (!isVisible())
        return;
    mIsStale = false;
    const std::string current = mCurrent >= 0 ? mGraph.nodes()[size_t(mCurrent)].id : std::string();
    mGraph = graphOfProject();
    const QFontMetricsF bold(boldFont(font())), plain(font());
    mGraph.layOut([&](const FGenIntGraph::Node &node) {
        double width = bold.horizontalAdvance(Q(node.label));
        width = qMax(width, plain.horizontalAdvance(Q(node.detail)));
        if (node.kind == FGenIntGraph::Computation)
            width = qMax(width, plain.horizontalAdvance(stateWord(node.state)) + plain.height());
        return FGenIntGraph::Size{qBound(64.0, width, double(kWidest)) + 2 * kPad + 2,
                                  linesOf(node) * (bold.height() + 2) + kPad};
    });
    QGraphicsScene *scene = mView->scene();
    scene->clear();
    scene->setBackgroundBrush(FTheme::color("base"));
    mCurrent = -1;
    for (const FGenIntGraph::Edge &edge : mGraph.edges()) {
        QPainterPath head;
        const QPainterPath path = curve(mGraph.nodes()[edge.from], mGraph.nodes()[edge.to], &head);
        const QColor colour = FTheme::color("muted");
        auto *line = scene->addPath(path, QPen(colour, 1.2));
        line->setToolTip(Q(edge.label));
        scene->addPath(head, Qt::NoPen, colour);
    }
    for (size_t i = 0; i < mGraph.nodes().size(); ++i) {
        scene->addItem(new Box(mGraph.nodes()[i], int(i), this));
        if (mGraph.nodes()[i].id == current)
            mCurrent = int(i);
    }
    const FGenIntGraph::Size size = mGraph.size();
    scene->setSceneRect(0, 0, size.width, size.height);
    const bool isEmpty = mGraph.nodes().empty();
    mEmpty->setVisible(isEmpty);
    mView->setVisible(!isEmpty);
    if (!isEmpty && !std::exchange(mIsFitted, true))
        QTimer::singleShot(0, this, &FSoftConChainPage::fit);
    followSelection();
}

void FSoftConChainPage::followSelection()
{
    const auto &nodes = mGraph.nodes();
    const bool known = mCurrent >= 0 && nodes[size_t(mCurrent)].object &&
                       nodes[size_t(mCurrent)].object->isSelected();
    for (size_t i = 0; i < nodes.size() && !known; ++i)
        if (nodes[i].object && nodes[i].object->isSelected()) {
            mCurrent = int(i);
            break;
        }
    mView->viewport()->update();
}

void FSoftConChainPage::setCurrent(int index)
{
    if (index < 0 || index >= int(mGraph.nodes().size()))
        return;
    mCurrent = index;
    const FGenIntGraph::Node &node = mGraph.nodes()[size_t(index)];
    mView->ensureVisible(QRectF(node.x, node.y, node.width, node.height), 24, 24);
    mView->setAccessibleDescription(toolTipOf(node));
    QAccessibleEvent event(mView, QAccessible::DescriptionChanged);
    QAccessible::updateAccessibility(&event);
    if (node.object)
        FSelectionSet::instance()->set({FExprBase(node.object)}, true);
    mView->viewport()->update();
}

void FSoftConChainPage::open(int index)
{
    if (index < 0 || index >= int(mGraph.nodes().size()))
        return;
    setCurrent(index);
    const FGenIntGraph::Node node = mGraph.nodes()[size_t(index)]; // the model may change
    if (node.kind == FGenIntGraph::Computation)
        node.computation->openSoftwareConnector();
    else if (node.kind != FGenIntGraph::Parameter && node.object)
        FSoftConLooks::openFile(*node.computation, *node.object);
}

QPoint FSoftConChainPage::placeOf(const std::string &id) const
{
    for (const FGenIntGraph::Node &node : mGraph.nodes())
        if (node.id == id)
            return mView->mapFromScene(QPointF(node.x + node.width / 2, node.y + node.height / 2));
    return QPoint(-1, -1);
}

int FSoftConChainPage::neighbour(int key) const
{
    const auto &nodes = mGraph.nodes();
    if (mCurrent < 0)
        return nodes.empty() ? -1 : 0;
    const auto middle = [](const FGenIntGraph::Node &node) {
        return QPointF(node.x + node.width / 2, node.y + node.height / 2);
    };
    const QPointF here = middle(nodes[size_t(mCurrent)]);
    int best = -1;
    double least = 0;
    for (size_t i = 0; i < nodes.size(); ++i) {
        const QPointF way = middle(nodes[i]) - here;
        const double along = key == Qt::Key_Left    ? -way.x()
                             : key == Qt::Key_Right ? way.x()
                             : key == Qt::Key_Up    ? -way.y()
                                                    : way.y();
        const bool isSideways = key == Qt::Key_Left || key == Qt::Key_Right;
        const double beside = qAbs(isSideways ? way.y() : way.x());
        const bool isInLayer = nodes[i].layer == nodes[size_t(mCurrent)].layer;
        if (along < 1 || isSideways == isInLayer)
            continue;
        const double distance = along + 2 * beside;
        if (best < 0 || distance < least) {
            best = int(i);
            least = distance;
        }
    }
    return best;
}

void FSoftConChainPage::fit()
{
    mView->resetTransform();
    const QRectF rect = mView->sceneRect();
    const QSize room = mView->viewport()->size();
    if (rect.isEmpty() || room.isEmpty())
        return;
    const double scale = qMin(room.width() / rect.width(), room.height() / rect.height());
    mView->scale(qBound(kSmallest, scale, 1.0), qBound(kSmallest, scale, 1.0));
}

void FSoftConChainPage::zoom(double factor)
{
    const double now = mView->transform().m11();
    const double scale = qBound(kSmallest, now * factor, kLargest) / now;
    mView->scale(scale, scale);
}

bool FSoftConChainPage::keyPressed(int key, Qt::KeyboardModifiers modifiers)
{
    if (modifiers & Qt::ControlModifier) {
        if (key == Qt::Key_0)
            fit();
        else if (key == Qt::Key_Plus || key == Qt::Key_Equal)
            zoom(1.25);
        else if (key == Qt::Key_Minus)
            zoom(0.8);
        else
            return false;
        return true;
    }
    if (key == Qt::Key_Return || key == Qt::Key_Enter)
        open(mCurrent);
    else if (key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Up ||
             key == Qt::Key_Down)
        setCurrent(neighbour(key));
    else
        return false;
    return true;
}

bool FSoftConChainPage::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == mView && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        return keyPressed(key->key(), key->modifiers());
    }
    if (watched != mView->viewport())
        return QWidget::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        setCurrent(indexAt(mView, static_cast<QMouseEvent *>(event)->pos()));
        mView->setFocus();
        return false;
    case QEvent::MouseButtonDblClick: {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        if (mouse->button() == Qt::LeftButton)
            open(indexAt(mView, mouse->pos()));
        return true;
    }
    case QEvent::ContextMenu: {
        const auto *wanted = static_cast<QContextMenuEvent *>(event);
        const int index = indexAt(mView, wanted->pos());
        QMenu menu;
        QAction *opens = menu.addAction(tr("Open"), this, [this, index] { open(index); });
        opens->setEnabled(index >= 0);
        menu.addAction(tr("Fit"), this, &FSoftConChainPage::fit);
        menu.addAction(FIcons::icon(QStringLiteral(":/export")), tr("Export as SVG\u2026"), this,
                       &FSoftConChainPage::exportPicture);
        menu.exec(wanted->globalPos());
        return true;
    }
    case QEvent::Wheel: {
        const auto *wheel = static_cast<QWheelEvent *>(event);
        if (!(wheel->modifiers() & Qt::ControlModifier))
            return false;
        zoom(qPow(1.0015, wheel->angleDelta().y()));
        return true;
    }
    default:
        return false;
    }
}

void FSoftConChainPage::exportPicture()
{
    const QString folder = FIni().value(QLatin1String(kFolder)).toString();
    QString path = QFileDialog::getSaveFileName(this, tr("Export the picture"),
                                                folder + "/chain.svg", tr("Pictures (*.svg)"));
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += ".svg";
    FIni().setValue(QLatin1String(kFolder), QFileInfo(path).absolutePath());
    exportTo(path);
}

bool FSoftConChainPage::exportTo(const QString &path)
{
    QString why;
    if (FSafeFile::write(path, graphOfProject().toSvg(), &why)) {
        FLogMsg::info("Chain", S(tr("Exported to %1").arg(path)), std::string(), nullptr);
        return true;
    }
    FLogMsg::error("Chain", S(tr("Could not export to %1").arg(path)), S(why), nullptr);
    return false;
}
