// SPDX-License-Identifier: Apache-2.0
#include "cli.h"
#include "fcmd.h"
#include "fcmdmanager.h"
#include "fdocumentation.h"
#include "foperators.h"

#include <QFile>
#include <QStringList>
#include <algorithm>
#include <map>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

using Commands = std::vector<std::shared_ptr<const FCommandInfo>>;

/// Commands of a class itself, not of its bases; an empty name gives the globals.
Commands commandsOf(const std::string &className)
{
    Commands found;
    for (const auto &info : FCmdManager::instance()->all()) {
        const bool global = info->kind == FCommandKind::Global;
        if (global ? className.empty() : info->receiverName() == className)
            found.push_back(info);
    }
    return found;
}

std::string signature(const FCommandInfo &info)
{
    const bool isMember =
        info.kind != FCommandKind::Creator && info.kind != FCommandKind::Global && info.receiver;
    return (isMember ? info.receiverName() + "." : std::string()) + FCommands::signature(info) +
           (info.returns == "none" ? std::string() : " : " + info.returns);
}

int lineWidth()
{
    winsize size = {};
    const bool known = isatty(STDOUT_FILENO) && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0;
    return known && size.ws_col >= 40 ? std::min<int>(size.ws_col, 120) : 80;
}

void printWrapped(const std::string &text, const std::string &indent)
{
    static const int width = lineWidth();
    for (const QString &paragraph : Q(text).split('\n')) {
        QString line = Q(indent);
        for (const QString &word : paragraph.split(' ', Qt::SkipEmptyParts)) {
            if (line.size() > int(indent.size()) && line.size() + 1 + word.size() > width) {
                FCli::out(S(line));
                line = Q(indent);
            }
            line += (line.size() > int(indent.size()) ? " " : "") + word;
        }
        FCli::out(S(line));
    }
}

std::string firstSentence(const std::string &text)
{
    const size_t end = text.find(". ");
    return end == std::string::npos ? text : text.substr(0, end + 1);
}

void printCommand(const FCommandInfo &info)
{
    FCli::out(signature(info));
    const std::string key = info.documentationKey();
    printWrapped(FDocumentation::text(key), "    ");
    for (size_t i = 0; i < info.args.size(); ++i)
        printWrapped(info.args[i].name + ": " +
                         FDocumentation::text(key + ":argument" + std::to_string(i)),
                     "      ");
    if (info.returns != "none")
        printWrapped("returns " + FDocumentation::text(key + ":returnValue"), "      ");
    FCli::out("      " + FDocumentation::text(key + ":example"));
}

void printClass(const FClassInfo &info)
{
    FCli::out(std::string(info.name) + (info.base ? std::string(", a ") + info.base->name : ""));
    printWrapped(FDocumentation::text(std::string("!") + info.name), "    ");
    for (const auto &command : commandsOf(info.name)) {
        FCli::out("");
        printCommand(*command);
    }
}

/// A text of the help folder of the resources; empty if there is none of that name.
std::string helpText(const std::string &topic)
{
    QFile file(QStringLiteral(":/help/") + Q(topic) + QStringLiteral(".txt"));
    return file.open(QFile::ReadOnly) ? file.readAll().trimmed().toStdString() : std::string();
}

/// The words that the overview describes, each with its key.
std::map<std::string, std::string> describedWords()
{
    std::map<std::string, std::string> words;
    for (const auto &info : FCmdManager::instance()->all())
        if (info->kind == FCommandKind::Creator || info->kind == FCommandKind::Global)
            words.emplace(info->name, info->documentationKey());
    for (const FClassInfo *info : FObject::classes())
        if (!commandsOf(info->name).empty())
            words.emplace(info->name, std::string("!") + info->name);
    for (const std::string &name : FOperators::functionNames())
        words.emplace(name, FOperators::function(name)->documentationKey());
    return words;
}

void printWord(const std::string &name, const std::string &key)
{
    printWrapped(name + ": " + firstSentence(FDocumentation::text(key)), "  ");
}

