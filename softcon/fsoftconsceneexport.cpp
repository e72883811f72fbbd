// SPDX-License-Identifier: Apache-2.0
// The scene's coupling goes to a file for other projects.
#include "fgenintsetup.h"
#include "fini.h"
#include "flogmsg.h"
#include "fpathmanager.h"
#include "fsoftconscene.h"
#include "fworkspace.h"

#include <QFileDialog>

void FSoftConScene::exportIntegration() const
{
    const auto kFolder = QStringLiteral("OVDL/export/path");
    const auto computation = mComputation.ptr<FGenIntComputation>();
    if (!computation)
        return;
    const auto what = FGenIntSetup::ask(computation);
    if (what == FGenIntSetup::What::Nothing)
        return;
    const QString folder =
        FIni().value(kFolder, Q(FPathManager::instance()->getProjectDirAbs())).toString();
    QString path = QFileDialog::getSaveFileName(
        FWorkspace::instance()->window(), tr("Export software connector to file"),
        folder + '/' + Q(computation->getName()) + ".ovdl", QStringLiteral("OVDL (*.ovdl)"));
    if (path.isEmpty())
        return;
    if (QFileInfo(path).suffix().isEmpty())
        path += ".ovdl";
    FIni().setValue(kFolder, QFileInfo(path).absolutePath());
    QString why;
    if (FGenIntSetup::save(computation, what == FGenIntSetup::What::Chain, path, &why))
        FLogMsg::info("Set-up", "Exported to " + S(path), std::string(), nullptr);
    else
        FLogMsg::error("Set-up", "Could not export to " + S(path), S(why), nullptr);
}
