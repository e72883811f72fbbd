// SPDX-License-Identifier: Apache-2.0
#include "fresults.h"

#include "fcmdbinder.h"
#include "fdesign.h"
#include "fexterncomputation.h"
#include "flogmsg.h"
#include "fobjectmanager.h"
#include "fpathmanager.h"
#include "frunfolder.h"
#include "frunrecord.h"
#include "fsafefile.h"

#include <QFile>
#include <QFileInfo>
#include <algorithm>

F_CLASS_IMPL(FResults)
F_CLASS_IMPL(FComputationResults)
F_CLASS_IMPL(FResultsGeneric)

unsigned FComputationResults::sMadeById = 0;

void FResults::collectNamed(std::vector<const FObject *> *objects) const
{
    objects->push_back(mVariant.getExpr().get());
}

FComputationResults::FComputationResults(std::string name, const FExpr<FDesign> &variant,
                                         const FExpr<FExternComputation> &computation)
    : FResults(std::move(name), variant)
{
    const auto object = computation.getPtr();
    mComputation = object;
    if (object)
        mComputationId = object->getDbId();
}

FComputationResults::FComputationResults(std::string name, const FExpr<FDesign> &variant,
                                         int computationId)
    : FResults(std::move(name), variant)
    , mComputationId(computationId)
{
    ++sMadeById;
}

FExpr<FExternComputation> FComputationResults::getComputation() const
{
    if (mComputation.expired() && mComputationId != 0)
        mComputation = std::dynamic_pointer_cast<FExternComputation>(
            FObjectManager::instance()->findById(mComputationId));
    return FExpr<FExternComputation>(mComputation.lock());
}

std::shared_ptr<FObject> FComputationResults::toldBy() const { return getComputation().getExpr(); }

int FComputationResults::computationId() const
{
    const auto computation = getComputation().getPtr();
    return computation ? computation->getDbId() : mComputationId;
}

std::string FComputationResults::getResultPath() const
{
    const auto computation = getComputation().getPtr();
    return FPathManager::instance()->getResultsDirAbs(computation, getVariant().getPtr()) + "/";
}

void FComputationResults::visitState(FStateVisitor &state)
{
    FResults::visitState(state);
    state(mComputationId);
}

bool FResultsGeneric::fetchResults() const
{
    const std::lock_guard<std::recursive_mutex> lock(mMutex);
    if (!mFilesRead || !isUpToDate()) {
        mTables.clear();
        mImportedObjects.clear();
        mFilesRead = true;
        setUpToDate();
        const QString problem = FRunFolder::problemOf(getResultPath());
        if (!problem.isEmpty()) {
            FLogMsg::error("Run", "No results can be read", S(problem), nullptr);
            return true;
        }
        readOutputFiles();
        noteDoubtOfRun();
    }
    return true;
}

void FResultsGeneric::noteDoubtOfRun() const
{
    if (!mRunNote) {
        FRunRecord record;
        QByteArray text;
        mRunNote = FRunFolder::read(getResultPath(), "run.json", &text) && record.read(text)
                       ? record.note()
                       : std::string();
    }
    if (!mRunNote->empty())
        for (const auto &table : mTables)
            if (const auto object = table.getPtr())
                object->addNote(*mRunNote);
}

FExpr<FTableData> FResultsGeneric::getData(const std::string &name) const
{
    const std::lock_guard<std::recursive_mutex> lock(mMutex);
    fetchResults();
    for (const auto &table : mTables)
        if (const auto object = table.getPtr())
            if (object->getName() == name)
                return FExpr<FTableData>(object);
    return {};
}

FExpr<FTableData> FResultsGeneric::tableCommand(const std::string &name) const
{
    if (const auto table = getData(name))
        return table;
    for (const auto &table : mTables)
        if (const auto object = table.getPtr(); object && equals(object->getName(), name, false))
            return FExpr<FTableData>(object);
    return {};
}

std::shared_ptr<FTableData> FResultsGeneric::addTable(const std::string &name, int, int) const
{
    const std::lock_guard<std::recursive_mutex> lock(mMutex);
    const auto table = f_make_shared<FTableData>(name);
    for (auto &existing : mTables)
        if (existing && existing.getPtr()->getName() == name) {
            existing = table;
            return table;
        }
    mTables.push_back(FExpr<FTableData, true>(table));
    return table;
}

std::string FResultsGeneric::getResultFileName(const std::string &name) const
{
    QString why;
    return S(safeJoin(Q(getResultPath()), Q(name), &why));
}

FExpr<FTableData> FResultsGeneric::getImport(const std::string &name) const
{
    const std::lock_guard<std::recursive_mutex> lock(mMutex);
    fetchResults();
    const auto at = mImportedObjects.find(name);
    return at == mImportedObjects.end() ? FExpr<FTableData>()
                                        : FExpr<FTableData>(at->second.ptr<FTableData>());
}

std::shared_ptr<FObject> FResultsGeneric::clone(const FExpr<FDesign> &,
                                                const FExpr<FExternComputation> &) const
{
    return nullptr;
}

unsigned FResultsGeneric::getResultsFileType(const std::string &path)
{
    static const std::map<QString, unsigned> kinds{{"png", 1}, {"jpg", 1}, {"jpeg", 1}, {"bmp", 1},
                                                   {"gif", 1}, {"svg", 1}, {"csv", 2},  {"vtk", 4},
                                                   {"vtu", 4}, {"vtp", 4}, {"stl", 4}};
    const auto known = kinds.find(QFileInfo(Q(path)).suffix().toLower());
    if (known != kinds.end())
        return known->second;
    QFile file(Q(path));
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly))
        return 0;
    return file.read(1 << 16).contains('\0') ? 0 : 3;
}

void FResultsGeneric::initCmds()
{
    FCmdBinder<FResultsGeneric> c;
    c.member("getTable", &FResultsGeneric::tableCommand, FArg{"name"});
    c.member("getResultFileName", &FResultsGeneric::getResultFileName, FArg{"fileName"});
    c.member("getImport", &FResultsGeneric::getImport, FArg{"name"});
}
