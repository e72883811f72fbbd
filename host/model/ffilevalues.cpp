// SPDX-License-Identifier: Apache-2.0
#include "ffilevalues.h"

#include "fcmdbinder.h"
#include "flogmsg.h"
#include "fpathmanager.h"
#include "fsafefile.h"

#include <QDir>
#include <QFileInfo>
#include <iostream>

F_CLASS_IMPL(FInputFile)
F_CLASS_IMPL(FResultsFileName)
F_CLASS_IMPL(FGeometryExport)

FInputFile::FInputFile(const FExprBase &fileName, const FExprBase &directory)
    : mFileName(fileName)
    , mDirectory(directory)
{
}

void FInputFile::constructFObject()
{
    FBasicType::constructFObject();
    setImediateUpdate(false); // only a run copies
    if (mInitPrototype)
        return;
    mFileName.registerClient(shared_from_this(), false);
    mDirectory.registerClient(shared_from_this(), false);
}

std::string FInputFile::toString() const
{
    return "inputFile(" + mFileName.toString() + "," +
           (mDirectory ? mDirectory.toString() : "\"\"") + ")";
}

std::string FInputFile::sourcePath() const
{
    std::string name;
    if (!FConvert::toText(mFileName, &name) || name.empty())
        return std::string();
    const QString path = Q(FFile::resolveEnv(name));
    return S(QDir::isAbsolutePath(path)
                 ? path
                 : QDir(Q(FPathManager::instance()->getProjectDirAbs())).absoluteFilePath(path));
}

std::string FInputFile::targetName() const
{
    std::string folder;
    FConvert::toText(mDirectory, &folder);
    if (!folder.empty() && folder.back() != '/')
        folder += '/';
    return folder + S(QFileInfo(Q(sourcePath())).fileName());
}

std::string FInputFile::toPlainString() const
{
    return targetName();
}

std::shared_ptr<FObject> FInputFile::getType() const
{
    return FFileName::mpNull;
}

std::shared_ptr<FObject> FInputFile::clone() const
{
    return f_make_shared<FInputFile>(mFileName, mDirectory);
}

void FInputFile::doUpdate() const
{
    FPathManager *paths = FPathManager::instance();
    if (!paths->runInProgress())
        return;
    const std::string source = sourcePath();
    QString why;
    const QString target =
        source.empty() ? QString()
                       : safeJoin(Q(paths->getInputDirAbs(nullptr, nullptr)), Q(targetName()), &why);
    if (source.empty())
        why = QStringLiteral("the name %1 gives no file").arg(Q(mFileName.toString()));
    else if (!target.isEmpty() && QDir().mkpath(QFileInfo(target).path()) &&
             FSafeFile::copyFile(Q(source), target, &why))
        return;
    FLogMsg::error("FInputFile", "Could not copy file " + source + " into the run", S(why),
                   nullptr);
    paths->failRun("cannot copy input file " + source + ": " + S(why));
}

std::shared_ptr<FObject> FResultsFileName::clone() const
{
    return f_make_shared<FResultsFileName>(mFileName);
}

std::string FGeometryExport::toString() const
{
    return "geometryExport(" + FLiteral::quoted(mFileName) + ")";
}

std::shared_ptr<FObject> FGeometryExport::getType() const
{
    return FFileName::mpNull;
}

std::shared_ptr<FObject> FGeometryExport::clone() const
{
    const auto copy = f_make_shared<FGeometryExport>(mFileName);
    copy->mKind = mKind;
    copy->mFeatureDefinition = mFeatureDefinition;
    return copy;
}

namespace
{
std::shared_ptr<FInputFile> makeInputFile(const FExprBase &fileName, const FExprBase &directory)
{
    return f_make_shared<FInputFile>(fileName, directory);
}
std::shared_ptr<FResultsFileName> makeResultsFileName(const FExprBase &fileName)
{
    return f_make_shared<FResultsFileName>(fileName);
}
std::shared_ptr<FFileName> makeFileName(const std::string &name)
{
    return f_make_shared<FFileName>(name);
}
std::shared_ptr<FGeometryExport> makeGeometryExport(const std::string &fileName)
{
    return f_make_shared<FGeometryExport>(fileName);
}
} // namespace

void FGeometryExport::initCmds()
{
    FCmdBinder<FObject> c;
    c.global("inputFile", &makeInputFile, FArg{"path"}, FArg{"directory", nullptr}).pure();
    c.global("resultsFileName", &makeResultsFileName, FArg{"path"}).pure();
    c.global("fileName", &makeFileName, FArg{"path"}).pure();
    c.global("geometryExport", &makeGeometryExport, FArg{"path"}).pure();
}
