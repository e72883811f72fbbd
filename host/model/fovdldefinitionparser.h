// SPDX-License-Identifier: Apache-2.0
#ifndef FOVDLDEFINITIONPARSER_H
#define FOVDLDEFINITIONPARSER_H
#include "fdefinition.h"

class FImportRules;
class QIODevice;
class QXmlStreamReader;
class QXmlStreamWriter;

/// Reads and writes the saved text of a definition: an XML half with the entry definitions, and
/// behind a marker line an object half, which derived classes read.
///
/// The XML half is
///   <ovdl version="1"><definition name="…">
///     <group name="…"> entries </group>
///     <entry name="…" default="script text" hidden="0" expr="1" min="1" max="1">docu</entry>
///   </definition></ovdl>
/// where default64 and docu64 with base64 stand for what XML can't hold. There is no document type;
/// depth is limited to 100. Defaults are data: they refer to no object and call nothing.
class FOvdlDefinitionParser
{
public:
    static const QString smObjectArea;
    static constexpr int kMaxDepth = 100;

    /// A prototype means that a new definition is to be made; another one is filled.
    explicit FOvdlDefinitionParser(const FExpr<FDefinitionCustom> &definition);
    virtual ~FOvdlDefinitionParser() = default;

    /// Name of the file that is read, for messages.
    void setFile(const std::string &name) { mFile = name; }
    /// Reads a whole saved text. After an error, in whichever half, nothing has been made or
    /// changed and a definition that was to be made is null.
    void read(QIODevice *device);
    void read(const std::string &text);
    /// What was wrong with the text that was read last. The log has it too.
    const std::vector<FScriptError> &errors() const { return mErrors; }
    /// Takes in an XML half as a whole; false, with the reason in the log, if it is damaged.
    bool parse(const std::string &structure);
    /// Adds the entries that were taken in to the definition.
    void build();
    /// Writes the XML half at the present position of \p device.
    void write(QIODevice *device, const std::shared_ptr<FDefinitionCustom> &definition);
    const FExpr<FDefinitionCustom> &getDefinition() const { return mDefinition; }
    static std::string structureText(const FDefinitionBase &definition);

    /// The text behind the marker, key lines included.
    virtual void importObjectsFromString(const QString &) {}

protected:
    /// The name that the text gives the definition; it may have another one by now.
    const std::string &givenName() const { return mName; }
    /// Reads the object half, which begins on \p line, without touching the definition: false if it
    /// can't be taken in. Called before anything is made.
    virtual bool prepareObjects(const QString &, size_t /*line*/) { return true; }
    /// Notes and logs a fault of the XML half with its place.
    virtual void error(qint64 line, qint64 column, const FReason &reason);
    FExpr<FDefinitionCustom> mDefinition;
    std::string mFile;
    std::vector<FScriptError> mErrors;

private:
    struct Entry
    {
        std::string name, docu;
        FExprBase value; ///< null for a group
        bool hidden = false, isExpr = true;
        int minimum = 1, maximum = 1;
        std::vector<Entry> children;
    };
    using Entries = std::vector<Entry>;
    /// \p depth: 0 for the definition itself, which is like a group without a name.
    bool parseContent(QXmlStreamReader &xml, Entry *owner, bool group, int depth);
    void build(const Entries &entries, const std::shared_ptr<FEntryDef> &parent);

    std::string mName;
    Entries mEntries;
    const FImportRules *mRules = nullptr; // of the defaults
};
#endif
