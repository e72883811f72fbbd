// SPDX-License-Identifier: Apache-2.0
#include "fguicontrol.h"

#include "fio.h"
#include "fmainwindow.h"
#include "fmodelpanel.h"
#include "fobjecteditorwgt.h"
#include "fselectionset.h"

#include <QFileDialog>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>

namespace {
int askUser(QWidget *parent, const FIO::Request &request, QWidget *window)
{
    QMessageBox box(parent ? parent : window);
    box.setObjectName(QStringLiteral("question"));
    box.setWindowTitle(Q(request.title));
    const QString text = Q(request.text);
    box.setTextFormat(text.contains(QLatin1String("<br>")) ? Qt::RichText : Qt::PlainText);
    box.setText(text);
    box.setIcon(request.kind == "Warning"    ? QMessageBox::Warning
                : request.kind == "Question" ? QMessageBox::Question
                                             : QMessageBox::Information);
    QPushButton *buttons[3] = {};
    for (int i = 0; i < 3; ++i) {
        if (request.buttons[i].empty())
            continue;
        buttons[i] = box.addButton(Q(request.buttons[i]), QMessageBox::ActionRole);
        if (i == request.defaultButton)
            box.setDefaultButton(buttons[i]);
        if (i == request.escape)
            box.setEscapeButton(buttons[i]);
    }
    box.exec();
    for (int i = 0; i < 3; ++i)
        if (buttons[i] && box.clickedButton() == buttons[i])
            return i;
    return request.escape >= 0 ? request.escape : request.defaultButton;
}
} // namespace

FGuiControl::FGuiControl(FMainWindow *window)
    : mWindow(window)
{
    FViewCtrl::setInstance(this);
    FIO::instance()->setBackend([window](QWidget *parent, const FIO::Request &request) {
        return askUser(parent, request, window);
    });
}

FGuiControl::~FGuiControl()
{
    FIO::instance()->setBackend(nullptr);
    static FViewCtrl none;
    FViewCtrl::setInstance(&none);
}

bool FGuiControl::hasSmallScreen() const
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    return screen && screen->availableGeometry().height() < 800;
}

QString FGuiControl::getOpenFileName(const QString &title, std::string *directory,
                                     const QString &filter)
{
    return QFileDialog::getOpenFileName(mWindow, title, directory ? Q(*directory) : QString(),
                                        filter);
}

void FGuiControl::highlight(const std::vector<FExpr<FObject, true>> &objects)
{
    mWindow->modelPanel()->highlight(objects);
}

void FGuiControl::openObjectEditor(const std::vector<FExpr<FObject, true>> &objects)
{
    FSelectionSet::instance()->set({objects.begin(), objects.end()}, true);
    mWindow->showPanel(QStringLiteral("properties"));
}

QWidget *FGuiControl::makeObjectEditor(const std::vector<FExpr<FObject, true>> &objects)
{
    if (objects.empty())
        return nullptr;
    auto *editor = new FObjectEditorWgt;
    editor->setObjects(objects);
    return editor;
}
