// SPDX-License-Identifier: Apache-2.0
#ifndef TURNBUCKLEPROCESS_H
#define TURNBUCKLEPROCESS_H
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

/// One call of the program, in a folder of its own, and what came of it.
struct FCall
{
    int code = -1; // exit code, -1 if it crashed or hung
    QByteArray out, err;

    QJsonObject json() const { return QJsonDocument::fromJson(out).object(); }
    QJsonArray list() const { return QJsonDocument::fromJson(out).array(); }
    QJsonObject run(int i = 0) const { return json()["runs"].toArray().at(i).toObject(); }
    QStringList log() const
    {
        QStringList all;
        for (const QJsonValue &entry : json()["log"].toArray())
            all << entry.toObject()["message"].toString();
        return all;
    }
};

/// A folder with a project and other files, in which the real program is called.
class FSandbox
{
public:
    QString path(const QString &name = QString()) const { return mFolder.filePath(name); }
    void write(const QString &name, const QByteArray &content) const
    {
        QDir(path()).mkpath(QFileInfo(name).path());
        QFile file(path(name));
        if (!file.open(QFile::WriteOnly) || file.write(content) != content.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
    }
    QByteArray read(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }
    bool has(const QString &name) const { return QFileInfo::exists(path(name)); }
    QJsonObject record(const QString &folder) const
    {
        return QJsonDocument::fromJson(read(folder + "/.turnbuckle/run.json")).object();
    }
    void prepare(QProcess *process, const QStringList &arguments) const
    {
        process->setWorkingDirectory(path());
        process->setProgram(F_BIN_DIR "/turnbuckle");
        process->setArguments(arguments);
        process->setStandardInputFile(QProcess::nullDevice());
    }
    FCall call(const QStringList &arguments) const
    {
        QProcess process;
        prepare(&process, arguments);
        process.start();
        FCall call;
        if (process.waitForFinished(120000) && process.exitStatus() == QProcess::NormalExit)
            call.code = process.exitCode();
        call.out = process.readAllStandardOutput();
        call.err = process.readAllStandardError();
        return call;
    }

private:
    QTemporaryDir mFolder;
};
#endif
