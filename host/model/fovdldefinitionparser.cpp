// SPDX-License-Identifier: Apache-2.0
#include "fovdldefinitionparser.h"

#include "fhistory.h"
#include "fimportrules.h"
#include "flogmsg.h"
#include "fmarloctrl.h"
#include "fscript.h"

#include <QIODevice>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <algorithm>

const QString FOvdlDefinitionParser::smObjectArea = QStringLiteral("=== objects ===");

namespace {
const char kPrologue[] = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>";

/// False for texts with characters that no XML text can hold.
bool fitsXml(const QString &text)
{
    return std::all_of(
        text.begin(), text.end(),
        [](QChar c) {
            return c >= ' ' ? c.unicode() < 0xfffe : c == '\t' || c == '\n' || c == '\r';
        });
}

void writeEntries(QXmlStreamWriter &xml, const std::vector<FExpr<FEntryBase, true>> &entries)
{
    for (const auto &handle : entries) {
        const auto entry = handle.ptr<FEntryDef>();
        if (!entry)
            continue;
        xml.writeStartElement(entry->isGroup() ? "group" : "entry");
        xml.writeAttribute("name", Q(entry->getName()));
        if (!entry->isGroup()) {
            const auto type = entry->getType();
            xml.writeAttribute("type", Q(type ? type->getClass() : std::string()));
            const QString value = Q(entry->getDefaultExpr().toString());
            if (fitsXml(value))
                xml.writeAttribute("default", value);
            else
                xml.writeAttribute("default64", QString::fromLatin1(value.toUtf8().toBase64()));
        }
        if (entry->isHidden())
            xml.writeAttribute("hidden", "1");
        if (!entry->isExpr())
            xml.writeAttribute("expr", "0");
        if (entry->minimum() != 1)
            xml.writeAttribute("min", QString::number(entry->minimum()));
        if (entry->maximum() != 1)
            xml.writeAttribute("max", QString::number(entry->maximum()));
        const QString docu = Q(entry->getDocuString(int(DocuArea::Description)));
        // Reading XML turns carriage returns into line feeds.
        if (!fitsXml(docu) || docu.contains(QLatin1Char('\r')))
            xml.writeTextElement("docu64", QString::fromLatin1(docu.toUtf8().toBase64()));
        else if (!docu.isEmpty())
            xml.writeTextElement("docu", docu);
        writeEntries(xml, entry->getChildren());
        xml.writeEndElement();
    }
}

int intAttribute(const QXmlStreamAttributes &attributes, const char *name, int fallback)
{
    bool ok;
    const int value = attributes.value(QLatin1String(name)).toInt(&ok);
    return ok ? value : fallback;
}
} // namespace

FOvdlDefinitionParser::FOvdlDefinitionParser(const FExpr<FDefinitionCustom> &definition)
    : mDefinition(definition)
{
}

void FOvdlDefinitionParser::read(QIODevice *device) { read(device->readAll().toStdString()); }

void FOvdlDefinitionParser::read(const std::string &text)
{
    static const FImportRules sDataOnly({});
    // The marker stands on a line of its own behind the closing element; texts of entries may hold
    // such a line as well.
    const std::string marker = "\n" + S(smObjectArea);
    const size_t at = text.find(marker, std::min(text.find("</ovdl>"), text.size()));
    const size_t lineEnd = at == std::string::npos ? at : text.find('\n', at + marker.size());
    const size_t begin = lineEnd == std::string::npos ? text.size() : lineEnd + 1;
    const QString objects = Q(text.substr(begin));
    const bool mayMake = mDefinition.getPtr() && mDefinition.getPtr()->isNull();
    mErrors.clear();
    mRules = &sDataOnly;
    const auto line = 1 + std::count(text.begin(), text.begin() + long(begin), '\n');
    const bool sound =
        parse(text.substr(0, at)) && (!mDefinition || prepareObjects(objects, size_t(line)));
    mRules = nullptr;
    if (!sound) {
        mEntries.clear();
        if (mayMake)
            mDefinition = FExpr<FDefinitionCustom>();
        return;
    }
    FHistoryTransaction transaction(nullptr, F_TEXT("read definition"), true);
    if (mayMake) {
        // A prototype was handed in: make a new object of its class.
        const auto made =
            std::dynamic_pointer_cast<FDefinitionCustom>(mDefinition.getPtr()->clone());
        mDefinition = made;
        if (made && !mName.empty())
            made->setName(mName);
    }
    build();
    if (at != std::string::npos && mDefinition)
        importObjectsFromString(objects);
    if (mDefinition)
        transaction.addStep(mDefinition.getPtr());
}

void FOvdlDefinitionParser::error(qint64 line, qint64 column, const FReason &reason)
{
    mErrors.push_back({mFile, size_t(line), size_t(column), reason});
    FLogMsg::error("Definition",
                   "line " + fromNumber((long long)line, 10) + ", column " +
                       fromNumber((long long)column, 10) + ": " + reason.text(),
                   "the entries were not read", nullptr);
}

