// SPDX-License-Identifier: Apache-2.0
#include "fpathmanager.h"

#include "fdesign.h"
#include "fexterncomputation.h"
#include "fproject.h"

#include <QDir>
#include <QFileInfo>

FPathManager *FPathManager::instance()
{
    static FPathManager manager;
    return &manager;
}

std::string FPathManager::getProjectDirAbs() const
{
    // Asked for several times in each run; resolving the links of a path takes a system call for
    // every part of it.
    const QString path = FProject::instance()->path();
    if (!path.isEmpty() && path == mProjectPath)
        return mProjectDir;
    const QString folder = path.isEmpty() ? QDir::currentPath() : QFileInfo(path).path();
    const QString canonical = QFileInfo(folder).canonicalFilePath();
    if (canonical.isEmpty())
        return S(folder);
    if (QDir::isAbsolutePath(path)) {
        mProjectPath = path;
        mProjectDir = S(canonical);
    }
    return S(canonical);
}

std::string FPathManager::getSamplesDir() const { return getProjectDirAbs(); }

std::string FPathManager::getDesignsDirAbs() const
{
    const QString path = FProject::instance()->path();
    const std::string name = path.isEmpty() ? "unnamed" : S(QFileInfo(path).completeBaseName());
    return getProjectDirAbs() + "/" + name + "_designs";
}

std::string FPathManager::getDesignDirAbs(const std::shared_ptr<FDesign> &design) const
{
    return getDesignsDirAbs() + "/" + (design ? design : FDesign::current())->getName();
}

std::string FPathManager::getInputDirAbs(const std::shared_ptr<FExternComputation> &computation,
                                         const std::shared_ptr<FDesign> &design) const
{
    if (!computation && !design && !mFolder.empty())
        return mFolder + "/";
    const FExternComputation *which = computation ? computation.get() : mComputation;
    if (!which)
        return getDesignDirAbs(design) + "/";
    return getDesignDirAbs(design ? design : mDesign) + "/" + which->getName() + "/";
}

std::string FPathManager::getResultsDirAbs(const std::shared_ptr<FExternComputation> &computation,
                                           const std::shared_ptr<FDesign> &design) const
{
    return getDesignDirAbs(design) + (computation ? "/" + computation->getName() : std::string());
}

void FPathManager::failRun(const std::string &why)
{
    if (mFailure.empty())
        mFailure = why;
}

FPathManager::RunScope::RunScope(const std::shared_ptr<FExternComputation> &computation,
                                 const std::shared_ptr<FDesign> &design, const std::string &folder)
{
    instance()->mFolder = folder;
    instance()->mComputation = computation.get();
    instance()->mDesign = design;
    instance()->mFailure.clear();
}

FPathManager::RunScope::~RunScope()
{
    instance()->mComputation = nullptr;
    instance()->mDesign.reset();
    instance()->mFolder.clear();
}
