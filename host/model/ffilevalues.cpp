// SPDX-License-Identifier: Apache-2.0
#include "ffilevalues.h"

#include "fcmdbinder.h"
#include "flogmsg.h"
#include "fpathmanager.h"
#include "frunfolder.h"

#include <QDir>
#include <QFileInfo>
#include <iostream>
#include <unordered_set>

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

std::string FInputFile::toPlainString() const { return targetName(); }

std::shared_ptr<FObject> FInputFile::getType() const { return FFileName::mpNull; }

std::shared_ptr<FObject> FInputFile::clone() const
{
    return f_make_shared<FInputFile>(mFileName, mDirectory);
}

namespace {
/// Copies \p source into the input folder of the run in progress; that one fails if it can't.
void copyIntoRun(const char *kind, const QString &source, const QString &target, QString why)
{
    FPathManager *paths = FPathManager::instance();
    const QString path =
        source.isEmpty()
            ? QString()
            : FRunFolder::join(Q(paths->getInputDirAbs(nullptr, nullptr)), target, &why);
    if (!path.isEmpty() && QDir().mkpath(QFileInfo(path).path()) &&
        FSafeFile::copyFile(source, path, &why))
        return;
    const std::string name = S(source.isEmpty() ? target : source);
    FLogMsg::error(kind, "Could not copy file " + name + " into the run", S(why), nullptr);
    paths->failRun("cannot copy input file " + name + ": " + S(why));
}
} // namespace

void FInputFile::doUpdate() const
{
    if (FPathManager::instance()->runInProgress())
        copyIntoRun("FInputFile", Q(sourcePath()), Q(targetName()),
                    "the name " + Q(mFileName.toString()) + " gives no file");
}

std::shared_ptr<FObject> FResultsFileName::clone() const
{
    return f_make_shared<FResultsFileName>(mFileName);
}

void FGeometryExport::constructFObject()
{
    FBasicType::constructFObject();
    setImediateUpdate(false); // only a run copies
}

void FGeometryExport::doUpdate() const
{
    FPathManager *paths = FPathManager::instance();
    if (!paths->runInProgress())
        return;
    QString why;
    const QString name = Q(mFileName);
    copyIntoRun("FGeometryExport", safeJoin(Q(paths->getProjectDirAbs()), name, &why), name, why);
}

std::string FGeometryExport::toString() const
{
    const bool isPlain = !mGeometryObjects || mGeometryObjects->count() == 0;
    return "geometryExport(" + FLiteral::quoted(mFileName) +
           (isPlain ? ")" : "," + mGeometryObjects->toString() + ")");
}

void FGeometryExport::setGeometryObjects(const std::shared_ptr<FObjectList> &objects)
{
    mGeometryObjects = nullptr;
    if (objects)
        addGeometryObjects(objects);
}

void FGeometryExport::addGeometryObjects(const std::shared_ptr<FObjectList> &objects)
{
    // A list that somebody else holds stays as it is.
    const auto grown = f_make_shared<FObjectList>();
    std::unordered_set<const FObject *> known;
    for (const auto &list : {mGeometryObjects, objects})
        if (list)
            for (const auto &object : list->getObjects())
                if (known.insert(object.getExpr().get()).second)
                    grown->append(object);
    mGeometryObjects = grown;
}

std::shared_ptr<FObject> FGeometryExport::getType() const { return FFileName::mpNull; }

std::shared_ptr<FObject> FGeometryExport::clone() const
{
    const auto copy = f_make_shared<FGeometryExport>(mFileName);
    copy->mKind = mKind;
    copy->mFeatureDefinition = mFeatureDefinition;
    copy->mGeometryObjects = mGeometryObjects;
    return copy;
}

namespace {
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
std::shared_ptr<FGeometryExport> makeGeometryExport(const std::string &fileName,
                                                    const FExprBase &objects)
{
    const auto made = f_make_shared<FGeometryExport>(fileName);
    made->setGeometryObjects(objects.ptr<FObjectList>());
    return made;
}
} // namespace

void FGeometryExport::initCmds()
{
    FCmdBinder<FObject> c;
    c.global("inputFile", &makeInputFile, FArg{"path"}, FArg{"directory", nullptr}).pure();
    c.global("resultsFileName", &makeResultsFileName, FArg{"path"}).pure();
    c.global("fileName", &makeFileName, FArg{"path"}).pure();
    c.global("geometryExport", &makeGeometryExport, FArg{"path"}, FArg{"objects", nullptr}).pure();
}
