// SPDX-License-Identifier: Apache-2.0
#include "fsoftconentryitems.h"

#include "fconfigurationgenint.h"
#include "fdefinitiongenint.h"
#include "fentry.h"
#include "ffeatures.h"
#include "ffilevalues.h"
#include "fgenintcommandfile.h"
#include "fgenintcomputation.h"
#include "fhistory.h"
#include "ficons.h"
#include "fini.h"
#include "fio.h"
#include "flogmsg.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"
#include "fselectionset.h"
#include "fsoftconlayout.h"
#include "fsoftconscene.h"
#include "fsoftwareconnector.h"
#include "ftheme.h"
#include "ftoolbutton.h"
#include "fviewctrl.h"

#include <QDir>
#include <QFileInfo>
#include <QGraphicsSceneDragDropEvent>
#include <QGraphicsView>
#include <QPainter>
#include <QPainterPath>
#include <QRegularExpression>

namespace {
const char *const kSource = "FSoftConScene";
const char *const kFailed = "Error, failed to add item to software connector.";
constexpr int kPathLength = 30; // of a label, in characters
constexpr int kTextMargin = 6;  // of the short text on a page, in pixels

QString textOf(const FExprBase &handle)
{
    std::string text;
    return FConvert::toText(handle, &text) ? Q(text) : QString();
}

/// What stands behind the last separator.
QString lastPart(const QString &path)
{
    static const QRegularExpression separator(QStringLiteral("/|\\\\"));
    return path.mid(path.lastIndexOf(separator) + 1);
}

/// The file that the expression of a link asks another computation for.
QString nameInLink(QString text)
{
    if (!text.contains(QLatin1String("getResultFileName"), Qt::CaseInsensitive))
        return text;
    text = text.mid(text.lastIndexOf('(') + 1);
    text = text.left(text.indexOf(')'));
    if (text.startsWith('"'))
        text.remove(0, 1);
    if (text.endsWith('"'))
        text.chop(1);
    return text;
}

/// The text of \p handle; of an expression that can't be evaluated now what it asks for.
QString nameBehind(const FExprBase &handle, bool force)
{
    const QString text = force || handle.canSafelyBeUpdated(false) ? textOf(handle) : QString();
    return text.isEmpty() && handle.isExpression() ? nameInLink(Q(handle.toString())) : text;
}

QString withSlash(QString folder)
{
    if (!folder.isEmpty() && !folder.endsWith('/') && !folder.endsWith('\\'))
        folder += '/';
    return folder;
}

/// \p path below \p base; its own if it isn't there.
QString below(const QString &path, const QString &base)
{
    QString name = !base.isEmpty() && path.startsWith(base) ? path.mid(base.size()) : path;
    while (name != path && name.startsWith('/'))
        name.remove(0, 1);
    return name;
}

/// Text between the last separator and the last ".".
std::string baseName(const QString &path)
{
    const QString name = lastPart(path);
    const int dot = name.lastIndexOf('.');
    return S(dot < 0 ? name : name.left(dot));
}

FExprBase text(const QString &given) { return FExprBase(f_make_shared<FString>(S(given))); }

/// A value of the class of \p type that says nothing yet.
FExprBase emptyValue(const FObject &type)
{
    if (type.isTypeOf(FInputFile::mpNull))
        return FExprBase(f_make_shared<FInputFile>(text(QString()), text(QString())));
    if (type.isTypeOf(FResultsFileName::mpNull))
        return FExprBase(f_make_shared<FResultsFileName>(text(QString())));
    return FExprBase(type.clone());
}

FExpr<FEntry> refuse(const char *message)
{
    FLogMsg::info(kSource, message, kFailed, nullptr);
    return {};
}
} // namespace

std::shared_ptr<FEntry> FSoftConEntryItem::entry() const
{
    const auto entry = getItemObject().getExpr();
    return entry && !entry->isDestroyed() ? std::dynamic_pointer_cast<FEntry>(entry) : nullptr;
}

void FSoftConEntryItem::launchEditor() const
{
    if (FMarloCtrl::instance()->isLoadingProject())
        return;
    const auto list = f_make_shared<FObjectList>();
    list->append(getItemObject());
    FViewCtrl::instance()->openObjectEditor(list->getObjects());
}

