// SPDX-License-Identifier: Apache-2.0
// The items of the scene: made, kept in step with the model, deleted.
#include "fcmd.h"
#include "fconfigurationgenint.h"
#include "fdefinitiongenint.h"
#include "fgenintcommandfile.h"
#include "fgenintcomputation.h"
#include "fgenintresultsfile.h"
#include "fhistory.h"
#include "fini.h"
#include "flogmsg.h"
#include "fobjecteditorwgt.h"
#include "fpathmanager.h"
#include "fpreviewdialog.h"
#include "fselectionset.h"
#include "fsoftconcomputationitem.h"
#include "fsoftcondialogs.h"
#include "fsoftconentryitems.h"
#include "fsoftconlayout.h"
#include "fsoftconscene.h"
#include "fsoftcontemplateitems.h"
#include "fsoftwareconnector.h"
#include "fworkspace.h"

#include <QAction>
#include <QCheckBox>
#include <QDir>
#include <QFileInfo>
#include <QGraphicsProxyWidget>

namespace {
const char *const kSource = "SoftwareConnector";
const char *const kTemplatePath = "SoftwareConnector/addTemplatePath";
const char *const kConvert = "SoftwareConnector/convertToTemplate";

void refuse(const std::string &what)
{
    FLogMsg::info(kSource, "Could not add " + what, "", nullptr);
}

QString withoutLeadingSlashes(QString name)
{
    while (name.startsWith('/') || name.startsWith('\\'))
        name.remove(0, 1);
    return name;
}
} // namespace

void FSoftConScene::addItem(FSoftwareConnectorItem *item)
{
    mItems.insert(item);
    QGraphicsScene::addItem(item);
}

void FSoftConScene::dropLater(FSoftwareConnectorItem *item) const
{
    auto *self = const_cast<FSoftConScene *>(this);
    mItems.erase(item);
    if (item->scene() == this)
        self->removeItem(item);
    item->deleteLater(); // an event of it may be under way
}

bool FSoftConScene::isPartAlready(const std::string &filePath, const std::string &rootPath) const
{
    if (filePath.empty())
        return false;
    QString name = Q(filePath);
    if (name.startsWith(Q(rootPath)))
        name.remove(0, Q(rootPath).size());
    name = withoutLeadingSlashes(name);
    const auto computation = genIntComputation();
    const auto configuration = computation ? computation->getConfiguration().getPtr() : nullptr;
    const auto definition =
        configuration ? configuration->getDefinition().ptr<FDefinitionGenInt>() : nullptr;
    if (!definition)
        return false;
    for (const auto &one : definition->getFiles(1)) {
        const auto file = one.getPtr();
        if (!file || file->getFileName().compare(name, Qt::CaseInsensitive) != 0)
            continue;
        FLogMsg::info(kSource, "The file " + S(name) + " is already part of this set up.",
                      "Item creation aborted.", nullptr);
        return true;
    }
    return false;
}

FSoftwareConnectorItem *FSoftConScene::makeEntryItem(QGraphicsItem *parent,
                                                     const std::shared_ptr<FEntry> &entry) const
{
    auto *self = const_cast<FSoftConScene *>(this);
    const FExpr<FObject> object(entry);
    if (entry->hasValueType(FGeometryExport::mpNull))
        return new FSoftConExportItem(self, parent, object);
    if (entry->hasValueType(FResultsFileName::mpNull))
        return new FSoftConImportItem(self, parent, object);
    const auto value = entry->getValue().getPtr();
    const auto file = std::dynamic_pointer_cast<FInputFile>(value);
    if (!file) {
        refuse("item of type " + (value ? value->getClass() : "nullptr") + ".");
        return nullptr;
    }
    const auto command = file->getFileName().getExpr();
    if (command && command->isFCmd() && command->isValid()) {
        std::set<std::shared_ptr<FObject>> suppliers;
        command->getSuppliers(suppliers);
        for (const auto &supplier : suppliers)
            if (dynamic_cast<const FExternComputation *>(supplier.get())) {
                auto *item = new FSoftConFileNameRefItem(self, parent, object);
                item->setIsRef(true);
                return item;
            }
    }
    return new FSoftConFileNameItem(self, parent, object, false);
}

