// SPDX-License-Identifier: Apache-2.0
// The scene looks for files that a run has left.
#include "fgenintcomputation.h"
#include "fhistory.h"
#include "fpathmanager.h"
#include "fresults.h"
#include "fsoftconentryitems.h"
#include "fsoftconitemstructure.h"
#include "fsoftconscene.h"

#include <QAbstractButton>
#include <QDateTime>
#include <QDir>
#include <QGraphicsProxyWidget>

namespace {
constexpr unsigned kPureText = 3;
constexpr size_t kEnough = 1000; ///< new files; far fewer are refused already
} // namespace

bool FSoftConScene::isScanning() const
{
    const auto *button =
        mScanButton ? qobject_cast<QAbstractButton *>(mScanButton->widget()) : nullptr;
    return button && button->isChecked();
}

bool FSoftConScene::containsImport(const QString &path) const
{
    const QString name = QFileInfo(path).fileName();
    for (QGraphicsItem *one : items()) {
        const auto *item = dynamic_cast<FSoftConImportItem *>(one);
        const auto entry = item ? item->getItemObject().ptr<FEntry>() : nullptr;
        const auto value = entry ? entry->getValue().ptr<FResultsFileName>() : nullptr;
        if (value && Q(value->toPlainString()) == name)
            return true;
    }
    return false;
}

void FSoftConScene::scanForResults(const QDateTime &since) const
{
    const auto computation = mComputation.getPtr();
    if (!isScanning() || !computation)
        return;
    const QString root = QDir(Q(FPathManager::instance()->getResultsDirAbs(nullptr, nullptr)) +
                              '/' + Q(computation->getName()))
                             .canonicalPath();
    if (root.isEmpty())
        return;
    std::vector<std::shared_ptr<FSoftConItemStructure>> found;
    scanDirForResults(root + '/', root + '/', found, since);
    if (found.empty())
        return;
    const FHistoryTransaction step(nullptr, F_TEXT("scan for results"), true);
    createItems(found);
}

void FSoftConScene::scanDirForResults(const QString &dir, const QString &root,
                                      std::vector<std::shared_ptr<FSoftConItemStructure>> &out,
                                      const QDateTime &since) const
{
    // A link leads out of the folder, or back up.
    const QFileInfoList entries = QDir(dir).entryInfoList(
        QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks, QDir::Time);
    for (const QFileInfo &entry : entries) {
        if (out.size() > kEnough)
            return;
        if (entry.isDir()) {
            scanDirForResults(entry.filePath() + '/', root, out, since);
            continue;
        }
        const QString path = entry.canonicalFilePath();
        if (entry.isExecutable() || entry.lastModified() <= since ||
            FResultsGeneric::getResultsFileType(S(path)) == kPureText ||
            containsImport(path.mid(root.size())))
            continue;
        auto structure = std::make_shared<FSoftConItemStructure>();
        structure->mObject = FExpr<FObject>(FResultsFileName::mpNull);
        structure->mFilePath = path;
        structure->mRootPath = root;
        structure->mFileSize = entry.size();
        out.push_back(structure);
    }
}
