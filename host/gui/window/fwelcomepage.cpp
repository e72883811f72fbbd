// SPDX-License-Identifier: Apache-2.0
#include "fwelcomepage.h"

#include "ficons.h"
#include "fprojectcontrol.h"
#include "ftheme.h"

#include <QCommandLinkButton>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <QVariant>

namespace {
QLabel *heading(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setObjectName(QStringLiteral("sectionHeading"));
    return label;
}

QLabel *muted(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setObjectName(QStringLiteral("muted"));
    label->setWordWrap(true);
    return label;
}

/// A button of a picture, a title and a line of text.
class Card : public QPushButton
{
public:
    Card(const QString &icon, const QString &title, const QString &text, QWidget *parent)
        : QPushButton(parent)
        , mIcon(icon)
    {
        setProperty("card", true);
        setAccessibleName(title);
        setAccessibleDescription(text);
        setCursor(Qt::PointingHandCursor);
        auto *layout = new QHBoxLayout(this);
        const int space = FTheme::space(3);
        layout->setContentsMargins(space, space, space, space);
        layout->setSpacing(space);
        if (!icon.isEmpty()) {
            mPicture = new QLabel(this);
            mPicture->setFixedSize(40, 40);
            mPicture->setAttribute(Qt::WA_TransparentForMouseEvents);
            layout->addWidget(mPicture);
            draw();
            connect(FTheme::instance(), &FTheme::changed, this, [this] { draw(); });
        }
        auto *texts = new QVBoxLayout;
        texts->setSpacing(2);
        auto *name = new QLabel(title, this);
        name->setObjectName(QStringLiteral("cardTitle"));
        auto *words = muted(text, this);
        for (QLabel *label : {name, words}) {
            label->setAttribute(Qt::WA_TransparentForMouseEvents);
            texts->addWidget(label);
        }
        layout->addLayout(texts, 1);
    }
    QSize sizeHint() const override { return layout()->sizeHint(); }
    QSize minimumSizeHint() const override { return layout()->minimumSize(); }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return layout()->heightForWidth(width); }

private:
    void draw() { mPicture->setPixmap(FIcons::pixmap(mIcon, QSize(40, 40), devicePixelRatioF())); }
    QString mIcon;
    QLabel *mPicture = nullptr;
};
} // namespace

FWelcomePage::FWelcomePage(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("welcomePage"));
    auto *area = new QScrollArea(this);
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(area);
    auto *page = new QWidget(area);
    page->setObjectName(QStringLiteral("welcomeContent"));
    area->setWidget(page);
    auto *centred = new QHBoxLayout(page);
    auto *column = new QWidget(page);
    column->setMaximumWidth(720);
    centred->addStretch(1);
    centred->addWidget(column, 6);
    centred->addStretch(1);
    auto *layout = new QVBoxLayout(column);
    layout->setContentsMargins(FTheme::space(4), FTheme::space(10), FTheme::space(4),
                               FTheme::space(6));
    layout->setSpacing(FTheme::space(2));

    auto *title = new QLabel(QStringLiteral("Turnbuckle"), column);
    title->setObjectName(QStringLiteral("welcomeTitle"));
    layout->addWidget(title);
    layout->addWidget(muted(tr("Couples a simulation program to a parametric model: the program's "
                               "input files become templates, its results become parameters."),
                            column));
    layout->addSpacing(FTheme::space(4));

    auto *first = new QHBoxLayout;
    first->setSpacing(FTheme::space(2));
    auto *fresh = new QPushButton(tr("&New project"), column);
    fresh->setObjectName(QStringLiteral("welcomeNew"));
    fresh->setDefault(true);
    auto *open = new QPushButton(tr("&Open\u2026"), column);
    open->setObjectName(QStringLiteral("welcomeOpen"));
    first->addWidget(fresh);
    first->addWidget(open);
    first->addStretch();
    layout->addLayout(first);
    FProjectControl *control = FProjectControl::instance();
    connect(
        fresh, &QPushButton::clicked, control, [control] { control->newProject(); });
    connect(open, &QPushButton::clicked, control, [control] { control->askAndOpen(); });

    layout->addSpacing(FTheme::space(4));
    layout->addWidget(heading(tr("Examples"), column));
    struct Example
    {
        const char *name, *icon;
        QString title, text;
    };
    const Example examples[] = {
        {"beam", ":/welcomeBeam", tr("Beam"),
         tr("A cantilever in CalculiX: height, width and load against deflection and stress.")},
        {"filter", ":/welcomeFilter", tr("Filter"),
         tr("A circuit in ngspice: component values against the cut-off frequency.")},
        {"chain", ":/welcomeCircuit", tr("Chain"),
         tr("Two programs in a row: the second reads what the first one left.")}};
    const QStringList installed = FProjectControl::examples();
    for (const Example &example : examples) {
        const QString name = QLatin1String(example.name);
        auto *card = new Card(QLatin1String(example.icon), example.title, example.text, column);
        card->setObjectName("example_" + name);
        card->setEnabled(installed.contains(name));
        card->setToolTip(card->isEnabled() ? tr("Opens a copy in %1")
                                                 .arg(QDir::toNativeSeparators(
                                                     QDir::homePath() + "/Turnbuckle examples"))
                                           : tr("This example isn't installed."));
        connect(card, &QPushButton::clicked, control,
                [control, name] { control->openExample(name); });
        layout->addWidget(card);
    }
    layout->addSpacing(FTheme::space(4));
    layout->addWidget(heading(tr("Recent projects"), column));
    mRecent = new QVBoxLayout;
    mRecent->setSpacing(FTheme::space(1));
    layout->addLayout(mRecent);
    layout->addStretch();
    connect(control, &FProjectControl::recentChanged, this, &FWelcomePage::refresh);
    refresh();
}

void FWelcomePage::refresh()
{
    while (QLayoutItem *item = mRecent->takeAt(0)) {
        if (item->widget())
            item->widget()->deleteLater();
        delete item;
    }
    const QStringList paths = FProjectControl::recent();
    if (paths.isEmpty())
        mRecent->addWidget(
            muted(tr("None yet. Projects that you open or save are listed here."), this));
    for (const QString &path : paths) {
        const QFileInfo info(path);
        auto *card = new Card(QString(), info.fileName(),
                              QDir::toNativeSeparators(info.absolutePath()), this);
        card->setObjectName(QStringLiteral("recent_") + info.completeBaseName());
        connect(card, &QPushButton::clicked, this,
                [path] { FProjectControl::instance()->open(path); });
        mRecent->addWidget(card);
    }
}