FSoftwareConnectorItem *FSoftConScene::makeItem(QGraphicsItem *parent, const FExpr<FObject> &given,
                                                const std::string &filePath,
                                                const std::string &rootPath) const
{
    auto *self = const_cast<FSoftConScene *>(this);
    const std::shared_ptr<FObject> object = given.getExpr();
    if (object->isTypeOf(FExternComputation::mpNull)) {
        auto *item = new FSoftConComputationItem(self, parent, given);
        mLayout->setComputationPos(item);
        return item;
    }
    if (object->isTypeOf(FGenIntCommandFile::mpNull))
        return new FSoftConInputTemplateItem(self, parent, given);
    if (object->isTypeOf(FGenIntResultsFile::mpNull))
        return isPartAlready(filePath, rootPath)
                   ? nullptr
                   : new FSoftConOutputTemplateItem(self, parent, given);
    if (object->isTypeOf(FObjectList::mpNull))
        return new FSoftConExportItem(self, parent, given);
    if (object->isTypeOf(FInputFile::mpNull))
        return new FSoftConFileNameItem(self, parent, given, false);
    if (object->isTypeOf(FBool::mpNull))
        return new FSoftConFileNameRefItem(self, parent, given);
    if (object->isTypeOf(FResultsFileName::mpNull))
        return new FSoftConImportItem(self, parent, given);
    if (auto entry = std::dynamic_pointer_cast<FEntry>(object))
        return makeEntryItem(parent, entry);
    refuse("item of type " + object->getClass() + ".");
    return nullptr;
}

FSoftwareConnectorItem *FSoftConScene::createItem(QGraphicsItem *parent,
                                                  const FExpr<FObject> &object,
                                                  const std::string &filePath,
                                                  const std::string &rootPath) const
{
    if (!object.getExpr()) {
        refuse("nullptr-item.");
        return nullptr;
    }
    FSoftwareConnectorItem *made = makeItem(parent, object, filePath, rootPath);
    auto *item = dynamic_cast<FSoftConObjectItem *>(made);
    if (!item)
        return made;
    item->init();
    const bool isList = object.getExpr()->isTypeOf(FObjectList::mpNull);
    if (isList || object.getExpr()->isNull()) {
        item->createItemObject(Q(filePath), isList ? QString() : Q(rootPath));
        const auto bound = item->getItemObject().getExpr();
        if (!bound || bound->isNull() || bound == object.getExpr()) { // told by the item
            dropLater(item);
            return nullptr;
        }
    }
    item->updateIcon();
    item->updateItem();
    calcItemRatios();
    redraw();
    return item;
}

void FSoftConScene::createItems(
    const std::vector<std::shared_ptr<FSoftConItemStructure>> &structures) const
{
    if (structures.size() > kMostItems) {
        FLogMsg::info(kSource, std::to_string(structures.size()) + " items should be created.",
                      "It seems unlikely that so many files are needed. Item creation skipped.",
                      nullptr);
        return;
    }
    for (const auto &structure : structures) {
        const auto object = structure->mObject.getExpr();
        if (object && object->isTypeOf(FGenIntFile::mpNull) &&
            !checkFileSize(structure->mFileSize, structure->mFilePath).empty())
            continue;
        createItem(nullptr, structure->mObject, S(structure->mFilePath), S(structure->mRootPath));
    }
}

void FSoftConScene::createItems(const QStringList &files, const FExpr<FObject> &object,
                                const QString &rootPath, bool relative) const
{
    std::vector<std::shared_ptr<FSoftConItemStructure>> found;
    for (const QString &file : files) {
        const QFileInfo info(file);
        const QString root = rootPath.isEmpty() ? info.canonicalPath() : rootPath;
        collectItems(info.exists() ? info.canonicalFilePath() : file, object, root, found,
                     relative);
    }
    createItems(found);
}

void FSoftConScene::collectItems(const QString &path, const FExpr<FObject> &object,
                                 const QString &rootPath,
                                 std::vector<std::shared_ptr<FSoftConItemStructure>> &out,
                                 bool relative) const
{
    const QFileInfo info(path);
    if (info.isDir()) {
        // A link may lead back up; beyond the limit nothing is made anyway.
        if (info.isSymLink() || out.size() > 100 * kMostItems)
            return;
        for (const QString &entry :
             QDir(path).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDir::Unsorted))
            collectItems(path + '/' + entry, object, rootPath, out, relative);
        return;
    }
    auto structure = std::make_shared<FSoftConItemStructure>();
    structure->mObject = object;
    structure->mFilePath = path;
    structure->mFileSize = info.size();
    structure->mRootPath = rootPath;
    if (relative) {
        QString folder = QString(path).remove(rootPath);
        if (folder.startsWith('/') || folder.startsWith('\\'))
            folder.remove(0, 1);
        structure->mRootPath = folder.remove(info.fileName());
    }
    out.push_back(structure);
}

// Add actions

