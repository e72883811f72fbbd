// SPDX-License-Identifier: Apache-2.0
#include "fexternrun.h"
#include "fgenintcheckparts.h"
#include "fgenintcomputation.h"
#include "fprogramsearch.h"
#include "frunfolder.h"
#include "fsafefile.h"

#include <QFile>
#include <QFileInfo>
#include <map>

using namespace FGenIntCheckParts;

namespace {
/// PATH as the program's own environment has it.
std::string searchPath(const FExternComputation &computation, bool *isSet)
{
    for (const std::string &variable : computation.getEnvironment())
        if (variable.compare(0, 5, "PATH=") == 0) {
            *isSet = true;
            return variable.substr(5);
        }
    *isSet = qEnvironmentVariableIsSet("PATH");
    return qgetenv("PATH").toStdString();
}

/// The program that a script names in its first line; empty for anything else.
std::string interpreterOf(const std::string &path)
{
    QFile file(Q(path));
    if (!file.open(QIODevice::ReadOnly))
        return std::string();
    const QByteArray line = file.readLine(256);
    if (!line.startsWith("#!"))
        return std::string();
    const QByteArray words = line.mid(2).simplified();
    return words.split(' ').first().toStdString();
}

/// Path without what says nothing: two names for one file become one.
QString normalized(const QString &path)
{
    QStringList parts = path.split('/', Qt::SkipEmptyParts);
    parts.removeAll(QStringLiteral("."));
    return parts.join('/');
}

/// The files that a run puts into its folder.
class FRunFiles
{
public:
    FRunFiles(const FGenIntComputation &computation, FGenIntFindings *findings)
        : mComputation(computation)
        , mFindings(findings)
    {
        for (const char *name : {"stdout.txt", "stderr.txt", FRunFolder::kOwn})
            mFiles.emplace(name, "the run itself");
    }

    void add(const FManaged &object, const QString &name, const std::string &writer)
    {
        if (!relativePathProblem(name).isEmpty())
            return; // told of elsewhere
        const QString path = normalized(name);
        const auto clash = [&](const std::string &message, const std::string &other) {
            mFindings->error(object, message + " of computation " + mComputation.getName())
                .in(name)
                .between(other + " and " + writer, "a name of its own for each");
        };
        const auto known = mFiles.emplace(path, writer);
        if (!known.second)
            return clash("two files would have one name in the run folder", known.first->second);
        for (const auto &other : mFiles)
            if (other.first.startsWith(path + '/') || path.startsWith(other.first + '/'))
                return clash("one name would be a file and a folder in the run folder",
                             other.second);
    }
    bool contains(const QString &name) const { return mFiles.count(normalized(name)) > 0; }

private:
    const FGenIntComputation &mComputation;
    FGenIntFindings *mFindings;
    std::map<QString, std::string> mFiles;
};

void checkInputFile(const FConfiguration &configuration, const std::string &entry,
                    const FInputFile &file, FRunFiles *files, FGenIntFindings *findings)
{
    const std::string source = file.sourcePath();
    const auto error = [&](const std::string &message, const std::string &found) {
        findings->error(configuration, message + " of entry " + shown(Q(entry), 200))
            .in(Q(source))
            .between(found, "a file that can be copied into the run folder");
    };
    if (source.empty())
        return error("no file is named by the value", file.getFileName().toString());
    const QFileInfo info(Q(source));
    if (!info.exists())
        error("there is no file for the value", "nothing");
    else if (!info.isFile())
        error("there is no file for the value", info.isDir() ? "a directory" : "a special file");
    else if (!info.isReadable())
        error("the file for the value can't be read", "no permission");
    const QString target = Q(file.targetName());
    const QString problem = relativePathProblem(target);
    if (!problem.isEmpty())
        error("the copy can't stand in the run folder, " + S(problem) + ": the value",
              shown(target));
    files->add(configuration, target, "the input file of entry " + shown(Q(entry), 200));
}
} // namespace

