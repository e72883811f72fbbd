// SPDX-License-Identifier: Apache-2.0
#include "fgenintsetup.h"

#include "fcmd.h"
#include "fcmdmanager.h"
#include "fdefinitiongenint.h"
#include "fgenintcommandfile.h"
#include "fgenintdefinitionparser.h"
#include "fgenintresultsfile.h"
#include "fgenintworkbench.h"
#include "fhistory.h"
#include "fimportrules.h"
#include "fio.h"
#include "flogmsg.h"
#include "fmarloctrl.h"
#include "fobjectmanager.h"
#include "fsafefile.h"
#include "fscript.h"
#include "fscriptlexer.h"

#include <QTemporaryFile>
#include <algorithm>

namespace {
const char kPrologue[] = "<?xml version=\"1.0\" encoding=\"UTF-8\" ?>";
const char kSource[] = "Set-up";

std::shared_ptr<FDefinitionGenInt> definitionOf(const FGenIntComputation &computation)
{
    const auto configuration = computation.getConfiguration().getPtr();
    return configuration ? configuration->getDefinition().ptr<FDefinitionGenInt>() : nullptr;
}

const FClassInfo &connectorClass()
{
    const auto page = FObject::getPrototype("FSoftwareConnector");
    return page ? page->classInfo() : FObject::getPrototype("FKeptConnector")->classInfo();
}

/// A statement at the top of the object half.
struct Block
{
    std::string text, name;
    size_t line = 1;
    int rank = 0; ///< an object comes behind those that it refers to
};

int rankOf(const std::string &creator)
{
    return creator == "genericIntegrationConfiguration" ? 1
           : creator == "genericIntegrationComputation" ? 2
           : creator == "softwareConnector"             ? 3
                                                        : 0;
}

std::vector<Block> blocksOf(const std::string &text, size_t firstLine)
{
    std::vector<Block> blocks;
    FScriptLexer lexer(text, firstLine);
    while (lexer.peek().kind != FScriptToken::End) {
        if (lexer.second().text == ":") { // curFile : name
            lexer.skipLine();
            continue;
        }
        const size_t begin = lexer.peek().start;
        Block block;
        size_t column = 0;
        lexer.place(begin, &block.line, &column);
        const FScriptToken word = lexer.take();
        block.rank = rankOf(word.text);
        block.name = lexer.peek().text;
        int depth = 0;
        size_t end = word.end;
        while (lexer.peek().kind != FScriptToken::End) {
            const bool isOpen = lexer.isSymbol("{"), isClose = lexer.isSymbol("}");
            const bool isEnd = lexer.isSymbol(";");
            if (lexer.isSymbol("["))
                lexer.setInList(true);
            else if (lexer.isSymbol(";"))
                lexer.setInList(false);
            end = lexer.take().end;
            depth += isOpen ? 1 : isClose ? -1 : 0;
            if (depth <= 0 && (isClose || isEnd))
                break;
        }
        block.text = text.substr(begin, end - begin);
        blocks.push_back(std::move(block));
    }
    std::stable_sort(blocks.begin(), blocks.end(),
                     [](const Block &a, const Block &b) { return a.rank < b.rank; });
    return blocks;
}

/// Reads one part: the definition as any saved one, then the objects by the rules of set-ups.
class PartParser : public FGenIntDefinitionParser
{
public:
    PartParser(FScriptReader::Known *known, size_t line, FGenIntSetup::Outcome *outcome,
               std::vector<FScriptReader::Missing> *missing)
        : FGenIntDefinitionParser(FExpr<FDefinitionCustom>(FDefinitionGenInt::mpNull))
        , mKnown(known)
        , mPartLine(line)
        , mOutcome(outcome)
        , mMissing(missing)
    {
    }

protected:
    bool prepareObjects(const QString &, size_t line) override
    {
        mObjectsLine = line;
        return true;
    }
    void importObjectsFromString(const QString &text) override;

private:
    std::shared_ptr<FObject> run(const Block &block);
    FScriptReader::Known *mKnown;
    size_t mPartLine, mObjectsLine = 1;
    FGenIntSetup::Outcome *mOutcome;
    std::vector<FScriptReader::Missing> *mMissing;
};

std::shared_ptr<FObject> PartParser::run(const Block &block)
{
    // A workbench of its own would make a computation for itself; as in a project it waits for the
    // one that it is given.
    std::unique_ptr<FLoadingScope> loading;
    if (block.rank == 3)
        loading = std::make_unique<FLoadingScope>(true);
    FScriptReader reader(block.text, mFile, block.line);
    reader.setRules(&FGenIntSetup::rules());
    reader.setKnown(mKnown);
    reader.run();
    loading.reset();
    const auto add = [](auto *all, const auto &more) {
        all->insert(all->end(), more.begin(), more.end());
    };
    add(&mOutcome->errors, reader.errors());
    add(mMissing, reader.missing());
    const auto at = mKnown->find(block.name);
    return at == mKnown->end() ? nullptr : at->second;
}

void PartParser::importObjectsFromString(const QString &text)
{
    const auto definition = getDefinition().ptr<FDefinitionGenInt>();
    if (!definition)
        return;
    (*mKnown)[givenName()] = definition;
    FDefinitionGenInt::Files files;
    std::shared_ptr<FConfigurationGenInt> configuration;
    std::shared_ptr<FGenIntComputation> computation;
    for (const Block &block : blocksOf(S(text), mPartLine + mObjectsLine - 1)) {
        if (block.rank > 0 && !files.empty() && definition->getFiles().empty())
            definition->setFiles(files);
        const auto object = run(block);
        if (auto file = std::dynamic_pointer_cast<FGenIntFile>(object))
            files.push_back(FExpr<FGenIntFile, true>(file));
        else if (auto one = std::dynamic_pointer_cast<FConfigurationGenInt>(object))
            configuration = one;
        else if (auto run = std::dynamic_pointer_cast<FGenIntComputation>(object))
            computation = run;
    }
    if (definition->getFiles().empty())
        definition->setFiles(files);
    if (configuration && configuration->getDefinition().getExpr() != definition)
        configuration->setDefinition(FExpr<FDefinitionCustom>(definition));
    if (computation) {
        computation->setConfiguration(FExpr<FConfigurationCustom>(configuration));
        mOutcome->computations.push_back(computation);
    }
}
} // namespace

