// SPDX-License-Identifier: Apache-2.0
#ifndef FTHEME_H
#define FTHEME_H
#include <QColor>
#include <QMap>
#include <QObject>
#include <QPalette>
#include <QTemporaryDir>

/// Colours by role, light and dark, and the looks of the program made of them.
///
/// The table is resources/theme/roles.txt; palette, style sheet, icons and editors take their
/// colours from here and nowhere else.
class FTheme : public QObject
{
    Q_OBJECT
public:
    enum class Choice { System, Light, Dark };
    static FTheme *instance();

    /// The colour of a role in the theme that is shown; black for an unknown one.
    static QColor color(const char *role) { return instance()->colorOf(role, instance()->mDark); }
    QColor colorOf(const QString &role, bool dark) const;
    QStringList roles() const;

    /// Shows a theme at once: palette, style sheet, icons. System follows the desktop.
    void setChoice(Choice choice);
    Choice choice() const { return mChoice; }
    bool isDark() const { return mDark; }
    /// "light", "dark" or "system"; false for another word.
    static bool fromText(const QString &text, Choice *choice);
    static QString toText(Choice choice);

    /// Distances of the layout: 4, 8, 12, 16 pixels for 1 to 4.
    static int space(int steps) { return 4 * steps; }
    /// A font with equal digits for tables, and the one for text files.
    static QFont fixedFont();

Q_SIGNALS:
    /// The colours are others now.
    void changed();

private:
    FTheme();
    QPalette palette() const;
    QString styleSheet() const;

    struct Pair
    {
        QColor light, dark;
    };
    QMap<QString, Pair> mRoles;
    Choice mChoice = Choice::System;
    bool mDark = false;
    QTemporaryDir mIcons; // of the style sheet
};
#endif
