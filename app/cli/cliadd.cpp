// SPDX-License-Identifier: Apache-2.0
#include "cli.h"
#include "fconfigurationgenint.h"
#include "fdefinitiongenint.h"
#include "fexternrun.h"
#include "fgenintcommandfile.h"
#include "fgenintcomputation.h"
#include "fgenintencoding.h"
#include "fgenintresultsfile.h"
#include "fobjectmanager.h"
#include "fproject.h"
#include "fprojectfolder.h"
#include "fsafefile.h"
#include "fuserfile.h"

#include <QFileInfo>
#include <algorithm>
#include <cstring>

namespace {
/// Puts a file into a project. A project in canonical form is saved so again; to any other one the
/// new statements are added at the end, so that comments and order of a user stay.
class FAddition
{
public:
    explicit FAddition(const FCliOptions &options)
        : mOptions(options)
        , mSource(Q(options.sample.empty() ? options.templateFile : options.sample))
        , mName(options.as.empty() ? QFileInfo(mSource).fileName() : Q(options.as))
    {
    }
    int perform();

private:
    int fail(int code, const std::string &text)
    {
        FCli::err(text);
        return code;
    }
    bool findDefinition();
    bool setProgram();
    /// Fills \p file from the one that is added; false if not all of it can be kept.
    bool fill(FGenIntFile *file);
    bool addTemplate();
    bool addSample();
    void call(const std::string &object, const std::string &command, const std::string &argument)
    {
        mStatements += object + "." + command + "(" + argument + ");\n";
    }
    /// Makes the rest of an integration where there is none.
    void makeConfiguration();
    std::shared_ptr<FGenIntComputation> makeComputation(const std::string &name);
    bool write();

