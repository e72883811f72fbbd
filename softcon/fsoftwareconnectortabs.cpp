// SPDX-License-Identifier: Apache-2.0
// The tabs of a connector, what is added by calls, and its commands.
#include "fcmdbinder.h"
#include "fgenintcommandfile.h"
#include "fgenintcommandfileeditor.h"
#include "fgenintresultsfile.h"
#include "fgenintresultsfileeditor.h"
#include "fhistory.h"
#include "fmarloctrl.h"
#include "fselectionset.h"
#include "fsoftconentryitems.h"
#include "fsoftconscene.h"
#include "fsoftcontemplateitems.h"
#include "fsoftconview.h"
#include "fsoftwareconnector.h"

namespace {
/// The file that a tab shows; null for the overview.
const FObject *fileOf(QWidget *page)
{
    const auto *tab = qobject_cast<FTemplateTab *>(page);
    return tab ? tab->file().get() : nullptr;
}
} // namespace

int FSoftwareConnector::tabOf(const FObject *file) const
{
    for (int i = 0; file && tabWidget() && i < tabWidget()->count(); ++i)
        if (fileOf(tabWidget()->widget(i)) == file)
            return i;
    return -1;
}

int FSoftwareConnector::addNewTab(const FExpr<FGenIntFile> &given)
{
    const auto file = given.getPtr();
    if (!file || !tabWidget())
        return 0;
    FTemplateTab *tab = nullptr;
    if (auto input = std::dynamic_pointer_cast<FGenIntCommandFile>(file)) {
        auto *editor = new FGenIntCommandFileEditor(tabWidget(), FExpr<FGenIntCommandFile>(input),
                                                    mComputation);
        editor->setCommandFile(FExpr<FGenIntCommandFile>(input));
        tab = editor;
    } else if (auto result = std::dynamic_pointer_cast<FGenIntResultsFile>(file)) {
        auto *editor = new FGenIntResultsFileEditor(tabWidget(), FExpr<FGenIntResultsFile>(result),
                                                    mComputation);
        editor->setResultsFile(FExpr<FGenIntResultsFile>(result));
        tab = editor;
    } else {
        return 0;
    }
    connect(tab, &FTemplateTab::gotFocus, this, &FSoftwareConnector::gotFocus);
    const int index =
        tabWidget()->addTab(tab, QString(file->getFileName()).replace('&', QLatin1String("&&")));
    tabWidget()->setTabToolTip(index, file->getFileName());
    return index;
}

void FSoftwareConnector::gotoTab(const FExpr<FGenIntFile> &file)
{
    if (!tabWidget())
        return;
    const int known = tabOf(file.getExpr().get());
    tabWidget()->setCurrentIndex(known >= 0 ? known : addNewTab(file));
}

void FSoftwareConnector::removeOldTab(const FExpr<FGenIntFile> &file)
{
    const int index = tabOf(file.getExpr().get());
    if (index <= 0)
        return;
    tabWidget()->setCurrentIndex(0);
    QWidget *page = tabWidget()->widget(index);
    tabWidget()->removeTab(index);
    page->deleteLater();
}

void FSoftwareConnector::closeTab(int index)
{
    if (index <= 0 || !tabWidget() || index >= tabWidget()->count())
        return;
    QWidget *page = tabWidget()->widget(index);
    if (auto *tab = qobject_cast<FTemplateTab *>(page))
        tab->commit();
    tabWidget()->removeTab(index);
    page->deleteLater();
}

void FSoftwareConnector::gotoOverview()
{
    if (tabWidget())
        tabWidget()->setCurrentIndex(0);
}

void FSoftwareConnector::renameTab(const FExpr<FGenIntFile> &given)
{
    const auto file = given.getPtr();
    const int index = tabOf(file.get());
    if (index < 0)
        return;
    const QString name = QString(file->getFileName()).replace('&', QLatin1String("&&"));
    if (tabWidget()->tabText(index) != name)
        tabWidget()->setTabText(index, name);
    tabWidget()->setTabToolTip(index, file->getFileName());
}

/// Entering an input template selects all configurations of the integration, so that the object
/// editor shows the entries.
void FSoftwareConnector::gotFocus()
{
    auto *editor = tabWidget()
                       ? qobject_cast<FGenIntCommandFileEditor *>(tabWidget()->currentWidget())
                       : nullptr;
    if (!editor || !mComputation)
        return;
    if (!mDefinition)
        doUpdate();
    if (!mDefinition)
        return;
    std::vector<FExprBase> selected, unselected;
    for (const auto &one : getManageds<FConfigurationGenInt>()) {
        const auto configuration = one.getPtr();
        if (configuration && configuration->getDefinition().getExpr() == mDefinition.getExpr())
            (configuration->isSelected() ? selected : unselected).push_back(one);
    }
    if (!unselected.empty())
        unselected.insert(unselected.end(), selected.begin(), selected.end());
    editor->setFocusToEditor();
    if (unselected.empty())
        return;
    FSelectionSet::instance()->clear(false);
    FSelectionSet::instance()->set(unselected, false);
}

std::vector<QPointer<FGenIntResultsFileEditor>> FSoftwareConnector::getResultsFileEditors() const
{
    std::vector<QPointer<FGenIntResultsFileEditor>> found;
    for (int i = 0; tabWidget() && i < tabWidget()->count(); ++i)
        if (auto *editor = qobject_cast<FGenIntResultsFileEditor *>(tabWidget()->widget(i)))
            found.emplace_back(editor);
    return found;
}

