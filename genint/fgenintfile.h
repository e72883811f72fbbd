// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTFILE_H
#define FGENINTFILE_H
#include "fmanaged.h"

/// The group of entries that holds files and geometry exports.
extern const std::string ENTRYGROUP_EXPORTS;

/// The text of a file. One that came as bytes of ASCII is kept so and widened only when that is
/// asked for.
class FGenIntContent
{
public:
    FGenIntContent(const QString &text = QLatin1String("")) : mText(text) {}
    static FGenIntContent fromUtf8(const QByteArray &bytes);
    const QString &text() const;
    /// Null unless the text is at hand in this form.
    const QByteArray &ascii() const { return mAscii; }

private:
    mutable QString mText;
    QByteArray mAscii;
};

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
    std::shared_ptr<FGenIntFile> setContentUtf8(const std::shared_ptr<const FString> &text);
    /// The saved form: always "[B64]" and base64.
    QString getContent() const;
    const QString &text() const { return mContent.text(); }
    const FGenIntContent &content() const { return mContent; }
    const QString &getFileName() const { return mFileName; }
    /// Takes text and name of a file on disk; does nothing if it can't be opened.
    void initFromFile(const QString &path);
    using FManaged::init;
    void init(const std::shared_ptr<FGenIntFile> &source);

    void visitState(FStateVisitor &state) override;
    static void initCmds();

private:
    std::shared_ptr<FGenIntFile> changeContent(const FGenIntContent &content);

    QString mFileName;
    FGenIntContent mContent;
    bool mForceWindowsLineEndings = false;
};
#endif
