// SPDX-License-Identifier: Apache-2.0
#include "fgenintcommandfile.h"

#include "fcmdbinder.h"
#include "fgenintwritercore.h"

F_CLASS_IMPL(FGenIntCommandFile)

std::shared_ptr<FGenIntCommandFile> FGenIntCommandFile::create(const std::string &name)
{
    const auto file = f_make_shared<FGenIntCommandFile>(name);
    file->registerObject();
    return file;
}

std::vector<QString> FGenIntCommandFile::getEntryNames() const
{
    return FGenIntTagScanner::distinctNames(text(), Qt::CaseSensitive);
}

void FGenIntCommandFile::updateFile(const QString &oldName, const QString &newName)
{
    if (oldName.isEmpty() || newName.isEmpty() || oldName == newName)
        return;
    setContent(FGenIntTagText::updateTag(text(), oldName, newName));
}

const FGenIntExpander &FGenIntCommandFile::expander() const
{
    const bool force = getForceWindowsLineEndings();
    if (!utf8()) {
        if (!mExpander || !mExpander->isFor(text(), force))
            mExpander = std::make_shared<const FGenIntExpander>(text(), force);
    } else if (!mExpander || !mExpander->isFor(utf8(), force)) {
        mExpander = std::make_shared<const FGenIntExpander>(utf8(), force);
    }
    return *mExpander;
}

void FGenIntCommandFile::initCmds()
{
    FCmdBinder<FGenIntCommandFile> c;
    c.creator("genericIntegrationCommandFile", &FGenIntCommandFile::create).fills();
}
