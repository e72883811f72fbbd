// SPDX-License-Identifier: Apache-2.0
#ifndef FGENINTFILE_H
#define FGENINTFILE_H
#include "fmanaged.h"
#include "fscripttype.h"

struct FStatus;
template <class T>
struct FOutcome;

/// The group of entries that holds files and geometry exports.
extern const std::string ENTRYGROUP_EXPORTS;

/// A client of template files whose tags refer to them by name.
class FGenIntFileOwner
{
public:
    virtual ~FGenIntFileOwner() = default;
    virtual bool ownsFile(const FObject *file) const = 0;
    virtual void updateCommandFiles(std::string oldName, std::string newName) = 0;
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
    /// The saved form: always "[B64]" and base64.
    QString getContent() const;
    /// Takes the text of a file of the project's own folder, while the project is loaded.
    FOutcome<std::shared_ptr<FGenIntFile>> setContentFile(const QString &relative);
    /// Where the text lies; while a project is saved as a folder, this puts it there.
    QString getContentFile() const;
    /// The text itself, in the form that was given or made from it when first asked for.
    const QString &text() const;
    /// The same in UTF-8 if it came so; null for a text that came as QString.
    const std::shared_ptr<const std::string> &utf8() const { return mUtf8; }
    const QString &getFileName() const { return mFileName; }
    /// How often a backslash and an n in a plain text of the project were taken for a line end when
    /// it was loaded.
    int unescapedLineFeeds() const { return mUnescaped; }
    /// How the text is written, in the words of FGenIntEncoding; empty for UTF-8.
    FStatus setEncoding(const QString &encoding);
    const QString &getEncoding() const { return mEncoding; }
    /// The file on disk that the text was taken from, and what it was like then: the SHA-1 of its
    /// bytes, two blanks, its path, relative to the project's folder if it lies there. Empty for a
    /// text that was made otherwise.
    void setSource(const QString &source);
    QString getSource() const;
    /// The path, absolute; empty if there is none.
    QString sourcePath() const;
    /// Reads the file anew if it is another one than it was: true, and its text and what
    /// setSource() takes.
    bool readChangedSource(QString *text, QString *source) const;
    /// Takes text, encoding and name of a file on disk; does nothing if it can't be opened, or kept
    /// byte for byte, which the log tells.
    void initFromFile(const QString &path);
    using FManaged::init;
    void init(const std::shared_ptr<FGenIntFile> &source);

    void visitState(FStateVisitor &state) override;
    static void initCmds();

private:
    FOutcome<std::shared_ptr<FGenIntFile>> setContentFromScript(const FUtf8Text &text);
    std::shared_ptr<FGenIntFile> takeUtf8(const std::shared_ptr<const std::string> &given);
    std::shared_ptr<FGenIntFile> contentChanged();

    QString mFileName;
    mutable QString mContent = QLatin1String(""); // null as long as only the UTF-8 form is there
    std::shared_ptr<const std::string> mUtf8;
    bool mForceWindowsLineEndings = false;
    int mUnescaped = 0;
    QString mEncoding = QLatin1String("");
    QString mSource = QLatin1String(""); // with an absolute path
    mutable QString mContentFile;        // in the folder of the project; stays once it is given
};
#endif
