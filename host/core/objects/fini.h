// SPDX-License-Identifier: Apache-2.0
#ifndef FINI_H
#define FINI_H
#include "fexpr.h"

#include <QSettings>

/// The settings of the application: an INI file under the user's configuration folder, or the
/// file that the environment variable TURNBUCKLE_CONFIG names.
class FIni
{
public:
    FIni()
        : mSettings(path(), QSettings::IniFormat)
    {
        mSettings.setIniCodec("UTF-8");
    }
    /// An invalid default comes back invalid.
    QVariant value(const QString &key, const QVariant &defaultValue = QVariant()) const
    {
        return mSettings.value(key, defaultValue);
    }
    void setValue(const QString &key, const QVariant &value) { mSettings.setValue(key, value); }
    /// A setting as a value object: a whole number, else a text; null if it isn't set.
    FExpr<FObject> getSetting(const std::string &key) const;
    static QString path();

private:
    QSettings mSettings;
};
#endif
