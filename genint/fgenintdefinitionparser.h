// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTDEFINITIONPARSER_H
#define FGENINTDEFINITIONPARSER_H
#include "fovdldefinitionparser.h"

/// Reads the object half of a saved definition: the template files. It is taken as data, see
/// FImportRules.
class FGenIntDefinitionParser : public FOvdlDefinitionParser
{
public:
    using FOvdlDefinitionParser::FOvdlDefinitionParser;
    void importObjectsFromString(const QString &text) override;
    /// What the object half may say.
    static const FImportRules &rules();

protected:
    bool prepareObjects(const QString &text, size_t line) override;

private:
    std::shared_ptr<FObject> mMade; // has the objects as its children until they are taken over
};
#endif