bool FOvdlDefinitionParser::parse(const std::string &structure)
{
    mEntries.clear();
    mName.clear();
    const size_t mark = structure.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    const QString text = Q(structure.substr(mark));
    QXmlStreamReader xml(text);
    const auto fail = [&](const FReason &reason) {
        error(xml.lineNumber(), xml.columnNumber(), reason);
        return false;
    };
    const auto unexpected = [&](const std::string &expected, const std::string &found) {
        return fail(FReason::unexpected(expected, found));
    };
    if (structure.compare(mark, std::string::npos, S(text)) != 0)
        return unexpected("UTF-8 text", "other bytes");
    bool inDefinition = false;
    while (!xml.atEnd() && !inDefinition) {
        xml.readNext();
        if (xml.isDTD())
            return unexpected("no document type", "one");
        if (!xml.isStartElement())
            continue;
        inDefinition = xml.name() == QLatin1String("definition");
        if (!inDefinition && xml.name() != QLatin1String("ovdl"))
            return unexpected("the element ovdl", S(xml.name().toString()));
    }
    if (xml.hasError())
        return fail(S(xml.errorString()));
    if (!inDefinition)
        return unexpected("the element definition", "the end");
    mName = S(xml.attributes().value(QLatin1String("name")).toString());
    Entry root;
    if (!parseContent(xml, &root, true, 0))
        return false;
    while (!xml.atEnd())
        xml.readNext();
    if (xml.hasError())
        return fail(S(xml.errorString()));
    mEntries = std::move(root.children);
    return true;
}

bool FOvdlDefinitionParser::parseContent(QXmlStreamReader &xml, Entry *owner, bool group, int depth)
{
    const auto fail = [&](const FReason &reason) {
        error(xml.lineNumber(), xml.columnNumber(), reason);
        return false;
    };
    const auto unexpected = [&](const std::string &expected, const std::string &found) {
        return fail(FReason::unexpected(expected, found));
    };
    while (xml.readNext() != QXmlStreamReader::EndElement) {
        if (xml.hasError())
            return fail(S(xml.errorString()));
        if (!xml.isStartElement())
            continue;
        if (xml.name() == QLatin1String("docu") && depth > 0) {
            owner->docu += S(xml.readElementText());
            continue;
        }
        if (xml.name() == QLatin1String("docu64") && depth > 0) {
            owner->docu += QByteArray::fromBase64(xml.readElementText().toLatin1()).toStdString();
            continue;
        }
        const bool isGroup = xml.name() == QLatin1String("group");
        if (!group || (!isGroup && xml.name() != QLatin1String("entry")))
            return unexpected(group ? "the element entry or group"
                                    : "the end of entry " + owner->name,
                              S(xml.name().toString()));
        if (depth == kMaxDepth)
            return fail("groups nested deeper than " + fromNumber(kMaxDepth, 10));
        const QXmlStreamAttributes attributes = xml.attributes();
        Entry entry;
        entry.name = S(attributes.value(QLatin1String("name")).toString());
        if (entry.name.empty())
            return unexpected("a name for the entry", "none");
        if (!isGroup) {
            const QByteArray coded = attributes.value(QLatin1String("default64")).toLatin1();
            const std::string script =
                coded.isEmpty() ? S(attributes.value(QLatin1String("default")).toString())
                                : QByteArray::fromBase64(coded).toStdString();
            std::vector<FScriptError> errors;
            entry.value = FScript::parseExpression(script, &errors, mRules);
            if (!entry.value)
                return unexpected("a default value for entry " + entry.name,
                                  script + (mRules && !errors.empty() && !script.empty()
                                                ? " (" + errors.front().text() + ")"
                                                : std::string()));
        }
        entry.hidden = intAttribute(attributes, "hidden", 0) != 0;
        entry.isExpr = intAttribute(attributes, "expr", 1) != 0;
        entry.minimum = intAttribute(attributes, "min", 1);
        entry.maximum = intAttribute(attributes, "max", 1);
        if (!parseContent(xml, &entry, isGroup, depth + 1))
            return false;
        owner->children.push_back(std::move(entry));
    }
    return true;
}

void FOvdlDefinitionParser::build()
{
    const FLoadingScope loading;
    if (mDefinition)
        build(mEntries, nullptr);
    mEntries.clear();
}

void FOvdlDefinitionParser::build(const Entries &entries, const std::shared_ptr<FEntryDef> &parent)
{
    const auto definition = std::static_pointer_cast<FDefinitionBase>(mDefinition.getPtr());
    for (const Entry &entry : entries) {
        const auto made = parent ? FEntryDef::create(entry.name, parent, definition, entry.value)
                                 : FEntryDef::create(entry.name, definition, 1, 1, false, true,
                                                     std::string(), entry.value);
        made->setFlags(entry.hidden, entry.isExpr);
        made->setCounts(entry.minimum, entry.maximum);
        if (!entry.docu.empty())
            made->addDocu(entry.docu, unsigned(DocuArea::Description));
        build(entry.children, made);
    }
}

std::string FOvdlDefinitionParser::structureText(const FDefinitionBase &definition)
{
    QString text = QLatin1String(kPrologue) + QLatin1Char('\n');
    QString body;
    QXmlStreamWriter xml(&body);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(1);
    xml.writeStartElement("ovdl");
    xml.writeAttribute("version", "1");
    xml.writeStartElement("definition");
    xml.writeAttribute("name", Q(definition.getName()));
    writeEntries(xml, definition.getRootEntries());
    xml.writeEndElement();
    xml.writeEndElement();
    return S(text + body.trimmed() + '\n');
}

void FOvdlDefinitionParser::write(QIODevice *device,
                                  const std::shared_ptr<FDefinitionCustom> &definition)
{
    device->write(QByteArray::fromStdString(structureText(*definition)));
}
