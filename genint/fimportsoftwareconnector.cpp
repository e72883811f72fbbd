// SPDX-License-Identifier: Apache-2.0
#include "fimportsoftwareconnector.h"

#include "fbasictype.h"
#include "fchangeset.h"
#include "fcmdbinder.h"
#include "fgenintsetup.h"
#include "fini.h"
#include "flogmsg.h"
#include "fpathmanager.h"
#include "fupdates.h"
#include "fuserfile.h"
#include "fviewctrl.h"

#include <QFileInfo>
#include <QTextStream>

F_CLASS_IMPL(FImportSoftwareConnector)

namespace {
const auto kFolder = QStringLiteral("OVDL/import/path");

bool tell(const FGenIntSetup::Outcome &outcome)
{
    for (const FScriptError &error : outcome.errors)
        FLogMsg::error("Set-up", "Nothing was imported: " + error.toString(), std::string(),
                       nullptr);
    return outcome.errors.empty();
}
} // namespace

std::shared_ptr<FImportSoftwareConnector> FImportSoftwareConnector::create(const std::string &name)
{
    const auto made = f_make_shared<FImportSoftwareConnector>(name);
    made->registerObject();
    return made;
}

FExpr<FObjectList> FImportSoftwareConnector::read(const std::string &fileName)
{
    const FExpr<FObjectList> none(f_make_shared<FObjectList>(nullptr, 0U));
    std::string name = fileName.empty() ? fileName : FFile::resolveEnv(fileName);
    if (name.empty()) {
        std::string folder =
            S(FIni().value(kFolder, Q(FPathManager::instance()->getSamplesDir())).toString());
        name = S(FViewCtrl::instance()->getOpenFileName(
            QStringLiteral("Import Software Connector Setup"), &folder,
            QStringLiteral("OVDL (*.ovdl)")));
    }
    QFile file(Q(name));
    QString why;
    if (name.empty() || !file.exists() || !FUserFile::open(&file, &why, FUserFile::kMostBytes))
        return none;
    FIni().setValue(kFolder, QFileInfo(file).absolutePath());
    const FWaitCursor busy;
    const FEditorUpdateBlocker noEditors;
    const FImmediateUpdateBlocker noUpdates;
    const FObjectTreeBlocker noTree;
    doImport(file);
    return none;
}

void FImportSoftwareConnector::doImport(QFile &file)
{
    const QByteArray bytes = file.readAll();
    tell(FGenIntSetup::read(std::string(bytes.constData(), size_t(bytes.size())),
                            S(file.fileName())));
    FChangeSet::mChangeResponses.push({FChangeSet::Refresh, 0});
    FChangeSet::processEvents();
}

bool FImportSoftwareConnector::paste(QTextStream &stream)
{
    stream.setCodec("UTF-8");
    return tell(FGenIntSetup::read(S(stream.readAll()), "clipboard"));
}

void FImportSoftwareConnector::initCmds()
{
    FCmdBinder<FImportSoftwareConnector> c;
    c.creator("softwareConnectorImport", &FImportSoftwareConnector::create);
    c.member("read", &FImportSoftwareConnector::read, FArg{"fileName"});
}
