// SPDX-License-Identifier: Apache-2.0
#include "fgenintdefinitionparser.h"

#include "fdefinitiongenint.h"
#include "fgenintcommandfile.h"
#include "fgenintresultsfile.h"
#include "fimportrules.h"
#include "fmarloctrl.h"
#include "fscript.h"

#include <QRegExp>

namespace {
/// The word behind the first \p key, up to white space.
std::string keyValue(const QString &text, const QString &key)
{
    const int at = text.indexOf(key);
    if (at < 0)
        return std::string();
    const int begin = at + key.size();
    const int end = text.indexOf(QRegExp("\\s"), begin);
    return S(text.mid(begin, end < 0 ? -1 : end - begin));
}
} // namespace

const FImportRules &FGenIntDefinitionParser::rules()
{
    static const FImportRules sRules(
        {&FGenIntCommandFile::staticClass(), &FGenIntResultsFile::staticClass()});
    return sRules;
}

bool FGenIntDefinitionParser::prepareObjects(const QString &text, size_t line)
{
    if (text.isEmpty() || !getDefinition().ptr<FDefinitionGenInt>())
        return true;
    mMade = f_make_shared<FObject>();
    FScriptReader reader(S(text), mFile, line);
    reader.setRules(&rules());
    {
        const FLoadingScope loading;
        mMade->startParentReg();
        reader.run();
        mMade->stopParentReg();
    }
    mErrors.insert(mErrors.end(), reader.errors().begin(), reader.errors().end());
    return reader.errors().empty();
}

void FGenIntDefinitionParser::importObjectsFromString(const QString &text)
{
    const auto definition = getDefinition().ptr<FDefinitionGenInt>();
    if (text.isEmpty() || !definition || (!mMade && !prepareObjects(text, 1)))
        return;
    for (const auto &made : mMade->getChildren<FObject>())
        definition->adoptChild(made);
    mMade = nullptr;
    const std::string current = keyValue(text, QStringLiteral("curFile : "));
    const std::string last = keyValue(text, QStringLiteral("lastFile : "));
    FDefinitionGenInt::Files files;
    std::shared_ptr<FGenIntFile> first;
    for (const auto &file : definition->getChildren<FGenIntFile>()) {
        if (!first)
            first = file;
        files.push_back(FExpr<FGenIntFile, true>(file));
        if (file->getName() == current)
            definition->setCurFile(file);
        if (file->getName() == last)
            definition->setLastFile(file);
        file->registerObject();
    }
    definition->setFiles(files);
    if (first && !definition->getCurFile())
        definition->setCurFile(first);
}
