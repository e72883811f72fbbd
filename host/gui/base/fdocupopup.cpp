// SPDX-License-Identifier: Apache-2.0
#include "fdocupopup.h"

#include "ftext.h"
#include "ftheme.h"
#include "fworkspace.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QTextBrowser>
#include <QVBoxLayout>

FDocuPopup::FDocuPopup(const QString &text)
    : QFrame(FWorkspace::instance()->window(), Qt::Popup)
{
    setObjectName(QStringLiteral("docuPopup"));
    setAttribute(Qt::WA_DeleteOnClose);
    auto *layout = new QVBoxLayout(this);
    const int space = FTheme::space(3);
    layout->setContentsMargins(space, space, space, space);
    auto *browser = new QTextBrowser(this);
    browser->setAccessibleName(tr("Help"));
    browser->setFrameShape(QFrame::NoFrame);
    browser->setHtml(text);
    browser->document()->setTextWidth(380);
    const int height = int(browser->document()->size().height()) + 8;
    browser->setFixedSize(400, qBound(60, height, 460));
    layout->addWidget(browser);
}

void FDocuPopup::exec(const std::string &text)
{
    auto *popup = new FDocuPopup(Q(text));
    popup->adjustSize();
    QPoint place = QCursor::pos() + QPoint(8, 8);
    if (const QScreen *screen = QGuiApplication::screenAt(place)) {
        const QRect room = screen->availableGeometry();
        place.setX(qMin(place.x(), room.right() - popup->width()));
        place.setY(qMin(place.y(), room.bottom() - popup->height()));
    }
    popup->move(place);
    popup->show();
}
