// SPDX-License-Identifier: Apache-2.0
#ifndef LOOKS_H
#define LOOKS_H
#include <QtWidgets>

/// What is wrong with the looks of a window, in words: clipped texts, widgets that lie over each
/// other, buttons that say nothing, fields without a name.
inline QStringList faultsOfLooks(const QWidget *window)
{
    QStringList faults;
    const auto tell = [&faults](const QWidget *widget, const QString &what) {
        faults << QStringLiteral("%1 %2: %3")
                      .arg(widget->metaObject()->className(), widget->objectName(),
                           what + " in " +
                               (widget->parent() ? widget->parent()->metaObject()->className()
                                                 : ""));
    };
    const auto isSeen = [](const QWidget *widget) {
        return widget->isVisible() && !widget->visibleRegion().isEmpty();
    };
    for (const QWidget *widget : window->findChildren<QWidget *>()) {
        if (!isSeen(widget) || widget->inherits("QLineEditIconButton")) // Qt's own
            continue;
        const auto *area = qobject_cast<const QAbstractScrollArea *>(widget->parentWidget());
        if (area && area->viewport() == widget)
            continue; // it goes by the name of its area
        const auto *button = qobject_cast<const QAbstractButton *>(widget);
        const bool isNamed =
            !widget->accessibleName().isEmpty() || (button && !button->text().isEmpty()) ||
            qobject_cast<const QTabBar *>(widget) || widget->objectName().startsWith("qt_");
        if ((widget->focusPolicy() & Qt::TabFocus) && !isNamed)
            tell(widget, "no name");
        if (qobject_cast<const QToolButton *>(widget) && button->text().isEmpty() &&
            !widget->objectName().startsWith("qt_")) {
            if (button->icon().isNull() || button->icon().pixmap(16, 16).isNull())
                tell(widget, "neither text nor icon");
            if (button->toolTip().isEmpty())
                tell(widget, "no tool tip");
        }
        const auto *label = qobject_cast<const QLabel *>(widget);
        if (label && !label->wordWrap() && !label->text().isEmpty() &&
            label->fontMetrics().horizontalAdvance(QString(label->text()).remove('&')) >
                label->contentsRect().width() &&
            label->sizePolicy().horizontalPolicy() != QSizePolicy::Ignored)
            tell(widget, "clipped: " + label->text());
        if (button && !button->text().isEmpty() && !qobject_cast<const QToolButton *>(widget) &&
            button->sizeHint().width() > button->width())
            tell(widget, "clipped: " + button->text());
        if (!widget->layout())
            continue;
        // What one layout holds lies side by side.
        std::vector<const QWidget *> placed;
        for (int i = 0; i < widget->layout()->count(); ++i)
            if (const QWidget *child = widget->layout()->itemAt(i)->widget())
                if (isSeen(child) && !qobject_cast<const QStackedLayout *>(widget->layout()))
                    placed.push_back(child);
        for (size_t a = 0; a < placed.size(); ++a)
            for (size_t b = a + 1; b < placed.size(); ++b)
                if (placed[a]->geometry().intersects(placed[b]->geometry()))
                    tell(placed[a], "overlaps " + placed[b]->objectName());
    }
    return faults;
}
#endif
