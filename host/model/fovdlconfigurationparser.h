// SPDX-License-Identifier: Apache-2.0
#ifndef FOVDLCONFIGURATIONPARSER_H
#define FOVDLCONFIGURATIONPARSER_H
#include "fexpr.h"

#include <unordered_map>

/// Imports a file that holds further results as an object of the model.
class FOvdlConfigurationParser
{
public:
    explicit FOvdlConfigurationParser(const std::string &) {}
    /// Reads \p path, which has the format \p importType ("tecplot"), into a table under \p name.
    /// Anything else, or a damaged file, is logged and false.
    bool doImport(const std::string &importType, const std::string &path, const std::string &name);
    const std::unordered_map<std::string, FExpr<FObject>> &objects() const { return mObjects; }

private:
    std::unordered_map<std::string, FExpr<FObject>> mObjects;
};
#endif