const FImportRules &FGenIntSetup::rules()
{
    static const FImportRules sRules({&FGenIntCommandFile::staticClass(),
                                      &FGenIntResultsFile::staticClass(),
                                      &FConfigurationGenInt::staticClass(),
                                      &FGenIntComputation::staticClass(), &connectorClass()},
                                     true);
    return sRules;
}

FGenIntSetup::Computations
FGenIntSetup::chainOf(const std::shared_ptr<FGenIntComputation> &computation)
{
    Computations chain;
    for (const auto &one : getManageds<FGenIntComputation>()) {
        const auto other = one.getPtr();
        if (other && other != computation &&
            (other->hasClient(computation, true) || computation->hasClient(other, true)))
            chain.push_back(other);
    }
    return chain;
}

std::string FGenIntSetup::pathOf(const FGenIntComputation &computation)
{
    const auto connector = FGenIntWorkbench::instance()->connectorOf(&computation);
    return connector ? connector->getName() + "/" + computation.getName() : computation.getName();
}

FGenIntSetup::What FGenIntSetup::ask(const std::shared_ptr<FGenIntComputation> &computation)
{
    const Computations chain = chainOf(computation);
    if (chain.empty())
        return What::Only;
    const std::string own = pathOf(*computation);
    std::string list = own + "\n";
    for (const auto &member : chain)
        list += pathOf(*member) + "\n";
    const int answer = FIO::instance()->question(
        nullptr, "SoftwareConnector Export",
        "This SoftwareConnector is part of a chain of linked SoftwareConnectors.\n" + list +
            "\n\nWhat should be exported?",
        "Entire Chain", own + " Only", "Cancel", 0, -1);
    return answer == 0 ? What::Chain : answer == 1 ? What::Only : What::Nothing;
}

