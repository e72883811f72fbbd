// SPDX-License-Identifier: Apache-2.0
#include "fini.h"

#include "fbasictype.h"

#include <QStandardPaths>

QString FIni::path()
{
    const QString chosen = qEnvironmentVariable("TURNBUCKLE_CONFIG");
    return chosen.isEmpty()
               ? QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                     QStringLiteral("/turnbuckle/turnbuckle.ini")
               : chosen;
}

FExpr<FObject> FIni::getSetting(const std::string &key) const
{
    const QVariant found = value(Q(key));
    if (!found.isValid())
        return {};
    bool ok;
    const int number = found.toString().toInt(&ok);
    if (ok)
        return f_make_shared<FInteger>(number);
    return f_make_shared<FString>(S(found.toString()));
}