FExpr<FEntry> FSoftConEntryItem::getEntry(const std::string &group, const std::string &name,
                                          const std::shared_ptr<FObject> &type) const
{
    const auto computation = genIntComputation();
    const auto configuration =
        computation ? computation->getConfiguration().ptr<FConfigurationGenInt>() : nullptr;
    const auto definition =
        configuration ? configuration->getDefinition().ptr<FDefinitionGenInt>() : nullptr;
    if (!definition)
        return {};
    const FImmediateUpdateBlocker blocker;
    auto parent = definition->rootEntry(group);
    if (!parent)
        parent =
            FEntryDef::create(group, definition, 1, 1, false, true, std::string(), FExprBase());
    const auto parentEntry = parent ? FEntry::create(parent, configuration, nullptr) : nullptr;
    if (!parentEntry || !parent->isGroup())
        return refuse("Could not create parent entry.");
    const auto own = FEntryDef::create(name, parent, definition, emptyValue(*type));
    const auto entry = own ? FEntry::create(own, configuration, parentEntry) : nullptr;
    if (!entry)
        return refuse("Could not create entry.");
    FHistory::instance()->addStep(entry, kTransactionDefault, true);
    return FExpr<FEntry>(entry);
}

void FSoftConEntryItem::updateEntryName(const FExpr<FEntry> &handle) const
{
    const auto entry = handle.getPtr();
    if (FMarloCtrl::instance()->isLoadingProject() || FHistory::instance()->isBusy() || !entry)
        return;
    std::string name = S(lastPart(Q(getItemObjectName(handle, false))));
    replace(name, " ", "_");
    replaceEx(name, "[^a-zA-Z0-9_\\.]", "_");
    if (name.empty())
        name = entry->getName();
    const auto definition = entry->getEntryDefinition().getPtr();
    if (name == entry->getName() || name == mGivenName || !definition)
        return;
    // A name that the entry had when the item came is the user's, or an earlier item's.
    const bool isFirst = mGivenName.empty() && !mIsNew;
    mGivenName = name;
    // After an undo a step of our own would end the redo of what was undone.
    if (!isFirst && !FHistory::instance()->canRedo())
        definition->setName(name);
}

std::string FSoftConEntryItem::getItemObjectName(const FExpr<FEntry> &, bool) const { return {}; }

void FSoftConEntryItem::updateItem() const
{
    const auto own = entry();
    if (!own)
        return;
    updateEntryName(FExpr<FEntry>(own));
    const std::string name = getItemObjectName(FExpr<FEntry>(own), false);
    setIconName(Q(name.empty() ? own->getName() : name));
    updateIcon();
}

void FSoftConEntryItem::prepareToBeDestroyed()
{
    const auto own = entry();
    if (!own)
        return;
    const FImmediateUpdateBlocker blocker;
    FSelectionSet::instance()->remove(FExprBase(own));
    setItemObject(FExpr<FObject>());
    const auto computation = genIntComputation();
    const auto configuration = computation ? computation->getConfiguration().getPtr() : nullptr;
    const auto definition =
        configuration ? configuration->getDefinition().ptr<FDefinitionGenInt>() : nullptr;
    const FExpr<FEntryBase> entryDef(static_cast<const FExprBase &>(own->getEntryDefinition()));
    if (configuration)
        configuration->removeEntry(FExprBase(own));
    if (definition)
        definition->findAndRemoveEntry(entryDef);
}

