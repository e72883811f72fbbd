// SPDX-License-Identifier: Apache-2.0
#include "fresultsgenint.h"

#include "fcmdbinder.h"
#include "fcmdmanager.h"
#include "fconfigurationgenint.h"
#include "fdefinitiongenint.h"
#include "fdesign.h"
#include "fgenintcomputation.h"
#include "fgenintreader.h"

F_CLASS_IMPL(FResultsGenInt)

std::shared_ptr<FResultsGenInt>
FResultsGenInt::create(const std::string &name, const FExpr<FDesign> &design, int computationId)
{
    const auto results = f_make_shared<FResultsGenInt>(name, design, computationId);
    results->registerObject();
    results->FResults::init();
    return results;
}

std::shared_ptr<FObject> FResultsGenInt::clone(const FExpr<FDesign> &design,
                                               const FExpr<FExternComputation> &computation) const
{
    const auto results = f_make_shared<FResultsGenInt>(std::string(), design, computation);
    results->registerObject();
    results->FResults::init();
    return results;
}

void FResultsGenInt::init(const std::shared_ptr<FResultsGenInt> &source)
{
    if (!source)
        return;
    FResultsGeneric::init(std::static_pointer_cast<FResultsGeneric>(source));
    setOutputHandles(source->getOutputHandles());
}

void FResultsGenInt::setOutputHandles(const Handles &handles)
{
    const Handles given = handles; // may be our own list
    mOutputHandles = given;
    for (auto &handle : mOutputHandles)
        handle.registerClient(shared_from_this(), false);
    setOutOfDate(0);
    mFilesRead = false;
}

void FResultsGenInt::readOutputFiles() const
{
    const std::lock_guard<std::recursive_mutex> lock(mMutex);
    const auto self = std::const_pointer_cast<FResultsGenInt>(shared_from_base<FResultsGenInt>());
    self->startParentReg();
    const QString path = Q(getResultPath());
    for (const auto &handle : mOutputHandles) {
        const auto file = handle.ptr<FGenIntResultsFile>();
        if (!file)
            continue;
        FGenIntReader reader;
        reader.read(file, FExpr<FResultsGeneric>(self), path);
        mImportedObjects.insert(reader.importedObjects().begin(), reader.importedObjects().end());
    }
    self->stopParentReg();
    FResultsGeneric::readOutputFiles();
}

FExpr<FTableData> FResultsGenInt::getData(const std::string &name) const
{
    const std::lock_guard<std::recursive_mutex> lock(mMutex);
    fetchResults();
    const FExpr<FTableData> own = FResultsGeneric::getData(name);
    if (own)
        return own;
    for (const auto &handle : mOutputHandles) {
        const auto file = handle.ptr<FGenIntResultsFile>();
        if (!file || !equals(file->getName(), name, false))
            continue;
        for (const auto &table : mTables)
            if (table && equals(table.getPtr()->getName(), S(file->getFileName()), false))
                return FExpr<FTableData>(table);
    }
    return {};
}

template <class F>
double FResultsGenInt::ofFirstTable(F function) const
{
    const std::lock_guard<std::recursive_mutex> lock(mMutex);
    if (!fetchResults() || mTables.empty() || !mTables.front())
        return quietNan();
    return function(*mTables.front().getPtr());
}

double FResultsGenInt::getElementAt(int row, int column) const
{
    return ofFirstTable([&](const FTableData &t) { return t.getElementAt(row, column, nullptr); });
}
double FResultsGenInt::getElementAt(const std::string &rowHeader, int column) const
{
    return ofFirstTable([&](const FTableData &t) { return t.getElementAt(rowHeader, column); });
}
double FResultsGenInt::getElementAt(int row, const std::string &columnHeader) const
{
    return ofFirstTable([&](const FTableData &t) { return t.getElementAt(row, columnHeader); });
}
double FResultsGenInt::getElementAt(const std::string &rowHeader,
                                    const std::string &columnHeader) const
{
    return ofFirstTable(
        [&](const FTableData &t) { return t.getElementAt(rowHeader, columnHeader); });
}
double FResultsGenInt::getLastElementOfRow(int row) const
{
    return ofFirstTable([&](const FTableData &t) { return t.getLastElementOfRow(row); });
}
double FResultsGenInt::getLastElementOfColumn(int column) const
{
    return ofFirstTable([&](const FTableData &t) { return t.getLastElementOfColumn(column); });
}
double FResultsGenInt::getAverageOfLastRows(int numberOfRows, int column) const
{
    return ofFirstTable(
        [&](const FTableData &t) { return t.getAverageOfLastRows(numberOfRows, column); });
}