/// Headings and order of the words are those of the text "overview"; what it lacks comes behind.
void printOverview()
{
    FCli::out("turnbuckle help TOPIC tells about a command, a class or a function of scripts, or\n"
              "about one of the subjects tags, rules and notes; turnbuckle --help tells about the\n"
              "command line.");
    auto words = describedWords();
    for (const QString &line : Q(helpText("overview")).split('\n', Qt::SkipEmptyParts)) {
        const auto found = words.find(S(line));
        if (line.startsWith('#')) {
            FCli::out(S("\n" + line.mid(2)));
        } else if (found != words.end()) {
            printWord(found->first, found->second);
            words.erase(found);
        }
    }
    if (!words.empty())
        FCli::out("\nMore");
    for (const auto &word : words)
        printWord(word.first, word.second);
    FCli::out("\nOperators, the ones that bind closest first");
    FCli::out("  ^   unary -   * / %   + -   == != < <= > >=   not   and   or   ?:");
}

const char kLanguage[] = R"(# Script reference

Made by `turnbuckle commands --markdown`.

A project is a UTF-8 text of statements. `word name(arguments) { ... }` creates an object: `word` is
a creator, `name` the name under which other statements refer to it. Inside the braces each line
`.command(arguments);` is called on the object. Without braces the statement ends with `;`.

- Texts stand in double quotes and may span lines. A backslash is an escape only in a run of
  backslashes before a double quote: `\"` is a quote; backslash-n stays two characters.
- Numbers are written with a point, never with a comma. A list is `[a,b,c]`; `nullptr` is an empty
  element.
- Operators, the ones that bind closest first: `^`, unary `-`, `* / %`, `+ -`,
  `== != < <= > >=`, `not`, `and`, `or`, `?:`.
- Comments: `// to the end of the line` and `/* ... */`.
- An error names file, line and column; loading goes on with the next statement.
)";

void markdownCommand(const FCommandInfo &info)
{
    const std::string key = info.documentationKey();
    FCli::out("\n### `" + signature(info) + "`\n");
    printWrapped(FDocumentation::text(key), "");
    if (!info.args.empty())
        FCli::out("");
    for (size_t i = 0; i < info.args.size(); ++i)
        FCli::out("- `" + info.args[i].name + "`" +
                  (info.args[i].hasDefault ? " (default `" + info.args[i].defaultText + "`)" : "") +
                  ": " + FDocumentation::text(key + ":argument" + std::to_string(i)));
    if (info.returns != "none")
        FCli::out("\nReturns " + FDocumentation::text(key + ":returnValue"));
    FCli::out("\n```text\n" + FDocumentation::text(key + ":example") + "\n```");
}

void printMarkdown()
{
    FCli::out(kLanguage);
    FCli::out("## Functions\n");
    for (const std::string &name : FOperators::functionNames()) {
        const auto info = FOperators::function(name);
        FCli::out("- `" + name + "`: " + FDocumentation::text(info->documentationKey()));
    }
    FCli::out("\n## Global commands");
    for (const auto &command : commandsOf(std::string()))
        markdownCommand(*command);
    for (const FClassInfo *info : FObject::classes()) {
        const Commands commands = commandsOf(info->name);
        if (commands.empty())
            continue;
        FCli::out("\n## " + std::string(info->name) + "\n");
        printWrapped(FDocumentation::text(std::string("!") + info->name), "");
        if (info->base)
            FCli::out("\nHas the commands of its base `" + std::string(info->base->name) +
                      "` as well.");
        for (const auto &command : commands)
            markdownCommand(*command);
    }
}
} // namespace

int FCli::commands(const FCliOptions &options)
{
    QJsonArray list;
    if (options.markdown) {
        printMarkdown();
        return kDone;
    }
    for (const auto &info : FCmdManager::instance()->all())
        if (options.json)
            list.append(FCommands::json(*info));
        else
            out(std::string(FCommands::kindName(info->kind)) + "  " + signature(*info));
    if (options.json)
        print(list);
    return kDone;
}

int FCli::help(const FCliOptions &options)
{
    if (options.topic.empty() || options.topic == "overview") {
        printOverview();
        return kDone;
    }
    const std::string subject = helpText(options.topic);
    if (!subject.empty())
        out(subject);
    bool found = !subject.empty();
    const auto separate = [&found] {
        if (found)
            out("");
        found = true;
    };
    for (const auto *info : FObject::classes())
        if (info->name == options.topic) {
            separate();
            printClass(*info);
        }
    for (const auto &info : FCmdManager::instance()->all())
        if (info->name == options.topic) {
            separate();
            printCommand(*info);
        }
    if (const auto function = FOperators::function(options.topic)) {
        separate();
        out(signature(*function));
        printWrapped(FDocumentation::text(function->documentationKey()), "    ");
    }
    if (!found)
        err("there is no command, class, function or subject " + options.topic +
            "; turnbuckle help lists them");
    return found ? kDone : kUsage;
}