void FSoftConEntryItem::updateIconText(const QString &imagePath, const QString &given,
                                       const QColor &first, const QColor &second,
                                       const QColor &third, const QColor &fourth) const
{
    FSoftConLayout *own = layout();
    if (!own)
        return;
    const bool isSmallest = own->getIconSizeStr() == FSoftwareConnector::smIconSize_Smallest;
    const int side = FToolButton::getIconSize() + 5;
    QPixmap picture =
        isSmallest
            ? FIcons::pixmap(":/softConTemplate_" + own->getIconSizeStr(), QSize(side, side))
            : FIcons::pixmap(imagePath, QSize(own->getPixmapWidth(), own->getPixmapHeight()));
    const QSize size = picture.size() / picture.devicePixelRatio();
    const int dot = given.lastIndexOf('.');
    QString shown = dot >= 0 ? given.mid(dot + 1) : lastPart(given);
    while (shown.endsWith('"'))
        shown.chop(1);
    shown = shown.left(4);
    QPainter painter;
    if (given.startsWith(QLatin1String(":/"))) {
        const QPixmap inner = FIcons::pixmap(given, QSize(size.width() / 2, size.width() / 2));
        if (!inner.isNull() && painter.begin(&picture)) {
            const QSize half = inner.size() / inner.devicePixelRatio();
            painter.drawPixmap((size.width() - half.width()) / 2,
                               (size.height() - half.height()) / 2, inner);
        }
    } else if (!shown.isEmpty() && painter.begin(&picture)) {
        const FSoftConLayoutIconTextMeasurements sizes = own->getIconTextMeasurements();
        QFont font(QStringLiteral("arial"),
                   shown.size() == 3 ? sizes.mFontSizeOfThree : sizes.mFontSize, 75, false);
        font.setStyleHint(QFont::Helvetica, QFont::PreferDefault);
        font.setStretch(112);
        painter.setRenderHint(QPainter::TextAntialiasing);
        painter.setRenderHint(QPainter::Antialiasing);
        if (sizes.mIsOutline) {
            QPainterPath measured;
            measured.addText(0, 0, font, shown);
            // Where the font is a wide one the page is still the limit.
            const double room = size.width() - 2.0 * kTextMargin;
            const double width = measured.controlPointRect().width();
            if (width > room) {
                font.setPointSizeF(font.pointSizeF() * room / width);
                measured = QPainterPath();
                measured.addText(0, 0, font, shown);
            }
            QPainterPath outline;
            outline.addText((size.width() - measured.controlPointRect().width()) * 0.5,
                            0.5 * size.height(), font, shown);
            QLinearGradient gradient(sizes.mStartX, sizes.mStartY, sizes.mEndX, sizes.mEndY);
            gradient.setColorAt(0, third);
            gradient.setColorAt(1, fourth);
            painter.setPen(first);
            painter.setBrush(gradient);
            painter.setOpacity(0.5);
            painter.drawPath(outline);
        } else {
            const double width = QFontMetricsF(font).horizontalAdvance(shown);
            if (width > size.width() - 4)
                font.setPointSizeF(font.pointSizeF() * (size.width() - 4) / width);
            painter.setFont(font);
            painter.setPen(second);
            painter.drawText(QRect(QPoint(), size), Qt::AlignCenter | Qt::TextSingleLine, shown);
        }
    }
    if (painter.isActive())
        painter.end();
    showPixmap(picture);
}

// Exports

FSoftConExportItem::FSoftConExportItem(FSoftConScene *scene, QGraphicsItem *parent,
                                       const FExpr<FObject> &object)
    : FSoftConEntryItem(scene, parent, object, SoftConExport, QStringLiteral(":/softConExport"))
{
    setAcceptDrops(true);
}

namespace {
std::shared_ptr<FGeometryExport> exportOf(const std::shared_ptr<FEntry> &entry)
{
    return entry ? entry->getValue().ptr<FGeometryExport>() : nullptr;
}
} // namespace

QString FSoftConExportItem::getToolTip() const
{
    const auto value = exportOf(entry());
    return value ? Q(value->getFileName()) : QString();
}

std::string FSoftConExportItem::getItemObjectName(const FExpr<FEntry> &entry, bool) const
{
    const auto value = exportOf(entry.getPtr());
    return value ? value->getFileName() : std::string();
}

void FSoftConExportItem::updateIcon() const
{
    if (layout())
        updateIconText(":/softConExport_" + layout()->getIconSizeStr(), getToolTip(),
                       FTheme::color("icon-pen"), FTheme::color("icon-text"),
                       FTheme::color("icon-from"), FTheme::color("icon-text"));
    FSoftConObjectItem::updateIcon();
}

void FSoftConExportItem::createItemObject(const QString &, const QString &) const
{
    const auto list = std::dynamic_pointer_cast<FObjectList>(getItemObject().getExpr());
    if (!list)
        return;
    const FHistoryTransaction step(nullptr, F_TEXT("Add export"), true);
    const auto first = list->count() > 0 ? list->getObject(0).getPtr() : nullptr;
    const auto named = std::dynamic_pointer_cast<FManaged>(first);
    mIsNew = true;
    const auto entry =
        getEntry(ENTRYGROUP_EXPORTS, named ? named->getName() + "_export" : std::string("export"),
                 FGeometryExport::mpNull)
            .getPtr();
    if (!entry)
        return;
    const auto value = f_make_shared<FGeometryExport>();
    if (const auto feature = std::dynamic_pointer_cast<FFeatureDefinitionBase>(first))
        value->setFeatureDefinition(FExpr<FObject>(feature));
    value->setGeometryObjects(list);
    entry->setValue(FExprBase(value));
    setItemObject(FExpr<FObject>(entry));
}

void FSoftConExportItem::dragEnterEvent(QGraphicsSceneDragDropEvent *event)
{
    dragMoveEvent(event);
}

