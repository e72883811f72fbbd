// SPDX-License-Identifier: Apache-2.0
#include "fovdldefinitionparser.h"

#include "flogmsg.h"
#include "fmarloctrl.h"

#include <QIODevice>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

const QString FOvdlDefinitionParser::smObjectArea = QStringLiteral("=== objects ===");

namespace
{
const char kPrologue[] = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>";

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
            xml.writeAttribute("default", Q(entry->getDefaultExpr().toString()));
        }
        if (entry->isHidden())
            xml.writeAttribute("hidden", "1");
        if (!entry->isExpr())
            xml.writeAttribute("expr", "0");
        if (entry->minimum() != 1)
            xml.writeAttribute("min", QString::number(entry->minimum()));
        if (entry->maximum() != 1)
            xml.writeAttribute("max", QString::number(entry->maximum()));
        const std::string docu = entry->getDocuString(int(DocuArea::Description));
        if (!docu.empty())
            xml.writeTextElement("docu", Q(docu));
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

void FOvdlDefinitionParser::read(QIODevice *device)
{
    read(device->readAll().toStdString());
}

void FOvdlDefinitionParser::read(const std::string &text)
{
    // The marker stands on a line of its own behind the closing element.
    const std::string marker = "\n" + S(smObjectArea);
    const size_t at = text.find(marker);
    const bool made = mDefinition.getPtr() && mDefinition.getPtr()->isNull();
    if (!readStructure(Q(text.substr(0, at)), true)) {
        if (made)
            mDefinition = FExpr<FDefinitionCustom>();
        return;
    }
    if (at == std::string::npos)
        return;
    size_t begin = text.find('\n', at + marker.size());
    begin = begin == std::string::npos ? text.size() : begin + 1;
    const FLoadingScope loading;
    importObjectsFromString(Q(text.substr(begin)));
}

bool FOvdlDefinitionParser::fill(const std::string &structure)
{
    return readStructure(Q(structure), false);
}

void FOvdlDefinitionParser::error(qint64 line, qint64 column, const QString &text)
{
    FLogMsg::error("Definition",
                   "line " + fromNumber((long long)line, 10) + ", column " +
                       fromNumber((long long)column, 10) + ": " + S(text),
                   "rest of the entries skipped", nullptr);
}

bool FOvdlDefinitionParser::readStructure(const QString &text, bool mayMake)
{
    QXmlStreamReader xml(text);
    const auto fail = [&](const QString &what) {
        error(xml.lineNumber(), xml.columnNumber(), what);
        return false;
    };
    bool inDefinition = false;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isDTD())
            return fail("expected no document type, found one");
        if (!xml.isStartElement())
            continue;
        if (xml.name() == QLatin1String("definition")) {
            inDefinition = true;
            break;
        }
        if (xml.name() != QLatin1String("ovdl"))
            return fail("expected the element ovdl, found " + xml.name().toString());
    }
    if (xml.hasError())
        return fail(xml.errorString());
    if (!inDefinition)
        return fail("expected the element definition, found the end");
    auto definition = mDefinition.getPtr();
    if (mayMake && definition && definition->isNull()) {
        // A prototype was handed in: make a new object of its class.
        const std::string name = S(xml.attributes().value(QLatin1String("name")).toString());
        definition = std::dynamic_pointer_cast<FDefinitionCustom>(definition->clone());
        if (definition && !name.empty())
            definition->setName(name);
        mDefinition = definition;
    }
    if (!definition)
        return false;
    const FLoadingScope loading;
    if (!readEntries(xml, nullptr, 0))
        return false;
    return true;
}

bool FOvdlDefinitionParser::readEntries(QXmlStreamReader &xml,
                                        const std::shared_ptr<FEntryDef> &parent, int depth)
{
    const auto fail = [&](const QString &what) {
        error(xml.lineNumber(), xml.columnNumber(), what);
        return false;
    };
    if (depth > kMaxDepth)
        return fail(QString("groups nested deeper than %1").arg(kMaxDepth));
    const auto definition = std::static_pointer_cast<FDefinitionBase>(mDefinition.getPtr());
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.hasError())
            return fail(xml.errorString());
        if (xml.isEndElement())
            return true;
        if (!xml.isStartElement())
            continue;
        if (xml.name() == QLatin1String("docu") && parent) {
            parent->addDocu(S(xml.readElementText()), unsigned(DocuArea::Description));
            continue;
        }
        const bool group = xml.name() == QLatin1String("group");
        if (!group && xml.name() != QLatin1String("entry"))
            return fail("expected the element entry or group, found " + xml.name().toString());
        const QXmlStreamAttributes attributes = xml.attributes();
        const std::string name = S(attributes.value(QLatin1String("name")).toString());
        if (name.empty())
            return fail("expected a name for the entry, found none");
        FExprBase value;
        if (!group) {
            const std::string script = S(attributes.value(QLatin1String("default")).toString());
            value = FExprBase::resolve(script);
            if (!value)
                return fail(QString("expected a default value for entry %1, found %2")
                                .arg(Q(name), Q(script)));
        }
        const auto entry =
            parent ? FEntryDef::create(name, parent, definition, value)
                   : FEntryDef::create(name, definition, 1, 1, false, true, std::string(), value);
        entry->setFlags(intAttribute(attributes, "hidden", 0) != 0,
                        intAttribute(attributes, "expr", 1) != 0);
        entry->setCounts(intAttribute(attributes, "min", 1), intAttribute(attributes, "max", 1));
        if (!readEntries(xml, entry, depth + 1))
            return false;
    }
    return fail("expected the end of the element, found the end of the text");
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
