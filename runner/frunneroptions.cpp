// SPDX-License-Identifier: Apache-2.0
#include "frunneroptions.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace {
template <class T>
bool readNumber(const char *text, T *number)
{
    const char *end = text + std::strlen(text);
    const auto result = std::from_chars(text, end, *number);
    return result.ec == std::errc() && result.ptr == end;
}

bool readSeconds(const char *text, double *seconds)
{
    return readNumber(text, seconds) && std::isfinite(*seconds) && *seconds >= 0;
}
} // namespace

bool FRunnerOptions::parse(int argc, char **argv, std::string *why)
{
    const struct
    {
        const char *name;
        std::string *text;
    } texts[] = {
        {"--directory", &directory}, {"--record", &recordFile}, {"--stdin", &stdinFile},
        {"--stdout", &stdoutFile},   {"--stderr", &stderrFile}, {"--computation", &computation},
        {"--design", &design},       {"--prepared", &prepared}, {"--place", &place},
        {"--inputs", &inputs},       {"--program", &program}};
    int i = 1;
    for (; i < argc && std::strcmp(argv[i], "--") != 0; i += 2) {
        const std::string name = argv[i];
        if (i + 1 >= argc) {
            *why = "expected a value after " + name;
            return false;
        }
        const char *value = argv[i + 1];
        std::string *text = nullptr;
        for (const auto &option : texts)
            if (name == option.name)
                text = option.text;
        bool good = true;
        if (text)
            *text = value;
        else if (name == "--expect")
            expected.emplace_back(value);
        else if (name == "--variable")
            variables.emplace_back(value);
        else if (name == "--wait-for")
            good = (waitForAll = !std::strcmp(value, "all")) || !std::strcmp(value, "first");
        else if (name == "--control")
            good = readNumber(value, &control) && control >= 0;
        else if (name == "--folder")
            good = readNumber(value, &folder) && folder >= 0;
        else if (name == "--parent")
            good = readNumber(value, &parent) && parent >= 0;
        else if (name == "--time-limit")
            good = readSeconds(value, &timeLimit);
        else if (name == "--grace")
            good = readSeconds(value, &grace);
        else if (name == "--capture-limit")
            good = readNumber(value, &captureLimit);
        else if (name == "--file-limit")
            good = readNumber(value, &fileLimit);
        else {
            *why = "unknown option " + name;
            return false;
        }
        if (!good) {
            *why = "expected a number after " + name + ", found \"" + value + "\"";
            return false;
        }
    }
    if (directory.empty() || control < 0 || i + 1 >= argc || place.empty() != prepared.empty() ||
        (!place.empty() && parent < 0)) {
        *why = "expected --directory DIR --control FD [OPTIONS] -- PROGRAM [ARG...]";
        return false;
    }
    command.assign(argv + i + 1, argv + argc + 1);
    return true;
}
