// SPDX-License-Identifier: Apache-2.0
#include "ficons.h"

#include "ftheme.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

namespace {
QByteArray drawingOf(const QString &key)
{
    QFile file(key);
    return key.startsWith(QLatin1String(":/")) && file.open(QIODevice::ReadOnly) ? file.readAll()
                                                                                 : QByteArray();
}

QByteArray withColors(QByteArray drawing, const char *role)
{
    drawing.replace("currentColor", FTheme::color(role).name().toLatin1());
    for (int at = drawing.indexOf("\"@"); at >= 0; at = drawing.indexOf("\"@", at)) {
        const int end = drawing.indexOf('"', at + 1);
        const QByteArray own = drawing.mid(at + 2, end - at - 2);
        drawing.replace(at + 1, end - at - 1, FTheme::color(own.constData()).name().toLatin1());
    }
    return drawing;
}

/// Draws a key anew for each size, screen and theme that it is asked for.
class Engine : public QIconEngine
{
public:
    explicit Engine(QString key)
        : mKey(std::move(key))
    {
    }
    QIconEngine *clone() const override { return new Engine(mKey); }
    QString key() const override { return QStringLiteral("FIcons"); }
    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        const qreal ratio = painter->device()->devicePixelRatioF();
        painter->drawPixmap(rect, drawn(rect.size(), ratio, mode, state));
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        // The size counts pixels of the screen here.
        QPixmap pixmap = drawn(size, 1, mode, state);
        return pixmap;
    }

private:
    QPixmap drawn(const QSize &size, qreal ratio, QIcon::Mode mode, QIcon::State state) const
    {
        const char *role = mode == QIcon::Disabled ? "line"
                           : state == QIcon::On    ? "accent"
                                                   : "text";
        QPixmap pixmap = FIcons::pixmap(mKey, size, ratio, role);
        if (mode != QIcon::Disabled || pixmap.isNull())
            return pixmap;
        QPixmap faint(pixmap.size());
        faint.setDevicePixelRatio(pixmap.devicePixelRatio());
        faint.fill(Qt::transparent);
        QPainter painter(&faint);
        painter.setOpacity(0.6);
        painter.drawPixmap(0, 0, FIcons::pixmap(mKey, size, ratio, "muted"));
        return faint;
    }
    QString mKey;
};
} // namespace

QIcon FIcons::icon(const QString &key) { return exists(key) ? QIcon(new Engine(key)) : QIcon(); }

QByteArray FIcons::tinted(const QString &key, const char *role)
{
    return withColors(drawingOf(key), role);
}

bool FIcons::exists(const QString &key) { return !sizeOf(key).isEmpty(); }

QPixmap FIcons::pixmap(const QString &key, const QSize &size, qreal ratio, const char *role)
{
    const QString id = QStringLiteral("%1 %2x%3 %4 %5 %6")
                           .arg(key)
                           .arg(size.width())
                           .arg(size.height())
                           .arg(ratio)
                           .arg(QLatin1String(role))
                           .arg(FTheme::instance()->isDark());
    QPixmap pixmap;
    if (QPixmapCache::find(id, &pixmap))
        return pixmap;
    const QByteArray drawing = drawingOf(key);
    if (drawing.isEmpty() || size.isEmpty())
        return pixmap;
    QSvgRenderer renderer(withColors(drawing, role));
    if (!renderer.isValid())
        return pixmap;
    pixmap = QPixmap(size * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    QSizeF fitted = renderer.defaultSize();
    fitted.scale(size, Qt::KeepAspectRatio);
    const QPointF corner((size.width() - fitted.width()) / 2,
                         (size.height() - fitted.height()) / 2);
    renderer.render(&painter, QRectF(corner, fitted));
    painter.end();
    QPixmapCache::insert(id, pixmap);
    return pixmap;
}

QPixmap FIcons::pixmap(const QString &key, const QSize &size, const char *role)
{
    return pixmap(key, size, qGuiApp->devicePixelRatio(), role);
}

QSize FIcons::sizeOf(const QString &key)
{
    static QMap<QString, QSize> known;
    const auto found = known.constFind(key);
    if (found != known.constEnd())
        return *found;
    const QByteArray drawing = drawingOf(key);
    QSvgRenderer renderer;
    const QSize size =
        !drawing.isEmpty() && renderer.load(drawing) ? renderer.defaultSize() : QSize();
    known.insert(key, size);
    return size;
}

QStringList FIcons::keys()
{
    QStringList found;
    for (const QString &name : QDir(QStringLiteral(":/")).entryList(QDir::Files))
        found.append(":/" + name);
    return found;
}
