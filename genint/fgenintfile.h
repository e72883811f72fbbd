// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTFILE_H
#define FGENINTFILE_H
#include "fmanaged.h"

/// The group of entries that holds files and geometry exports.
extern const std::string ENTRYGROUP_EXPORTS;

/// A text file that is stored inside an integration: the project holds the text, not a path.
class FGenIntFile : public FManaged
{
    F_CLASS(FGenIntFile, FManaged)
public:
    explicit FGenIntFile(std::string name = std::string());

    /// Renames the file, relative to the run folder; tags that refer to it follow.
    virtual std::shared_ptr<FGenIntFile> setFileName(const QString &name);
    virtual void setForceWindowsLineEndings(bool force);
    virtual bool getForceWindowsLineEndings() const { return mForceWindowsLineEndings; }

    /// Takes plain text, or "[B64]" and the base64 form of UTF-8 bytes.
    std::shared_ptr<FGenIntFile> setContent(const QString &text);
    /// The saved form: always "[B64]" and base64.
    QString getContent() const;
    const QString &text() const { return mContent; }
    const QString &getFileName() const { return mFileName; }
    /// Takes text and name of a file on disk; does nothing if it can't be opened.
    void initFromFile(const QString &path);
    using FManaged::init;
    void init(const std::shared_ptr<FGenIntFile> &source);

    void visitState(FStateVisitor &state) override;
    static void initCmds();

private:
    QString mFileName;
    QString mContent = QLatin1String("");
    bool mForceWindowsLineEndings = false;
};
#endif
