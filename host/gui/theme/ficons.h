// SPDX-License-Identifier: Apache-2.0
#ifndef FICONS_H
#define FICONS_H
#include <QIcon>
#include <QPixmap>

/// The icons of the program: drawings in resources/icons, tinted by the roles of the theme.
///
/// A drawing says "currentColor" for the colour of text and "@role" for another role of the theme;
/// so one drawing serves both themes, sharp at every size and on every screen.
namespace FIcons {
/// The icon of a key such as ":/add"; null if there is no such drawing.
QIcon icon(const QString &key);
bool exists(const QString &key);
/// The drawing with the colours of the theme; "currentColor" is \p role. Empty for an unknown key.
QByteArray tinted(const QString &key, const char *role);
/// A drawing as large as \p size, in pixels of the layout, for a screen of \p ratio; "currentColor"
/// is \p role. The drawing keeps its proportions and is centred. Null for an unknown key.
QPixmap pixmap(const QString &key, const QSize &size, qreal ratio, const char *role = "text");
/// The same for the screen that the program is shown on.
QPixmap pixmap(const QString &key, const QSize &size, const char *role = "text");
/// Width and height of the drawing, 24 by 24 for most; empty for an unknown key.
QSize sizeOf(const QString &key);
QStringList keys();
} // namespace FIcons
#endif