void FSoftConScene::addItem(FSoftConDialog *dialog, const FExpr<FObject> &given) const
{
    const auto connector = getConnector();
    if (!connector)
        return;
    FExpr<FObject> object = given;
    const bool isInput = object.getExpr()->isTypeOf(FInputFile::mpNull);
    const auto computation = mComputation.getPtr();
    const QString runs =
        computation
            ? Q(FPathManager::instance()->getDesignDirAbs(nullptr) + "/" + computation->getName())
            : QString();
    QString start;
    if (isInput) {
        start = FIni().value(QLatin1String(kTemplatePath)).toString();
    } else {
        start = Q(connector->getResultsPath());
        if (start.isEmpty() && QDir(runs).exists())
            start = runs;
    }
    if (start.isEmpty())
        start = Q(FPathManager::instance()->getProjectDirAbs());
    dialog->setDirectory(start);
    if (dialog->exec() != QDialog::Accepted)
        return;
    const QStringList files = dialog->selectedFiles();
    QString root = dialog->directory().canonicalPath();
    if (object.getExpr()->isTypeOf(FResultsFileName::mpNull) && QDir(runs).exists() &&
        !files.isEmpty() && root.contains(runs))
        root = runs;
    bool relative = false;
    if (const auto *input = qobject_cast<FSoftConInputDialog *>(dialog)) {
        FIni settings;
        settings.setValue(QLatin1String(kTemplatePath), root);
        const bool convert = input->mConvertCheckBox && input->mConvertCheckBox->isChecked();
        settings.setValue(QLatin1String(kConvert), convert);
        relative = convert || input->mAddNew;
        if (relative)
            object = FExpr<FObject>(FGenIntCommandFile::mpNull);
    } else {
        connector->setResultsPath(S(dialog->directory().canonicalPath()));
    }
    createItems(files, object, root, relative);
}

void FSoftConScene::addInput()
{
    FSoftConInputDialog dialog(nullptr, QStringLiteral("Add file as input for external executable"),
                               QString(), FIni().value(QLatin1String(kConvert), false).toBool());
    addItem(&dialog, FExpr<FObject>(FInputFile::mpNull));
}

void FSoftConScene::addOutput()
{
    FSoftConDialog dialog(
        nullptr, QStringLiteral("Add template file as output from external executable"), QString());
    addItem(&dialog, FExpr<FObject>(FGenIntResultsFile::mpNull));
}

void FSoftConScene::addImport()
{
    FSoftConResultFilesDialog dialog(
        nullptr, QStringLiteral("Add geometry import as result from external executable"),
        QString());
    addItem(&dialog, FExpr<FObject>(FResultsFileName::mpNull));
}

void FSoftConScene::addExport()
{
    createItem(nullptr, FExpr<FObject>(f_make_shared<FObjectList>()), "", "");
}

void FSoftConScene::addFile() { createItem(nullptr, FExpr<FObject>(FInputFile::mpNull), "", ""); }

void FSoftConScene::showOutputFilesPreview()
{
    if (const auto computation = genIntComputation())
        FPreviewDialog::show(computation, FWorkspace::instance()->window());
}

// In step with the model

std::vector<FExpr<FObject>> FSoftConScene::wantedObjects() const
{
    std::vector<FExpr<FObject>> wanted;
    wanted.emplace_back(static_cast<const FExprBase &>(mComputation));
    const auto computation = genIntComputation();
    const auto configuration = computation ? computation->getConfiguration().getPtr() : nullptr;
    if (!configuration)
        return wanted;
    for (const FExpr<FObject> &kind :
         {FExpr<FObject>(FGeometryExport::mpNull), FExpr<FObject>(FInputFile::mpNull),
          FExpr<FObject>(FResultsFileName::mpNull)})
        for (const auto &entry : configuration->getEntry(kind.getExpr(), true))
            wanted.emplace_back(entry);
    if (const auto definition = configuration->getDefinition().ptr<FDefinitionGenInt>())
        for (const auto &file : definition->getFiles())
            if (file)
                wanted.emplace_back(static_cast<const FExprBase &>(file));
    return wanted;
}

bool FSoftConScene::fits(const FSoftConObjectItem &item) const
{
    const auto entry = item.getItemObject().ptr<FEntry>();
    if (!entry)
        return true;
    if (dynamic_cast<const FSoftConExportItem *>(&item))
        return entry->hasValueType(FGeometryExport::mpNull);
    if (dynamic_cast<const FSoftConFileNameItem *>(&item))
        return entry->hasValueType(FInputFile::mpNull);
    if (dynamic_cast<const FSoftConImportItem *>(&item))
        return entry->hasValueType(FResultsFileName::mpNull);
    return true;
}

