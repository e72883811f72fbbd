// SPDX-License-Identifier: Apache-2.0
#include "fovdlconfigurationparser.h"

#include "flogmsg.h"
#include "ftabledata.h"
#include "ftecplotreader.h"

#include <QFile>
#include <QFileInfo>

bool FOvdlConfigurationParser::doImport(const std::string &importType, const std::string &path,
                                        const std::string &name)
{
    const auto fail = [&](const std::string &why) {
        FLogMsg::error("Import", "Could not import file " + path + " as " + importType, why,
                       nullptr);
        return false;
    };
    if (!equals(importType, "tecplot", false))
        return fail("expected the format tecplot, found \"" + importType + "\"");
    QFile file(Q(path));
    if (!QFileInfo(file).isFile())
        return fail("there is no such file");
    if (!file.open(QIODevice::ReadOnly))
        return fail(S(file.errorString()));
    FTecplotData data;
    QString why;
    if (!readTecplot(file.readAll(), &data, &why))
        return fail(S(why));
    const auto table = f_make_shared<FTableData>(name);
    table->setColumns(data.columns, data.variables);
    mObjects[name] = FExpr<FObject>(table);
    return true;
}