void FGenIntCheckParts::checkProgram(const FExternComputation &computation,
                                     FGenIntFindings *findings)
{
    const auto error = [&](const std::string &message, const std::string &found,
                           const std::string &expected) {
        findings->error(computation, message).between(found, expected);
    };
    std::vector<std::string> words;
    if (!FExternRun::splitWords(computation.getArguments(), &words))
        error("a quote in the arguments has no end", computation.getArguments(), "quotes in pairs");
    for (const std::string &variable : computation.getEnvironment())
        if (variable.find('=') == std::string::npos || variable[0] == '=')
            error("a variable of the environment has no value or no name", shown(Q(variable)),
                  "NAME=value");
    std::string path = FExternRun::programOf(computation);
    if (path.empty()) {
        error("no program is set",
              computation.getApplication().empty() ? "nothing" : computation.getApplication(),
              "a program that is found along PATH, or the path of one");
        return;
    }
    const bool isName = path.find('/') == std::string::npos;
    if (!isName && path[0] != '/')
        return; // a file of the run, known with its other files only
    bool isSet;
    const std::string folders = searchPath(computation, &isSet);
    const char *problem =
        isName ? FProgramSearch::find(std::string(path), isSet ? folders.c_str() : nullptr, &path)
               : FProgramSearch::problemOf(path);
    if (problem) {
        error("the program can't be started: it is " +
                  std::string(problem[0] == 'i' ? problem + 3 : problem),
              computation.getApplication(),
              isName ? "a program that is found along PATH" : "an executable file");
        return;
    }
    const std::string interpreter = interpreterOf(path);
    const char *missing = interpreter.empty() ? nullptr : FProgramSearch::problemOf(interpreter);
    if (missing)
        error("the program can't be started: its interpreter is " +
                  std::string(missing[0] == 'i' ? missing + 3 : missing),
              interpreter, "an executable file");
}

void FGenIntCheckParts::checkRunFolder(const FGenIntComputation &computation,
                                       const FGenIntDependencies &dependencies,
                                       FGenIntFindings *findings)
{
    const auto configuration = computation.getConfiguration().getPtr();
    const auto definition =
        configuration ? configuration->getDefinition().ptr<FDefinitionGenInt>() : nullptr;
    if (!configuration) {
        findings->error(computation, "the computation can't write its input files")
            .between("no configuration", "a configuration");
        return;
    }
    if (!definition)
        return; // told of by the configuration
    FRunFiles files(computation, findings);
    const auto templates = definition->getFiles(0);
    for (const auto &handle : templates)
        if (const auto file = handle.getPtr())
            files.add(*file, file->getFileName(), "template " + file->getName());
    bool allKnown = true;
    for (const auto &item : configuration->getEntryMap()) {
        const auto entry = item.second.ptr<FEntry>();
        const bool isFile = entry && (entry->hasValueType(FInputFile::mpNull) ||
                                      entry->hasValueType(FGeometryExport::mpNull) ||
                                      entry->getValue().isExpression());
        if (!isFile)
            continue;
        if (!dependencies.isKnown(entry->getValue())) {
            allKnown = false;
            continue;
        }
        const auto value = entry->getValue().getValueObject();
        if (const auto input = std::dynamic_pointer_cast<FInputFile>(value)) {
            if (dependencies.isKnown(input->getFileName()) &&
                dependencies.isKnown(input->getDirectory()))
                checkInputFile(*configuration, entry->getFullName(), *input, &files, findings);
            else
                allKnown = false;
        } else if (const auto geometry = std::dynamic_pointer_cast<FGeometryExport>(value)) {
            const QString name = Q(geometry->getFileName());
            const QString problem = relativePathProblem(name);
            if (!problem.isEmpty())
                findings
                    ->error(*configuration,
                            "the geometry of entry " + shown(item.first, 200) +
                                " can't be written to the run folder: " + S(problem))
                    .in(name)
                    .between(shown(name), "a name relative to the run folder, within it");
            files.add(*configuration, name, "the geometry of entry " + shown(item.first, 200));
        }
    }
    const auto needs = [&](const std::string &name, const std::string &message) {
        if (!name.empty() && allKnown && !files.contains(Q(name)))
            findings->error(computation, message)
                .between(name, "a file that a template or an entry puts into the run folder");
    };
    if (computation.getStandardInput().empty() || computation.getStandardInput()[0] != '/')
        needs(computation.getStandardInput(), "nothing writes the file for standard input");
    const std::string program = FExternRun::programOf(computation);
    if (program.find('/') != std::string::npos && program[0] != '/')
        needs(program,
              "the program is not found, neither beside the project nor in the run folder");
}
