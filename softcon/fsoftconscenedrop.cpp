// SPDX-License-Identifier: Apache-2.0
// What may be dropped on the scene, and what becomes of it.
#include "ffeatures.h"
#include "ffilevalues.h"
#include "fgenintresultsfile.h"
#include "flogmsg.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"
#include "fsoftconscene.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QFileInfo>
#include <QGraphicsProxyWidget>
#include <QGraphicsSceneDragDropEvent>
#include <QMimeData>
#include <QUrl>

namespace {
/// False for a payload that another process, or an earlier one, has made.
bool isOurs(const QMimeData &data)
{
    const QString type = FMarloCtrl::instance()->getFObjectMimeType() + "-ids";
    if (!data.hasFormat(type))
        return true; // without a token the addresses alone decide
    QDataStream stream(data.data(type));
    qint64 process = 0;
    stream >> process;
    return process == QCoreApplication::applicationPid();
}

bool isGeometry(const FObject &object, bool *isFeature)
{
    if (const auto *feature = dynamic_cast<const FFeatureDefinitionBase *>(&object)) {
        *isFeature = true;
        if (feature->isExportFeature())
            return true;
    }
    return dynamic_cast<const FDrawable *>(&object) || object.isTypeOf(FEntityGroup::mpNull) ||
           object.isTypeOf(FFeatureMember::mpNull);
}
} // namespace

std::shared_ptr<FObjectList>
FSoftConScene::extractFObjectMimeData(const QGraphicsSceneDragDropEvent *event) const
{
    auto list = f_make_shared<FObjectList>();
    const QMimeData *data = event->mimeData();
    const QString type = FMarloCtrl::instance()->getFObjectMimeType();
    if (!data || !data->hasFormat(type) || !isOurs(*data))
        return list;
    // Only what is alive is touched, whatever the payload says.
    std::unordered_map<qint64, std::shared_ptr<FObject>> alive;
    for (const auto &object : FObjectManager::instance()->all())
        alive.emplace(qint64(reinterpret_cast<quintptr>(static_cast<FObject *>(object.get()))),
                      object);
    QDataStream stream(data->data(type));
    bool isFeature = false;
    while (!stream.atEnd()) {
        qint64 address = 0;
        stream >> address;
        if (stream.status() != QDataStream::Ok)
            break;
        const auto found = alive.find(address);
        if (found != alive.end() && isGeometry(*found->second, &isFeature))
            list->append(FExpr<FObject>(found->second));
    }
    return list;
}

std::vector<std::shared_ptr<FSoftConItemStructure>>
FSoftConScene::extractFileMimeData(const QGraphicsSceneDragDropEvent *event) const
{
    std::vector<std::shared_ptr<FSoftConItemStructure>> found;
    const QMimeData *data = event->mimeData();
    if (!data || !data->hasFormat(QStringLiteral("text/uri-list")))
        return found;
    FExpr<FObject> object;
    switch (getArea(event->scenePos())) {
    case SoftConInput:
        object = FExpr<FObject>(FInputFile::mpNull);
        break;
    case SoftConOutput:
        object = FExpr<FObject>(FGenIntResultsFile::mpNull);
        break;
    case SoftConImport:
        object = FExpr<FObject>(FResultsFileName::mpNull);
        break;
    default:
        return found;
    }
    for (const QUrl &url : data->urls()) {
        const QFileInfo info(url.toLocalFile());
        if (!info.exists())
            continue;
        collectItems(info.canonicalFilePath(), object, info.canonicalPath(), found, false);
    }
    return found;
}

bool FSoftConScene::isOverItem(const QPointF &place) const
{
    const QGraphicsItem *item = itemUnder(place);
    return item && item != mInputArea;
}

void FSoftConScene::dragEnterEvent(QGraphicsSceneDragDropEvent *event)
{
    event->acceptProposedAction();
    QGraphicsScene::dragEnterEvent(event);
    event->accept(); // what is under the pointer may have refused
}

void FSoftConScene::dragMoveEvent(QGraphicsSceneDragDropEvent *event)
{
    const bool isExport = getArea(event->scenePos()) == SoftConExport;
    const bool isWelcome = isExport ? !isOverItem(event->scenePos()) &&
                                          !extractFObjectMimeData(event)->getObjects().empty()
                                    : !extractFileMimeData(event).empty();
    if (isWelcome) {
        event->acceptProposedAction();
        event->accept();
    } else {
        QGraphicsScene::dragMoveEvent(event);
    }
}

void FSoftConScene::dropEvent(QGraphicsSceneDragDropEvent *event)
{
    if (getArea(event->scenePos()) != SoftConExport) {
        createItems(extractFileMimeData(event));
        return;
    }
    if (isOverItem(event->scenePos())) {
        QGraphicsScene::dropEvent(event);
        return;
    }
    const auto list = extractFObjectMimeData(event);
    if (!list->getObjects().empty())
        createItem(nullptr, FExpr<FObject>(list), "", "");
}

std::string FSoftConScene::checkFileSize(long long size, const QString &path) const
{
    if (size <= kLargestFile)
        return std::string();
    const bool isGiga = size > 1073741824;
    const std::string text =
        fromNumber(double(size) / (isGiga ? 1073741824.0 : 1048576.0), 'g', 3) +
        (isGiga ? "GB" : "MB");
    if (!path.isEmpty())
        FLogMsg::info("SoftwareConnector",
                      "The file is too big - max size of result value templates = 30 MB, item "
                      "creation skipped.",
                      "File " + S(path) + " has a size of " + text + ".", nullptr);
    return text;
}
