// SPDX-License-Identifier: Apache-2.0
#ifndef CLI_H
#define CLI_H
#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <string>
#include <vector>

struct FTableRow;

/// Exit codes of the program.
enum FExitCode {
    kDone = 0,
    kFailed = 1,
    kUsage = 2,
    kUnreadable = 3,
    kUnwritable = 4,
    kCancelled = 130
};

/// What the subcommands are given.
struct FCliOptions
{
    std::string project, file, output, configuration, design, topic;
    std::string templateFile, sample, as, definition, program, from, to;
    std::vector<std::string> computations, sets, expressions, templates;
    int jobs = 0;
    double timeout = -1;
    bool chain = false, only = false, dot = false, svg = false;
    bool fresh = false, failed = false, reread = false, trustProgram = false;
    int retries = 0;
    std::string designTable, resultTable, keepFree;
    bool allDesigns = false, keepGoing = false, json = false, markdown = false;
};

namespace FCli {
int run(const FCliOptions &options);
int eval(const FCliOptions &options);
int extract(const FCliOptions &options);
int expand(const FCliOptions &options);
int check(const FCliOptions &options);
int save(const FCliOptions &options);
int importDefinition(const FCliOptions &options);
int add(const FCliOptions &options);
int exportSetup(const FCliOptions &options);
int importSetup(const FCliOptions &options);
int link(const FCliOptions &options);
int graph(const FCliOptions &options);
int pack(const FCliOptions &options);
int unpack(const FCliOptions &options);
int commands(const FCliOptions &options);
int help(const FCliOptions &options);

// Shared by them
/// Loads the project and applies --set. kDone, kUnreadable (what could be read is there) or kUsage.
int load(const FCliOptions &options);
/// Passes on the code of a failed load. Of a project that could not be read whole it says what was
/// not done with it, and why.
int refuse(int loaded, const char *consequence);
QJsonArray log();
void print(const QJsonValue &json);
/// For commands that ended before they had a result: the log alone.
void printLogIfSilent();
QJsonArray rowsOf(const std::vector<FTableRow> &values, bool withTypes);
/// \p text and blanks up to \p width characters.
std::string padded(const std::string &text, size_t width);
void print(const std::vector<FTableRow> &values);
void out(const std::string &text);
void err(const std::string &text);
/// The exit code after what was printed: kUnwritable with the reason if all went well, but standard
/// output took not everything.
int finish(int code);
} // namespace FCli
#endif