void FSoftConScene::doUpdate() const
{
    if (!mComputation)
        return;
    std::unordered_map<const FObject *, FSoftConObjectItem *> byObject;
    std::vector<FSoftConObjectItem *> stale;
    for (QGraphicsItem *item : items(Qt::AscendingOrder))
        if (auto *one = dynamic_cast<FSoftConObjectItem *>(item)) {
            stale.push_back(one);
            byObject.emplace(one->getItemObject().getExpr().get(), one);
        }
    std::unordered_set<const FSoftConObjectItem *> kept;
    std::vector<FExpr<FObject>> missing;
    for (const FExpr<FObject> &object : wantedObjects()) {
        const auto found = byObject.find(object.getExpr().get());
        if (found != byObject.end() && fits(*found->second) && !kept.count(found->second))
            kept.insert(found->second);
        else if (object.getExpr())
            missing.push_back(object);
    }
    auto *self = const_cast<FSoftConScene *>(this);
    bool isChanged = false;
    for (FSoftConObjectItem *item : stale) {
        if (kept.count(item))
            continue;
        const auto file = std::dynamic_pointer_cast<FGenIntFile>(item->getItemObject().getExpr());
        // The tab of a file that was destroyed is found by its identity.
        Q_EMIT self->removeViewerTab(FExpr<FGenIntFile>(file));
        dropLater(item);
        isChanged = true;
    }
    for (const FExpr<FObject> &object : missing) {
        if (const auto file = object.ptr<FGenIntFile>())
            Q_EMIT self->addViewerTab(FExpr<FGenIntFile>(file));
        createItem(nullptr, object, "", "");
    }
    if (isChanged) {
        calcItemRatios();
        redraw();
    }
}

void FSoftConScene::updateInputFileItems()
{
    for (QGraphicsItem *item : items())
        if (const auto *file = dynamic_cast<FSoftConFileNameItem *>(item))
            file->updateIcon();
}

void FSoftConScene::refreshEntryItems()
{
    for (QGraphicsItem *item : items())
        if (const auto *entry = dynamic_cast<FSoftConEntryItem *>(item))
            if (entry->getHandle())
                entry->getHandle()->setOutOfDate(0);
}

void FSoftConScene::setTabName(const FExpr<FGenIntFile> &file)
{
    if (const auto connector = getConnector())
        connector->renameTab(file);
}

void FSoftConScene::gotoTab(const FExpr<FGenIntFile> &file) { Q_EMIT gotoViewerTab(file); }

// Deleting

void FSoftConScene::deleteItem(QAction *action)
{
    const auto *proxy = qobject_cast<QGraphicsProxyWidget *>(action ? action->parent() : nullptr);
    if (!proxy)
        return;
    for (QGraphicsItem *item = proxy->parentItem(); item; item = item->parentItem())
        if (auto *own = dynamic_cast<FSoftConObjectItem *>(item)) {
            deleteItem(own);
            return;
        }
}

void FSoftConScene::deleteItem(FSoftConObjectItem *item)
{
    if (!item)
        return;
    const FHistoryTransaction step(nullptr, F_TEXT("software connector: delete item"), true);
    const auto computation = genIntComputation();
    const auto configuration = computation ? computation->getConfiguration().getPtr() : nullptr;
    const auto definition =
        configuration ? configuration->getDefinition().ptr<FDefinitionGenInt>() : nullptr;
    const auto connector = getConnector();
    const auto object = item->getItemObject();
    if (const auto file = object.ptr<FGenIntFile>()) {
        if (connector)
            connector->removeOldTab(FExpr<FGenIntFile>(file));
        const auto input = std::dynamic_pointer_cast<FGenIntCommandFile>(file);
        if (input && definition) {
            std::vector<FExpr<FEntryBase>> own;
            for (const QString &name : input->getEntryNames())
                if (const auto entry = definition->getEntryOfScope(S(name)))
                    own.emplace_back(entry);
            input->setContent(QLatin1String(""));
            bool isRemoved = false;
            for (const auto &entry : own)
                if (!definition->commandFileReferencesEntry(entry))
                    isRemoved = definition->removeEntry(entry) || isRemoved;
            if (isRemoved && configuration->isSelected())
                FObjectEditorWgt::reinitializeAll();
        }
    } else if (const auto entry = object.ptr<FEntry>()) {
        if (definition && entry->getEntryDefinition()) {
            definition->removeEntryFromCommandFiles(
                FExpr<FEntryBase>(static_cast<const FExprBase &>(entry->getEntryDefinition())));
            if (connector)
                connector->refreshCommandFileEditors();
        }
    }
    if (item->getEditorItemObject() == mCurrentObject)
        mCurrentObject = FExpr<FObject>();
    removeItem(item);
    item->prepareToBeDestroyed();
    dropLater(item);
    calcItemRatios();
    redraw();
}