void FSoftConExportItem::dragMoveEvent(QGraphicsSceneDragDropEvent *event)
{
    const bool isWelcome =
        connectorScene() && !connectorScene()->extractFObjectMimeData(event)->getObjects().empty();
    event->setAccepted(isWelcome);
    if (isWelcome)
        event->acceptProposedAction();
}

void FSoftConExportItem::dropEvent(QGraphicsSceneDragDropEvent *event)
{
    const auto own = entry();
    const auto value = exportOf(own);
    const auto list = connectorScene() ? connectorScene()->extractFObjectMimeData(event) : nullptr;
    if (!value || !list || list->getObjects().empty())
        return;
    const FHistoryTransaction step(nullptr, F_TEXT("Add to export"), true);
    const auto grown = std::static_pointer_cast<FGeometryExport>(value->clone());
    grown->addGeometryObjects(list);
    own->setValue(FExprBase(grown));
    event->accept();
    callEditor();
}

bool FSoftConExportItem::sceneEventFilter(QGraphicsItem *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::GraphicsSceneDragEnter:
        dragEnterEvent(static_cast<QGraphicsSceneDragDropEvent *>(event));
        return true;
    case QEvent::GraphicsSceneDragMove:
        dragMoveEvent(static_cast<QGraphicsSceneDragDropEvent *>(event));
        return true;
    case QEvent::GraphicsSceneDrop:
        dropEvent(static_cast<QGraphicsSceneDragDropEvent *>(event));
        return true;
    default:
        return FSoftConEntryItem::sceneEventFilter(watched, event);
    }
}

// Input files

FSoftConFileNameItem::FSoftConFileNameItem(FSoftConScene *scene, QGraphicsItem *parent,
                                           const FExpr<FObject> &object, bool isRef)
    : FSoftConEntryItem(scene, parent, object, SoftConInput,
                        isRef ? QStringLiteral(":/fileNameRef") : QStringLiteral(":/fileName"))
    , mIsRef(isRef)
{
}

namespace {
std::shared_ptr<FInputFile> inputOf(const std::shared_ptr<FEntry> &entry)
{
    return entry ? entry->getValue().ptr<FInputFile>() : nullptr;
}
} // namespace

QString FSoftConFileNameItem::getToolTip() const
{
    return Q(getItemObjectName(FExpr<FEntry>(entry()), false));
}

std::string FSoftConFileNameItem::getItemObjectName(const FExpr<FEntry> &entry, bool force) const
{
    const auto value = inputOf(entry.getPtr());
    return value ? S(nameBehind(value->getFileName(), force)) : std::string();
}

void FSoftConFileNameItem::updateIcon() const
{
    if (!layout())
        return;
    const QString name = getToolTip();
    updateIconText((mIsRef ? ":/softConFileNameRef_" : ":/softConFileName_") +
                       layout()->getIconSizeStr(),
                   name, FTheme::color("icon-pen"), FTheme::color("file-text"),
                   FTheme::color("file-text"), FTheme::color("file-from"));
    FSoftConObjectItem::updateIcon();
    const auto limit =
        FIni().getSetting("Software Connector/Input File Path Length").ptr<FInteger>();
    const int most = limit ? int(limit->value()) : kPathLength;
    const QString text = getLabelItem()->text();
    if (most < 0 || most + 3 + 1 >= text.size())
        return;
    const QString file = lastPart(text);
    const int rest = most - file.size();
    getLabelItem()->setText(
        rest < 1 ? file : text.left((rest + 1) / 2) + "..." + text.right(rest / 2 + file.size()));
}

void FSoftConFileNameItem::createItemObject(const QString &path, const QString &base) const
{
    const FHistoryTransaction step(nullptr, F_TEXT("Add file name"), true);
    mIsNew = true;
    const std::string name = baseName(path);
    const auto entry =
        getEntry(ENTRYGROUP_EXPORTS, name.empty() ? "file" : name, FInputFile::mpNull).getPtr();
    if (!entry)
        return;
    // A folder that was dropped keeps its structure: what lies between it and the file becomes the
    // folder below the input folder of a run.
    const QString inside = QDir::isAbsolutePath(base) ? below(path, base) : QString();
    const QString folder =
        QDir::isAbsolutePath(base)
            ? (inside == path ? QString() : inside.left(inside.size() - lastPart(inside).size()))
            : base;
    entry->setValue(FExprBase(f_make_shared<FInputFile>(text(path), text(withSlash(folder)))));
    setItemObject(FExpr<FObject>(entry));
    updateEntryName(FExpr<FEntry>(entry));
    if (connectorScene())
        connectorScene()->callEditor(this);
}