namespace {
// Indices beyond the range of int are out of range everywhere.
int index(unsigned value) { return value > 0x7fffffffU ? -1 : int(value); }
} // namespace

double FResultsGenInt::dataAtCells(unsigned row, unsigned column) const
{
    return getElementAt(index(row), index(column));
}
double FResultsGenInt::dataAtHeaderCell(const std::string &rowHeader, unsigned column) const
{
    return getElementAt(rowHeader, index(column));
}
double FResultsGenInt::dataAtCellHeader(double row, const std::string &columnHeader) const
{
    // Truncated toward zero.
    return row > -2147483648.0 && row < 2147483648.0 ? getElementAt(int(row), columnHeader)
                                                     : quietNan();
}
double FResultsGenInt::dataAtHeaders(const std::string &rowHeader,
                                     const std::string &columnHeader) const
{
    return getElementAt(rowHeader, columnHeader);
}

std::string FResultsGenInt::getResultTemplateName(const std::string &fileName) const
{
    const auto computation = getComputation().ptr<FGenIntComputation>();
    const auto configuration = computation ? computation->getConfiguration().getPtr() : nullptr;
    const auto definition =
        configuration ? configuration->getDefinition().ptr<FDefinitionGenInt>() : nullptr;
    if (!definition)
        return std::string();
    const auto files = definition->getFiles(1);
    for (const auto &handle : files)
        if (handle && S(handle->getFileName()) == fileName)
            return getResultPath() + fileName;
    return std::string();
}

void FResultsGenInt::saveScopeManner(QTextStream &stream, unsigned level, bool plainCreator,
                                     bool flag) const
{
    if (!getVariant())
        return;
    const int indent = int(TAB * level);
    stream << "\n";
    QString creator = QStringLiteral("genericIntegrationResults");
    if (!plainCreator && getConfigHandle())
        creator.prepend('&');
    stream.setFieldAlignment(QTextStream::AlignRight);
    stream.setFieldWidth(indent + creator.size());
    stream << creator;
    stream.setFieldWidth(0);
    stream << " " << getName() << "(" << getVariant().toString() << ","
           << fromNumber(computationId(), 10) << ")";
    auto attributes = FCmdManager::instance()->getAttributesByReceiver(
        std::const_pointer_cast<FObject>(shared_from_this()));
    if (attributes.empty() && getDocu().empty()) {
        stream << " {}\n";
        return;
    }
    stream << " {\n";
    saveDocumentation(stream, level + 1);
    saveAttributes(stream, attributes, level + 1, flag);
    stream.setFieldWidth(indent + 1);
    stream << "}";
    stream.setFieldWidth(0);
    stream << "\n";
}

void FResultsGenInt::visitState(FStateVisitor &state)
{
    FResultsGeneric::visitState(state);
    state(mOutputHandles);
}

void FResultsGenInt::stateRestored()
{
    FResultsGeneric::stateRestored();
    for (auto &handle : mOutputHandles)
        handle.registerClient(shared_from_this(), false);
}

void FResultsGenInt::initCmds()
{
    using T = FResultsGenInt;
    FCmdBinder<T> c;
    c.creator("genericIntegrationResults", &T::create, FArg{"variant", nullptr},
              FArg{"computationId", 0});
    c.attribute("setOutputHandles", &T::setOutputHandles, &T::getOutputHandles, FArg{"files"})
        .title(F_TEXT("Output Handles"))
        .readOnly();
    c.member("getDataAt", &T::dataAtCells, FArg{"row"}, FArg{"column"});
    c.member("getDataAt", &T::dataAtHeaderCell, FArg{"row header"}, FArg{"column"});
    c.member("getDataAt", &T::dataAtCellHeader, FArg{"row"}, FArg{"column header"});
    c.member("getDataAt", &T::dataAtHeaders, FArg{"row header"}, FArg{"column header"});
    c.member("getLastDataOfRow", &T::getLastElementOfRow, FArg{"row", 0});
    c.member("getLastDataOfColumn", &T::getLastElementOfColumn, FArg{"column", 0});
    c.member("getAverageOfLastRows", &T::getAverageOfLastRows, FArg{"numberOfRows"},
             FArg{"column", 0});
    c.member("getResultTemplateName", &T::getResultTemplateName, FArg{"fileName"});
}
