// SPDX-License-Identifier: Apache-2.0
#ifndef MODELTEST_H
#define MODELTEST_H
#include "flogmsg.h"
#include "fmanaged.h"
#include "fobjectmanager.h"
#include "fproject.h"
#include "fscript.h"

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

/// What tests of the model share: an empty project in a folder of its own, scripts and the log.
class ModelTest
{
public:
    ModelTest()
    {
        qputenv("TURNBUCKLE_CONFIG", QFile::encodeName(mConfig.path() + "/settings.ini"));
        FLogMsg::setConsole(nullptr);
        FObject::initPrototypes();
    }

    /// An empty project p.tbk, not saved, in an empty folder.
    void start()
    {
        mFolder = std::make_unique<QTemporaryDir>();
        FProject::instance()->clear();
        FProject::instance()->setPath(path("p.tbk"));
    }

    QString path(const QString &name) const { return mFolder->path() + "/" + name; }

    /// The messages of errors in \p source, empty without one.
    static QStringList run(const QString &source)
    {
        FScriptReader reader(source.toStdString(), "test");
        reader.run();
        QStringList texts;
        for (const FScriptError &error : reader.errors())
            texts << Q(error.text());
        return texts;
    }

    template <class T>
    static std::shared_ptr<T> object(const char *name)
    {
        return std::dynamic_pointer_cast<T>(FObjectManager::instance()->find(name));
    }

    /// Plain text of what an expression gives.
    static QString value(const QString &expression)
    {
        return Q(FExprBase(FExprBase::resolve(S(expression)).getPtr()).toPlainString());
    }

    /// Messages since the last call as "source|message|details".
    static QStringList log()
    {
        QStringList lines;
        for (const FLogMsg::Message &m : FLogMsg::messages())
            lines << Q(m.source + "|" + m.message + "|" + m.details);
        FLogMsg::clear();
        return lines;
    }

    static QByteArray read(const QString &path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<none>");
    }
    static void write(const QString &path, const QByteArray &bytes)
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(path));
    }

private:
    QTemporaryDir mConfig;
    std::unique_ptr<QTemporaryDir> mFolder;
};
#endif