    const FCliOptions &mOptions;
    QString mSource, mName;
    std::string mBytes;      // of the file that is added
    std::string mBefore;     // the project's file as it was
    std::string mStatements; // what changes in objects that were there
    bool mIsNew = false, mIsCanonical = false;
    long mLastOrder = 0; // objects behind it are new
    std::shared_ptr<FDefinitionGenInt> mDefinition;
    std::shared_ptr<FConfigurationGenInt> mConfiguration;
    std::vector<std::shared_ptr<FGenIntComputation>> mComputations;
};

bool FAddition::findDefinition()
{
    std::vector<std::shared_ptr<FDefinitionGenInt>> all;
    std::string names;
    for (const auto &handle : getEntities<FDefinitionGenInt>()) {
        all.push_back(handle.getPtr());
        names += (names.empty() ? "" : ", ") + all.back()->getName();
        if (all.back()->getName() == mOptions.definition)
            mDefinition = all.back();
    }
    if (all.size() == 1 && mOptions.definition.empty())
        mDefinition = all.front();
    if (!mDefinition && !all.empty()) {
        FCli::err(mOptions.definition.empty()
                      ? "the project has several definitions, choose one with --definition: " +
                            names
                      : "the project has no definition " + mOptions.definition + ", only " + names);
        return false;
    }
    if (!mDefinition) {
        mDefinition = FDefinitionGenInt::create(
            nullptr, mOptions.definition.empty() ? "definition" : mOptions.definition, nullptr);
        makeConfiguration();
        return true;
    }
    for (const auto &handle : getEntities<FConfigurationGenInt>())
        if (handle->getDefinition().getExpr() == mDefinition && !mConfiguration)
            mConfiguration = handle.getPtr();
    for (const auto &handle : getManageds<FGenIntComputation>())
        if (const auto configuration = handle->getConfiguration().getPtr())
            if (configuration->getDefinition().getExpr() == mDefinition)
                mComputations.push_back(handle.getPtr());
    return true;
}

void FAddition::makeConfiguration()
{
    mConfiguration = FConfigurationGenInt::create(nullptr, "configuration", true, mDefinition);
}

std::shared_ptr<FGenIntComputation> FAddition::makeComputation(const std::string &name)
{
    if (!mConfiguration)
        makeConfiguration();
    auto made = FGenIntComputation::create(name);
    made->setConfiguration(FExpr<FConfigurationCustom>(mConfiguration));
    mComputations.push_back(made);
    return made;
}

/// A word as a shell takes it back whole.
std::string shellWord(const std::string &word)
{
    const auto plain = [](unsigned char c) {
        return std::isalnum(c) || c >= 0x80 || std::strchr("_@%+=:,./-", c);
    };
    if (!word.empty() && std::all_of(word.begin(), word.end(), plain))
        return word;
    std::string quoted = "'";
    for (const char c : word)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

bool FAddition::setProgram()
{
    std::vector<std::string> words;
    if (!FExternRun::splitWords(mOptions.program, &words)) {
        FCli::err("--program " + mOptions.program + ": a quote without end");
        return false;
    }
    if (mComputations.size() > 1 && !words.empty()) {
        FCli::err("--program: several computations use definition " + mDefinition->getName());
        return false;
    }
    const bool isThere = !mComputations.empty();
    if (!isThere)
        makeComputation(words.empty() ? "computation" : S(QFileInfo(Q(words[0])).baseName()));
    if (words.empty())
        return true;
    std::string arguments;
    for (size_t i = 1; i < words.size(); ++i)
        arguments += (i > 1 ? " " : "") + shellWord(words[i]);
    const auto &computation = mComputations.front();
    computation->setApplication(words[0]);
    computation->setArguments(arguments);
    if (isThere) {
        call(computation->getName(), "setApplication", FLiteral::quoted(words[0]));
        call(computation->getName(), "setArguments", FLiteral::quoted(arguments));
    }
    return true;
}

bool FAddition::fill(FGenIntFile *file)
{
    file->initFromFile(mSource);
    QByteArray bytes;
    int bad = 0;
    if (FGenIntEncoding::encode(file->text(), file->getEncoding(), &bytes, &bad) &&
        bytes == QByteArray::fromStdString(mBytes))
        return true;
    FCli::err("cannot keep " + S(mSource) + " byte for byte");
    return false;
}

bool FAddition::addTemplate()
{
    if (mDefinition->getFile(S(mName))) {
        FCli::err("definition " + mDefinition->getName() + " has a file " + S(mName) +
                  " already; --as gives another name");
        return false;
    }
    const auto file = FGenIntCommandFile::create(S(QFileInfo(mName).fileName()));
    if (!fill(file.get()))
        return false;
    file->setFileName(mName);
    mDefinition->addFile(FExpr<FGenIntFile>(file));
    return true;
}

bool FAddition::addSample()
{
    const auto there = mDefinition->getFile(S(mName));
    if (there && !there.ptr<FGenIntResultsFile>()) {
        FCli::err("definition " + mDefinition->getName() + " has an input template " + S(mName) +
                  "; --as gives another name");
        return false;
    }
    if (!there) {
        const auto file = FGenIntResultsFile::create(S(QFileInfo(mName).fileName()));
        if (!fill(file.get()))
            return false;
        file->setFileName(mName);
        mDefinition->addFile(FExpr<FGenIntFile>(file));
        return true;
    }
    // The rules and the names stay.
    const auto read = f_make_shared<FGenIntResultsFile>(std::string());
    if (!fill(read.get()))
        return false;
    const QString content = read->getContent();
    there->setContent(content);
    call(there->getName(), "setContent", FLiteral::quoted(S(content)));
    if (read->getEncoding() != there->getEncoding()) {
        there->setEncoding(read->getEncoding());
        call(there->getName(), "setEncoding", FLiteral::quoted(S(read->getEncoding())));
    }
    return true;
}

bool FAddition::write()
{
    QString why;
    if (mIsNew || mIsCanonical) {
        if (FProject::instance()->save(Q(mOptions.project), &why))
            return true;
    } else {
        QString added;
        QTextStream stream(&added);
        for (const auto &object : FProject::savingOrder())
            if (object->order() > mLastOrder)
                object->saveScopeManner(stream, 0, false, false);
        stream.flush();
        const QByteArray bytes = QByteArray::fromStdString(mBefore) +
                                 (mBefore.empty() || mBefore.back() == '\n' ? "" : "\n") +
                                 added.toUtf8() + QByteArray::fromStdString(mStatements);
        if (bytes.size() > FUserFile::kMostBytes)
            why = "The project can't be saved: " + FUserFile::tooLarge(bytes.size());
        else if (FSafeFile::write(Q(mOptions.project), bytes, &why))
            return true;
    }
    FCli::err(S(why));
    return false;
}

int FAddition::perform()
{
    const QString path = FProjectFolder::scriptOf(Q(mOptions.project));
    QString why = relativePathProblem(mName);
    if (!why.isEmpty())
        return fail(kUsage, "the file name " + S(mName) + " is refused: " + S(why));
    if (!FUserFile::read(mSource, &mBytes, &why))
        return fail(kFailed, "cannot read " + S(mSource) + ": " + S(why));
    mIsNew = !QFileInfo::exists(path);
    if (mIsNew) {
        FProject::instance()->setPath(path);
    } else {
        if (!FUserFile::read(path, &mBefore, &why))
            return fail(kUnreadable, "cannot read " + mOptions.project + ": " + S(why));
        const int loaded = FCli::load(mOptions);
        if (loaded != kDone)
            return FCli::refuse(loaded, "nothing was added");
        mIsCanonical = FProjectFolder::isAt(path) ||
                       FProject::instance()->utf8() == QByteArray::fromStdString(mBefore);
    }
    for (const auto &object : FObjectManager::instance()->all())
        mLastOrder = std::max(mLastOrder, object->order());
    if (!findDefinition())
        return kUsage;
    const bool isOld = mDefinition->order() <= mLastOrder;
    if (((mIsNew || !isOld || !mOptions.program.empty()) && !setProgram()) ||
        !(mOptions.sample.empty() ? addTemplate() : addSample()))
        return kUsage;
    if (isOld)
        call(mDefinition->getName(), "setFiles",
             FScriptType<FDefinitionGenInt::Files>::to(mDefinition->getFiles()).toString());
    std::string now;
    if (!mIsNew && (!FUserFile::read(path, &now, &why) || now != mBefore))
        return fail(kUnwritable, mOptions.project + " was changed meanwhile, nothing was added");
    if (!write())
        return kUnwritable;
    FCli::out("definition " + mDefinition->getName() + ": " +
              (mOptions.sample.empty() ? "template " : "sample ") + S(mName) + " of " +
              std::to_string(mBytes.size()) + " bytes");
    return kDone;
}
} // namespace

int FCli::add(const FCliOptions &options)
{
    if (options.sample.empty() == options.templateFile.empty()) {
        err("add: expected either --template FILE or --sample FILE");
        return kUsage;
    }
    return FAddition(options).perform();
}