FGenIntSetup::Computations
FGenIntSetup::membersOf(const std::shared_ptr<FGenIntComputation> &computation, bool chain)
{
    Computations members{computation};
    if (chain) {
        const Computations others = chainOf(computation);
        members.insert(members.end(), others.begin(), others.end());
    }
    return members;
}

std::vector<std::shared_ptr<FManaged>>
FGenIntSetup::companionsOf(const FGenIntComputation &computation)
{
    std::vector<std::shared_ptr<FManaged>> found;
    if (const auto connector = FGenIntWorkbench::instance()->connectorOf(&computation))
        found.push_back(connector);
    if (const auto configuration = computation.getConfiguration().getPtr())
        found.push_back(configuration);
    if (const auto definition = definitionOf(computation)) {
        found.push_back(definition);
        for (const auto &file : definition->getFiles())
            found.push_back(file.getPtr());
    }
    return found;
}

QByteArray FGenIntSetup::text(const Computations &members, QString *why)
{
    QString reason;
    QTemporaryFile file;
    if (!file.open()) {
        *(why ? why : &reason) = file.errorString();
        return {};
    }
    // Suppliers first; being fed is no order between all pairs, so each goes ahead of the first one
    // that it feeds.
    Computations sorted;
    for (const auto &member : members) {
        const auto fed = std::find_if(sorted.begin(), sorted.end(), [&](const auto &other) {
            return member->hasClient(other, true);
        });
        sorted.insert(fed, member);
    }
    for (const auto &member : sorted) {
        const auto definition = definitionOf(*member);
        if (!definition)
            continue;
        std::unordered_set<FExpr<FManaged, false>> objects{
            FExpr<FManaged, false>(member),
            FExpr<FManaged, false>(member->getConfiguration().getPtr())};
        if (const auto connector = FGenIntWorkbench::instance()->connectorOf(member.get()))
            objects.insert(FExpr<FManaged, false>(connector));
        definition->save(objects, file);
    }
    file.seek(0);
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        reason = file.errorString();
    else if (bytes.isEmpty())
        reason = Q(members.front()->getName()) + " has no configuration with a definition";
    if (why)
        *why = reason;
    return reason.isEmpty() ? bytes : QByteArray();
}

bool FGenIntSetup::save(const std::shared_ptr<FGenIntComputation> &computation, bool chain,
                        const QString &path, QString *why)
{
    const QByteArray bytes = text(membersOf(computation, chain), why);
    return !bytes.isEmpty() && FSafeFile::write(path, bytes, why);
}

FGenIntSetup::Outcome FGenIntSetup::read(const std::string &text, const std::string &file)
{
    Outcome outcome;
    FHistorySavepoint step(F_TEXT("Software Connector Import"));
    FScriptReader::Known known;
    std::vector<FScriptReader::Missing> missing;
    size_t begin = text.compare(0, 3, "\xef\xbb\xbf") == 0 ? 3 : 0, line = 1;
    while (begin < text.size()) {
        // A part reaches up to the line that begins the next one.
        size_t end = text.find(kPrologue, begin + 1);
        end = end == std::string::npos ? text.size() : text.rfind('\n', end) + 1;
        if (end <= begin)
            end = text.size();
        PartParser parser(&known, line, &outcome, &missing);
        parser.setFile(file);
        parser.read(text.substr(begin, end - begin));
        outcome.errors.insert(outcome.errors.end(), parser.errors().begin(), parser.errors().end());
        line += size_t(std::count(text.begin() + long(begin), text.begin() + long(end), '\n'));
        begin = end;
    }
    if (outcome.errors.empty() && known.empty())
        outcome.errors.push_back({file, 1, 1, FReason("the file holds no set-up")});
    if (!outcome.errors.empty()) {
        step.rollback();
        outcome.computations.clear();
        return outcome;
    }
    outcome.missing = FConfiguration::leaveUnset(missing);
    for (const auto &computation : outcome.computations)
        FLogMsg::info(kSource, computation->getName() + " would run",
                      computation->getApplication() + " " + computation->getArguments(), nullptr);
    return outcome;
}