void FSoftConFileNameItem::mouseDoubleClickEvent(QGraphicsSceneMouseEvent *event)
{
    const auto file = inputOf(entry());
    FSoftConScene *scene = connectorScene();
    if (!file || !scene) {
        FSoftConObjectItem::mouseDoubleClickEvent(event);
        return;
    }
    const FExprBase &handle = file->getFileName();
    const bool isCommand = std::dynamic_pointer_cast<FMemberCmd>(handle.getExpr()) != nullptr;
    QString notes;
    if (isCommand)
        notes += "A command was set as value of the input file entry.\nA copy of the file (if "
                 "available) will be stored as template, any connection to the command will get "
                 "lost.\n\n";
    if (!handle.canSafelyBeUpdated(false))
        notes += QStringLiteral("It might be necessary to evaluate the command ") +
                 (isCommand ? "" : "which was set as value of the input file entry ") +
                 "in order to get the file.\n\n";
    QWidget *window = scene->views().isEmpty() ? nullptr : scene->views().front()->window();
    if (!notes.isEmpty() &&
        FIO::instance()->warning(window, "Input Template File Creation", S("\n" + notes), "Proceed",
                                 "Cancel", "", 0, -1) == 1)
        return;
    QString path = textOf(handle);
    if (path.isEmpty() && isCommand)
        path = nameInLink(Q(handle.toString()));
    const QFileInfo info(QDir::isAbsolutePath(path) || path.isEmpty() ? path
                                                                      : Q(file->sourcePath()));
    const std::string size = scene->checkFileSize(info.size(), QString());
    if (!size.empty() &&
        FIO::instance()->question(
            window, "FSoftwareConnector",
            "File " + S(info.canonicalFilePath()) + " has a size of " + size +
                ". Loading such a large file may take a while and the project size will be "
                "increased by the file's size.<br><br>Do you still want this file to serve as a "
                "template file?",
            "Yes", "No", "", 0, -1) != 0)
        return;
    const FHistoryTransaction step(nullptr, F_TEXT("create input template"), true);
    const auto *made = dynamic_cast<FSoftConObjectItem *>(
        scene->createItem(nullptr, FExpr<FObject>(FGenIntCommandFile::mpNull), S(info.filePath()),
                          S(textOf(file->getDirectory()))));
    if (!made)
        return; // told in the log; the input file stays
    const FExpr<FGenIntFile> opened(made->getItemObject().ptr<FGenIntFile>());
    FSoftConObjectItem::mouseDoubleClickEvent(event);
    scene->deleteItem(this);
    scene->gotoTab(opened);
}

FSoftConFileNameRefItem::FSoftConFileNameRefItem(FSoftConScene *scene, QGraphicsItem *parent,
                                                 const FExpr<FObject> &object)
    : FSoftConFileNameItem(scene, parent, object, true)
{
}

// Result files

FSoftConImportItem::FSoftConImportItem(FSoftConScene *scene, QGraphicsItem *parent,
                                       const FExpr<FObject> &object)
    : FSoftConEntryItem(scene, parent, object, SoftConImport, QStringLiteral(":/softConImport"))
{
}

QString FSoftConImportItem::getToolTip() const
{
    return Q(getItemObjectName(FExpr<FEntry>(entry()), false));
}

std::string FSoftConImportItem::getItemObjectName(const FExpr<FEntry> &entry, bool force) const
{
    const auto own = entry.getPtr();
    const auto value = own ? own->getValue().ptr<FResultsFileName>() : nullptr;
    return value ? S(nameBehind(value->getFileName(), force)) : std::string();
}

void FSoftConImportItem::updateIcon() const
{
    if (layout())
        updateIconText(":/softConImport_" + layout()->getIconSizeStr(), getToolTip(),
                       FTheme::color("icon-pen"), FTheme::color("icon-text"),
                       FTheme::color("icon-from"), FTheme::color("icon-text"));
    FSoftConObjectItem::updateIcon();
}

void FSoftConImportItem::createItemObject(const QString &path, const QString &base) const
{
    const FHistoryTransaction step(nullptr, F_TEXT("Add import"), true);
    mIsNew = true;
    const std::string name = baseName(path);
    const auto entry =
        getEntry(ENTRYGROUP_EXPORTS, name.empty() ? "result" : name, FResultsFileName::mpNull)
            .getPtr();
    if (!entry)
        return;
    const auto value = f_make_shared<FResultsFileName>(text(below(path, base)));
    entry->setValue(FExprBase(value));
    value->setOutOfDate(0);
    setItemObject(FExpr<FObject>(entry));
    updateEntryName(FExpr<FEntry>(entry));
}
