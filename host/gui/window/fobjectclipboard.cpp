// SPDX-License-Identifier: Apache-2.0
#include "fobjectclipboard.h"

#include "fconfiguration.h"
#include "fdesign.h"
#include "fdispatcher.h"
#include "fhistory.h"
#include "fimportrules.h"
#include "fio.h"
#include "flogmsg.h"
#include "flooks.h"
#include "fselectionset.h"
#include "fworkspace.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QDataStream>
#include <QGuiApplication>
#include <QIODevice>
#include <QMimeData>
#include <QTextStream>

namespace {
const char *const kType = "application/x-turnbuckle-copy";
constexpr int kListed = 12;

QString tr(const char *text, int n = -1)
{
    return QCoreApplication::translate("FObjectClipboard", text, nullptr, n);
}

QString listed(QStringList names)
{
    const int more = names.size() - kListed;
    if (more > 0) {
        names = names.mid(0, kListed);
        names << tr("and %1 more").arg(more);
    }
    return names.join(QStringLiteral(", "));
}

/// Object blocks are data: a clipboard may come from anywhere.
bool pasteBlocks(const std::string &text)
{
    FScriptReader reader(text, "clipboard");
    reader.setRules(&FImportRules::copies());
    reader.run();
    if (reader.errors().empty())
        FConfiguration::leaveUnset(reader.missing());
    return reader.errors().empty();
}
} // namespace

FObjectClipboard::Objects FObjectClipboard::selected()
{
    Objects found;
    for (const auto &object : FSelectionSet::instance()->getObjects()) {
        auto managed = std::dynamic_pointer_cast<FManaged>(object.getExpr());
        if (managed && managed->isListed() && managed != FDesign::baseline())
            found.push_back(std::move(managed));
    }
    return found;
}

void FObjectClipboard::copy(const Objects &objects)
{
    if (objects.empty())
        return;
    QByteArray own, plain;
    QDataStream stream(&own, QIODevice::WriteOnly);
    // Those that bring others along come first, so that nothing is copied twice.
    Objects rest = objects;
    for (size_t i = 0; i < rest.size();) {
        const auto object = rest[i];
        Objects others = rest;
        others.erase(others.begin() + long(i));
        const QByteArray bytes = object->copyAmong(&others);
        if (bytes.isNull()) {
            ++i;
            continue;
        }
        if (bytes.isEmpty())
            return;
        stream << Q(object->getClass()) << bytes;
        plain += bytes;
        rest = std::move(others);
        i = 0;
    }
    QString script;
    QTextStream text(&script);
    for (const auto &object : rest)
        object->saveScopeManner(text, 0, true, false);
    text.flush();
    stream << QString() << script.toUtf8();
    auto *data = new QMimeData;
    data->setData(QLatin1String(kType), own);
    data->setText((QString::fromUtf8(plain) + script).trimmed());
    QGuiApplication::clipboard()->setMimeData(data);
}

QString FObjectClipboard::whyNotPaste()
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    return data && data->hasFormat(QLatin1String(kType)) ? QString() : tr("no objects were copied");
}

void FObjectClipboard::paste()
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    if (!data || !data->hasFormat(QLatin1String(kType)))
        return;
    QByteArray bytes = data->data(QLatin1String(kType));
    QDataStream stream(&bytes, QIODevice::ReadOnly);
    FHistorySavepoint step(S(tr("Paste")));
    bool ok = true;
    while (ok && !stream.atEnd()) {
        QString name;
        QByteArray content;
        stream >> name >> content;
        if (stream.status() != QDataStream::Ok) {
            FLogMsg::error("Paste", S(tr("The copy is damaged")), std::string(), nullptr);
            ok = false;
        } else if (name.isEmpty()) {
            ok = pasteBlocks(content.toStdString());
        } else {
            const auto prototype =
                std::dynamic_pointer_cast<FManaged>(FObject::getPrototype(S(name)));
            ok = prototype && prototype->paste(content);
        }
    }
    if (!ok)
        step.rollback();
}

bool FObjectClipboard::remove(const Objects &objects)
{
    if (objects.empty())
        return false;
    QStringList names, along, users;
    std::set<const FObject *> going;
    for (const auto &object : objects) {
        names << FLooks::nameOf(*object);
        going.insert(object.get());
    }
    for (const auto &object : objects) {
        const auto &takesAlong = FLooks::of(*object).takesAlong;
        if (takesAlong)
            along += takesAlong(*object);
        object->clients().forEach([&](FObject *client) {
            // An expression stands between an object and what is made of it.
            std::set<std::shared_ptr<FObject>> all;
            if (client->isFCmd())
                client->getClients(all);
            else
                all.insert(client->shared_from_this());
            for (const auto &one : all)
                if (const auto *managed = dynamic_cast<const FManaged *>(one.get()))
                    if (!going.count(managed) && managed->isTreeRow() &&
                        !FLooks::of(*managed).isHidden)
                        users << FLooks::nameOf(*managed);
        });
    }
    along.removeDuplicates();
    users.removeDuplicates();
    for (const QString &name : along)
        users.removeAll(name);
    if (!along.isEmpty() || !users.isEmpty() || objects.size() > 1) {
        QString text = objects.size() == 1 ? tr("%1 is deleted.").arg(names.front())
                                           : tr("%1 objects are deleted: ").arg(objects.size()) +
                                                 listed(names) + '.';
        if (!along.isEmpty())
            text += "\n\n" + tr("With it go: %1.").arg(listed(along));
        if (!users.isEmpty())
            text += "\n\n" + tr("These refer to it and lose that: %1.").arg(listed(users));
        text += "\n\n" + tr("Undo brings all of it back.");
        if (FIO::instance()->question(FWorkspace::instance()->window(), S(tr("Delete")), S(text),
                                      S(tr("Delete")), S(tr("Cancel")), std::string(), 0, 1) != 0)
            return false;
    }
    const std::vector<FExprBase> receivers(objects.begin(), objects.end());
    const FResult result = FDispatcher::execute(receivers, "destroy");
    return result.error.empty();
}
