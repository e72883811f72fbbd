// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTDEFINITIONPARSER_H
#define FGENINTDEFINITIONPARSER_H
#include "fovdldefinitionparser.h"

/// Reads the object half of a saved definition: its template files.
class FGenIntDefinitionParser : public FOvdlDefinitionParser
{
public:
    using FOvdlDefinitionParser::FOvdlDefinitionParser;
    void importObjectsFromString(const QString &text) override;
};
#endif
