// SPDX-License-Identifier: Apache-2.0
//
// Measures reading as whole processes against plain tools, all in one run.
//
//   readerspeed compare LOG [TABLE]   prints a table of ratios
//   readerspeed read FILE RULES       reads once: RULES rules for a log of gen_log
//   readerspeed average FILE ROWS     reads once: mean of the last ROWS rows, and the last value

#include "fgenintreadercore.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace
{
QVector<FGenIntRule> logRules(int count)
{
    static const char *const words[] = {"maximum stress", "TOTAL mass", "drag Coefficient",
                                        "outlet pressure", "heat flux"};
    QVector<FGenIntRule> rules;
    for (int i = 0; i < count; ++i) {
        char anchor[80];
        const int zone = count == 1 ? 50 : i * 100 / count;
        snprintf(anchor, sizeof anchor, "%s in zone %03d:", words[zone % 5], zone);
        FGenIntRule rule;
        rule.name = anchor;
        rule.anchor = anchor;
        rule.first = i % 2 == 1;
        rule.line = i % 6 - 2;
        rule.column = i % 6;
        if (i % 10 == 7) {
            rule.anchor = i % 20 == 7 ? "forces on" : "linear solver converged";
        }
        rules.append(rule);
    }
    return rules;
}

int readOnce(const char *path, const QVector<FGenIntRule> &rules)
{
    QString why;
    const auto text = FGenIntText::fromFile(QString::fromLocal8Bit(path), &why);
    if (!text) {
        fprintf(stderr, "%s: %s\n", path, qPrintable(why));
        return 1;
    }
    double sum = 0;
    int found = 0;
    for (const FGenIntReading &reading : FGenIntReaderCore(*text).read(rules, FGenIntColumns())) {
        if (!qIsNaN(reading.value)) {
            sum += reading.value;
            ++found;
        }
    }
    printf("%d of %d values, sum %.17g\n", found, static_cast<int>(rules.size()), sum);
    return 0;
}

struct Cost
{
    double seconds = 1e9;
    long kilobytes = 0;
};

Cost measure(const std::string &command)
{
    Cost best;
    for (int i = 0; i < 9; ++i) {
        const auto start = std::chrono::steady_clock::now();
        const pid_t child = fork();
        if (child == 0) {
            execl("/bin/sh", "sh", "-c", ("exec " + command).c_str(), nullptr);
            _exit(127);
        }
        int status = 0;
        rusage usage = {};
        wait4(child, &status, 0, &usage);
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        if (status != 0) {
            fprintf(stderr, "failed: %s\n", command.c_str());
        }
        best.seconds = std::min(best.seconds, took.count());
        best.kilobytes = usage.ru_maxrss;
    }
    return best;
}

void compare(const char *self, const char *log, const char *table)
{
    const auto show = [](const char *what, const Cost &cost, double base) {
        printf("%-28s %8.1f ms  %5.2f x  %7ld KB\n", what, cost.seconds * 1e3, cost.seconds / base,
               cost.kilobytes);
    };
    const std::string quoted = std::string("'") + log + "'";
    const double cat = measure("cat " + quoted + " > /dev/null").seconds;
    printf("%-28s %8.1f ms\n", "cat", cat * 1e3);
    for (const char *count : {"1", "10", "100"}) {
        const auto cost =
            measure(std::string(self) + " read " + quoted + " " + count + " > /dev/null");
        show((std::string(count) + " rules").c_str(), cost, cat);
    }
    if (table) {
        const std::string file = std::string("'") + table + "'";
        const double tail =
            measure("sh -c \"tail -n 1000 " + file +
                    " | awk '{s+=\\$3; l=\\$4} END {print s/NR, l}'\" > /dev/null")
                .seconds;
        printf("%-28s %8.1f ms\n", "tail | awk", tail * 1e3);
        for (const char *rows : {"1000", "1000000"}) {
            show((std::string("average of ") + rows + " rows").c_str(),
                 measure(std::string(self) + " average " + file + " " + rows + " > /dev/null"),
                 tail);
        }
    }
}
} // namespace

int main(int argc, char **argv)
{
    if (argc >= 3 && strcmp(argv[1], "compare") == 0) {
        compare(argv[0], argv[2], argc > 3 ? argv[3] : nullptr);
        return 0;
    }
    if (argc == 4 && strcmp(argv[1], "read") == 0) {
        return readOnce(argv[2], logRules(static_cast<int>(strtol(argv[3], nullptr, 10))));
    }
    if (argc == 4 && strcmp(argv[1], "average") == 0) {
        FGenIntRule mean;
        mean.name = "mean";
        mean.column = 2;
        mean.average = true;
        mean.averageRows = static_cast<unsigned>(strtoul(argv[3], nullptr, 10));
        FGenIntRule last;
        last.name = "last";
        last.line = -1;
        last.column = 3;
        return readOnce(argv[2], {mean, last});
    }
    fputs("usage: readerspeed compare LOG [TABLE] | read FILE RULES | average FILE ROWS\n", stderr);
    return 2;
}
