// SPDX-License-Identifier: Apache-2.0
#include "fgenintdefinitionparser.h"

#include "fdefinitiongenint.h"
#include "fmarloctrl.h"
#include "fscript.h"

#include <QRegExp>
#include <QTextStream>

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

void FGenIntDefinitionParser::importObjectsFromString(const QString &text)
{
    const auto definition = getDefinition().ptr<FDefinitionGenInt>();
    if (text.isEmpty() || !definition)
        return;
    QString copy = text;
    QTextStream stream(&copy);
    {
        const FLoadingScope loading;
        definition->startParentReg();
        FCmdInput input;
        input.setFile("definition " + definition->getName());
        input.setStream(stream);
        input.run();
        definition->stopParentReg();
    }
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
