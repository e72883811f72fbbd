// SPDX-License-Identifier: Apache-2.0
#include "ftheme.h"

#include "ficons.h"

#include <QApplication>
#include <QFile>
#include <QFontDatabase>
#include <QRegularExpression>
#include <QStyle>
#include <QStyleFactory>

namespace {
QString textOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}
} // namespace

FTheme *FTheme::instance()
{
    static FTheme theme;
    return &theme;
}

FTheme::FTheme()
{
    for (const QString &line : textOf(QStringLiteral(":/theme/roles.txt")).split('\n')) {
        const QStringList words = line.split(' ', Qt::SkipEmptyParts);
        if (words.size() == 3 && !line.startsWith('#'))
            mRoles.insert(words[0], {QColor(words[1]), QColor(words[2])});
    }
}

QColor FTheme::colorOf(const QString &role, bool dark) const
{
    const Pair pair = mRoles.value(role, {Qt::black, Qt::black});
    return dark ? pair.dark : pair.light;
}

QStringList FTheme::roles() const { return mRoles.keys(); }

void FTheme::setChoice(Choice choice)
{
    mChoice = choice;
    if (choice == Choice::System) {
        // The style's own palette is that of the desktop as long as none was set.
        static const bool systemIsDark =
            QApplication::palette().color(QPalette::Window).lightness() < 128;
        mDark = systemIsDark;
    } else {
        mDark = choice == Choice::Dark;
    }
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setPalette(palette());
    qApp->setStyleSheet(styleSheet());
    Q_EMIT changed();
}

bool FTheme::fromText(const QString &text, Choice *choice)
{
    for (const Choice one : {Choice::System, Choice::Light, Choice::Dark})
        if (text == toText(one)) {
            *choice = one;
            return true;
        }
    return false;
}

QString FTheme::toText(Choice choice)
{
    switch (choice) {
    case Choice::Light:
        return QStringLiteral("light");
    case Choice::Dark:
        return QStringLiteral("dark");
    case Choice::System:
        break;
    }
    return QStringLiteral("system");
}

QFont FTheme::fixedFont()
{
    const QString wanted = QStringLiteral("Roboto Mono");
    static const bool isThere = QFontDatabase().families().contains(wanted);
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    if (isThere)
        font.setFamily(wanted);
    font.setPointSizeF(QApplication::font().pointSizeF());
    return font;
}

QPalette FTheme::palette() const
{
    QPalette palette;
    const auto set = [&](QPalette::ColorRole role, const char *name) {
        palette.setColor(role, colorOf(name, mDark));
    };
    set(QPalette::Window, "window");
    set(QPalette::WindowText, "text");
    set(QPalette::Base, "base");
    set(QPalette::AlternateBase, "alternate");
    set(QPalette::Text, "text");
    set(QPalette::Button, "window");
    set(QPalette::ButtonText, "text");
    set(QPalette::BrightText, "bad");
    set(QPalette::ToolTipBase, "header");
    set(QPalette::ToolTipText, "text");
    set(QPalette::Highlight, "selection");
    set(QPalette::HighlightedText, "text");
    set(QPalette::Link, "accent");
    set(QPalette::LinkVisited, "accent");
    set(QPalette::PlaceholderText, "muted");
    set(QPalette::Light, "base");
    set(QPalette::Midlight, "alternate");
    set(QPalette::Mid, "line");
    set(QPalette::Dark, "muted");
    set(QPalette::Shadow, "line");
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
        palette.setColor(QPalette::Disabled, role, colorOf("muted", mDark));
    return palette;
}

/// Style sheets take pictures from files only: writes each "@icon:key:role" of \p sheet, tinted,
/// below \p folder and names that file in its place.
static void placeIcons(QString *sheet, const QString &folder)
{
    static const QRegularExpression word(QStringLiteral("@icon:(\\w+):([\\w-]+)"));
    for (QRegularExpressionMatch match; (match = word.match(*sheet)).hasMatch();) {
        const QByteArray role = match.captured(2).toLatin1();
        const QString path = QStringLiteral("%1/%2_%3.svg")
                                 .arg(folder, match.captured(1), FTheme::color(role).name().mid(1));
        QFile file(path);
        if (!file.exists() && file.open(QIODevice::WriteOnly))
            file.write(FIcons::tinted(":/" + match.captured(1), role));
        sheet->replace(match.capturedStart(), match.capturedLength(), path);
    }
}

QString FTheme::styleSheet() const
{
    QString sheet = textOf(QStringLiteral(":/theme/style.qss"));
    placeIcons(&sheet, mIcons.path());
    QStringList names = mRoles.keys();
    // Longer names first: "warning" begins "warning-ground".
    std::sort(names.begin(), names.end(),
              [](const QString &a, const QString &b) { return a.size() > b.size(); });
    for (const QString &name : names)
        sheet.replace('@' + name, colorOf(name, mDark).name());
    return sheet;
}
