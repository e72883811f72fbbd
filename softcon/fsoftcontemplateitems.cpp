// SPDX-License-Identifier: Apache-2.0
#include "fsoftcontemplateitems.h"

#include "fconfigurationgenint.h"
#include "fdefinitiongenint.h"
#include "fgenintcommandfile.h"
#include "fgenintcomputation.h"
#include "fgenintresultsfile.h"
#include "fhistory.h"
#include "ficons.h"
#include "fmanaged.h"
#include "fsoftconlayout.h"
#include "fsoftconscene.h"
#include "fsoftwareconnector.h"
#include "ftheme.h"
#include "ftoolbutton.h"

#include <QFileInfo>
#include <QPainter>

namespace {
constexpr int kMargin = 20, kEdge = 2;    // pixels of the miniature, before it is halved
constexpr int kLines = 60, kColumns = 90; // more of a text isn't seen on it

/// The part of a text that a miniature can show.
QString visiblePart(const QString &text)
{
    QString part;
    int at = 0;
    for (int line = 0; line < kLines && at < text.size(); ++line) {
        int end = text.indexOf('\n', at);
        if (end < 0)
            end = text.size();
        part += text.midRef(at, qMin(end - at, kColumns));
        part += '\n';
        at = end + 1;
    }
    return part;
}
} // namespace

FSoftConTemplateItem::FSoftConTemplateItem(FSoftConScene *scene, QGraphicsItem *parent,
                                           const FExpr<FObject> &object, SoftConArea area)
    : FSoftConObjectItem(scene, parent, object, area, QStringLiteral(":/softConTemplate_Medium"))
{
}

std::shared_ptr<FGenIntFile> FSoftConTemplateItem::file() const
{
    const auto object = getItemObject().ptr<FGenIntFile>();
    return object && !object->isNull() ? object : nullptr;
}

QString FSoftConTemplateItem::getToolTip() const
{
    const auto own = file();
    return own ? own->getFileName() : QString();
}

bool FSoftConTemplateItem::getIconContent(QString &content) const
{
    const auto own = file();
    if (!mIconNeedsRedraw || !own)
        return false;
    mIconNeedsRedraw = false;
    content = own->text();
    return true;
}

void FSoftConTemplateItem::updateIcon() const
{
    FSoftConLayout *own = layout();
    if (!own)
        return;
    if (own->getIconSizeStr() == FSoftwareConnector::smIconSize_Smallest) {
        const int height = FToolButton::getIconSize() + 5;
        showPixmap(FIcons::pixmap(":/softConTemplate_" + FSoftwareConnector::smIconSize_Smallest,
                                  QSize(height, height)));
        FSoftConObjectItem::updateIcon();
        return;
    }
    QString text;
    if (getIconContent(text)) {
        const int w = own->getPixmapWidth(), h = own->getPixmapHeight();
        const qreal ratio = pixelRatio();
        QPixmap large(QSize(2 * w, 2 * h) * ratio);
        large.setDevicePixelRatio(ratio);
        large.fill(Qt::transparent);
        QPainter painter(&large);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setRenderHint(QPainter::TextAntialiasing);
        painter.fillPath(getIconPath(QSize(2 * w - 2, 2 * h - 2), nullptr), FTheme::color("page"));
        painter.setPen(FTheme::color("page-text"));
        painter.drawText(QRect(kMargin, kMargin, 2 * w - 2 * kMargin, 2 * h - 2 * kMargin),
                         Qt::AlignLeft | Qt::AlignTop, visiblePart(text));
        painter.end();
        QPixmap picture =
            large.scaled(QSize(w, h) * ratio, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        picture.setDevicePixelRatio(ratio);
        painter.begin(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        QPolygonF fold;
        const QPainterPath outline = getIconPath(QSize(w, h), &fold);
        const QColor edge = FTheme::color("template-edge");
        painter.setPen(QPen(edge, kEdge));
        painter.drawPath(outline);
        painter.setBrush(edge);
        painter.drawPolygon(fold);
        painter.end();
        showPixmap(picture);
    }
    mIsPainting = true; // what is painted now is no reason to paint again
    FSoftConObjectItem::updateIcon();
    mIsPainting = false;
}

void FSoftConTemplateItem::updateItem() const
{
    const auto own = file();
    if (!own)
        return;
    setIconName(own->getFileName());
    updateIcon();
    if (connectorScene())
        connectorScene()->setTabName(FExpr<FGenIntFile>(own));
}

void FSoftConTemplateItem::prepareToBeDestroyed()
{
    if (const auto own = file())
        FManaged::destroy(own, true);
}

void FSoftConTemplateItem::addTemplateObject(const FExpr<FGenIntFile> &file) const
{
    const auto computation = genIntComputation();
    const auto configuration = computation ? computation->getConfiguration().getPtr() : nullptr;
    const auto definition =
        configuration ? configuration->getDefinition().ptr<FDefinitionGenInt>() : nullptr;
    if (!definition || !connectorScene())
        return;
    definition->addFile(file);
    Q_EMIT connectorScene()->addViewerTab(file);
}

FSoftConInputTemplateItem::FSoftConInputTemplateItem(FSoftConScene *scene, QGraphicsItem *parent,
                                                     const FExpr<FObject> &object)
    : FSoftConTemplateItem(scene, parent, object, SoftConInput)
{
}

FExpr<FObject> FSoftConInputTemplateItem::getEditorItemObject() const
{
    const auto computation = genIntComputation();
    const auto configuration = computation ? computation->getConfiguration().getPtr() : nullptr;
    return configuration ? FExpr<FObject>(configuration) : getItemObject();
}

void FSoftConInputTemplateItem::createItemObject(const QString &path, const QString &) const
{
    const FHistoryTransaction step(nullptr, F_TEXT("Add input template"), true);
    const auto file = FGenIntCommandFile::create("");
    file->initFromFile(path);
    file->setFileName(QFileInfo(path).fileName());
    setItemObject(FExpr<FObject>(file));
    addTemplateObject(FExpr<FGenIntFile>(file));
}

FSoftConOutputTemplateItem::FSoftConOutputTemplateItem(FSoftConScene *scene, QGraphicsItem *parent,
                                                       const FExpr<FObject> &object)
    : FSoftConTemplateItem(scene, parent, object, SoftConOutput)
{
}

void FSoftConOutputTemplateItem::createItemObject(const QString &path, const QString &base) const
{
    const FHistoryTransaction step(nullptr, F_TEXT("Add output template"), true);
    const auto file = FGenIntResultsFile::create("");
    file->initFromFile(path);
    QString name = !base.isEmpty() && path.startsWith(base) ? path.mid(base.size()) : QString();
    if (name.startsWith('/'))
        name.remove(0, 1);
    if (!name.isEmpty())
        file->setFileName(name);
    setItemObject(FExpr<FObject>(file));
    addTemplateObject(FExpr<FGenIntFile>(file));
}
