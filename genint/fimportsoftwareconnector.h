// SPDX-License-Identifier: Apache-2.0
#ifndef FIMPORTSOFTWARECONNECTOR_H
#define FIMPORTSOFTWARECONNECTOR_H
#include "fexpr.h"
#include "fmanaged.h"

class QFile;
class QTextStream;

/// Brings a saved coupling, or a chain of them, into the project.
class FImportSoftwareConnector : public FManaged
{
    F_CLASS(FImportSoftwareConnector, FManaged)
public:
    explicit FImportSoftwareConnector(std::string name = std::string())
        : FManaged(std::move(name))
    {
    }
    static std::shared_ptr<FImportSoftwareConnector> create(const std::string &name);
    /// Asks for a file if no name is given. The list is empty; what was wrong stands in the log.
    FExpr<FObjectList> read(const std::string &fileName);
    void doImport(QFile &file);
    /// False if nothing was taken in; why stands in the log.
    static bool paste(QTextStream &stream);
    static void initCmds();
};
#endif