void FSoftwareConnector::refreshCommandFileEditors()
{
    const FHistoryBlocker noStep;
    for (int i = 0; tabWidget() && i < tabWidget()->count(); ++i)
        if (auto *tab = qobject_cast<FTemplateTab *>(tabWidget()->widget(i)))
            tab->refresh();
    if (scene())
        scene()->refreshEntryItems();
}

void FSoftwareConnector::refreshAll()
{
    for (const auto &one : getManageds<FSoftwareConnector>())
        if (const auto connector = one.getPtr()) {
            connector->update(nullptr);
            connector->refreshCommandFileEditors();
        }
}

FExpr<FResultsFileName> FSoftwareConnector::addOutputFile(const std::string &path)
{
    if (!scene())
        return {};
    FSoftwareConnectorItem *item =
        scene()->createItem(nullptr, FExpr<FObject>(FResultsFileName::mpNull), path, "");
    const auto *made = dynamic_cast<FSoftConObjectItem *>(item);
    if (!made)
        return {};
    const auto entry = made->getItemObject().ptr<FEntry>();
    return FExpr<FResultsFileName>(entry ? entry->getValue().ptr<FResultsFileName>()
                                         : made->getItemObject().ptr<FResultsFileName>());
}

namespace {
/// Names and fills \p file, and makes its item.
template <class T>
void addTemplate(FSoftConScene *scene, const std::shared_ptr<T> &file, const std::string &content,
                 const std::string &name)
{
    file->setContent(Q(content));
    file->setFileName(Q(name));
    if (!scene)
        return;
    if (auto *item = dynamic_cast<FSoftConTemplateItem *>(
            scene->createItem(nullptr, FExpr<FObject>(file), "", "")))
        item->addTemplateObject(FExpr<FGenIntFile>(file));
}
} // namespace

void FSoftwareConnector::addInputTemplateFromString(const std::string &content,
                                                    const std::string &name)
{
    const FHistoryTransaction step(nullptr, F_TEXT("Add input template"), true);
    addTemplate(scene(), FGenIntCommandFile::create(""), content, name);
}

FExpr<FGenIntResultsFile>
FSoftwareConnector::addOutputTemplateFromString(const std::string &content, const std::string &name)
{
    const FHistoryTransaction step(nullptr, F_TEXT("Add output template"), true);
    const auto file = FGenIntResultsFile::create("");
    addTemplate(scene(), file, content, name);
    return FExpr<FGenIntResultsFile>(file);
}

std::shared_ptr<FSoftwareConnector> FSoftwareConnector::createForScript(const std::string &name)
{
    return create(name, nullptr);
}

void FSoftwareConnector::setComputationCommand(const FExpr<FExternComputation> &computation)
{
    setComputation(computation, false);
}

std::string FSoftwareConnector::helpText()
{
    const std::string product = FMarloCtrl::instance()->productName();
    const auto head = [](const QString &label) { return "<b>" + S(label) + "</b>"; };
    return head(smExportAreaLabel) + "<p>Input geometry gets exported by " + product +
           " and handed over to the external application.</p><p>Add geometry via drag & drop from "
           "the object tree onto the input area. Then refer to the object editor and set a file "
           "name and the type of export.</p>" +
           head(smInputAreaLabel) +
           "<p>Input files are general files that need to be handed over to the external "
           "application - either simply copied or additionally manipulated for each "
           "design.</p><p>Add input files by clicking on the plus-button and select one ore more "
           "files or a directory from the file dialog. </p><p>By default, " +
           product +
           " leaves all input files untouched, i.e. files get simply copied into the working "
           "(design) directory.</p><p>In addition, ASCII files can be converted into template "
           "files: A template file is stored in the project and can be edited from within " +
           product +
           ". Typically, fixed values in ASCII templates are replaced by variable values that are "
           "controlled and e.g. varied by the user or automatically by design engines. Convert an "
           "input file into a template file via double-click onto the input file icon. A new tab "
           "with a template file editor will then be created. Click on the tab or double-click on "
           "the template file symbol to enter the input template file editor.</p>" +
           head(smImportAreaLabel) +
           "<p>Result files are generated by the external application and get imported and "
           "visualized by " +
           product +
           ". Typical files are table data (csv) or screenshots (png) as well as simulation data "
           "(e.g. vtk).</p><p>Add result files or directories by clicking on the "
           "plus-button.</p>" +
           head(smOutputAreaLabel) +
           "<p>Result values are numerical data that needs to be extracted from an ASCII file "
           "which was generated by the external application.</p><p>Add result templates files or "
           "an entire directory by clicking on the plus-button. A new tab with a result template "
           "file editor will then be created for each file. Click on the tab or double-click on "
           "the result template file symbol to enter the editor.</p>";
}

void FSoftwareConnector::initCmds()
{
    using T = FSoftwareConnector;
    FCmdBinder<T> c;
    c.creator("softwareConnector", &T::createForScript).selectOnExec(false);
    c.attribute("setComputation", &T::setComputationCommand, &T::computationForScript,
                FArg{"computation"})
        .hidden();
    c.attribute("setItemSize", &T::setItemSize, &T::itemSize, FArg{"size"})
        .hidden()
        .systemFlag(2)
        .guiThread();
    c.attribute("setResultsPath", &T::setResultsPath, &T::getResultsPath, FArg{"resultsPath"})
        .hidden()
        .systemFlag(2);
    c.global("refreshAllSoftCons", &T::refreshAll).systemFlag(2).guiThread();
    c.global("chooseResultsFile", &T::chooseResultsFile).systemFlag(2).guiThread();
    c.flushNow();
    mpNull->addDocu(helpText(), 5);
}
