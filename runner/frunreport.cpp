// SPDX-License-Identifier: Apache-2.0
#include "frunreport.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
/// Length of the UTF-8 character at \p text, 0 if there is none. Overlong forms, surrogates and
/// numbers above U+10FFFF aren't characters.
size_t characterLength(const unsigned char *text, size_t size)
{
    const unsigned char first = text[0];
    if (first < 0x80)
        return 1;
    const size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || length > size)
        return 0;
    for (size_t i = 1; i < length; ++i)
        if ((text[i] & 0xC0) != 0x80)
            return 0;
    const bool wrong = (first == 0xE0 && text[1] < 0xA0) || (first == 0xED && text[1] > 0x9F) ||
                       (first == 0xF0 && text[1] < 0x90) || (first == 0xF4 && text[1] > 0x8F);
    return wrong ? 0 : length;
}

void appendString(std::string *json, const std::string &text)
{
    *json += '"';
    for (size_t i = 0; i < text.size();) {
        const size_t length = characterLength(
            reinterpret_cast<const unsigned char *>(text.data()) + i, text.size() - i);
        const char c = text[i];
        if (length == 0) {
            *json += "\xEF\xBF\xBD";
        } else if (c == '"' || c == '\\') {
            (*json += '\\') += c;
        } else if (length == 1 && static_cast<unsigned char>(c) < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", unsigned(c));
            *json += escape;
        } else {
            json->append(text, i, length);
        }
        i += length > 0 ? length : 1;
    }
    *json += '"';
}

/// Written by hand because the C library reads the time zone's file even for UTC.
std::string utcText(int64_t ms)
{
    int64_t days = ms / 86400000;
    const int64_t ofDay = ms % 86400000;
    // Days counted from 1 March of the year 0, in eras of 400 years: leap days come last.
    days += 719468;
    const int64_t era = days / 146097, ofEra = days % 146097;
    const int64_t yearOfEra = (ofEra - ofEra / 1460 + ofEra / 36524 - ofEra / 146096) / 365;
    const int64_t ofYear = ofEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t fromMarch = (5 * ofYear + 2) / 153;
    const int day = int(ofYear - (153 * fromMarch + 2) / 5 + 1);
    const int month = int(fromMarch < 10 ? fromMarch + 3 : fromMarch - 9);
    const int year = int(yearOfEra + era * 400 + (month <= 2 ? 1 : 0));
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", year, month, day,
                  int(ofDay / 3600000), int(ofDay / 60000 % 60), int(ofDay / 1000 % 60),
                  int(ofDay % 1000));
    return text;
}

std::string secondsText(double seconds)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.6f", seconds);
    return text;
}

class FJsonObject
{
public:
    void string(const char *key, const std::string &value)
    {
        begin(key);
        appendString(&mText, value);
    }
    void raw(const char *key, const std::string &value)
    {
        begin(key);
        mText += value;
    }
    std::string text() const { return mText + "\n}\n"; }

private:
    void begin(const char *key)
    {
        ((mText += mText.empty() ? "{\n  \"" : ",\n  \"") += key) += "\": ";
    }
    std::string mText;
};
/// Variables that change how a program is loaded or how it counts and prints.
bool isTelling(const char *entry)
{
    for (const char *start : {"LD_", "OMP_", "GOMP_", "KMP_", "MKL_", "OPENBLAS_", "LC_",
                              "LANG=", "LANGUAGE=", "TZ=", "PATH="})
        if (std::strncmp(entry, start, std::strlen(start)) == 0)
            return true;
    return false;
}

/// Those, and the ones that are named, as a JSON object.
std::string environmentJson(const std::vector<std::string> &names)
{
    std::string json = "{";
    for (char **entry = environ; *entry; ++entry) {
        const char *sign = std::strchr(*entry, '=');
        if (!sign)
            continue;
        const std::string name(*entry, size_t(sign - *entry));
        if (!isTelling(*entry) && std::find(names.begin(), names.end(), name) == names.end())
            continue;
        json += json.size() > 1 ? ", " : "";
        appendString(&json, name);
        json += ": ";
        appendString(&json, sign + 1);
    }
    return json + '}';
}

/// The files that a finished run has made, as they lie there now.
std::string filesJson(const FRunnerOptions &options)
{
    const int folder = options.folder >= 0 ? options.folder : AT_FDCWD;
    std::string json = "[";
    for (const std::string &name : options.expected) {
        struct stat info = {};
        if (::fstatat(folder, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        json += json.size() > 1 ? ", {\"name\": " : "{\"name\": ";
        appendString(&json, name);
        json += ", \"bytes\": " + std::to_string(info.st_size) + ", \"modified\": \"" +
                std::to_string(info.st_mtim.tv_sec) + "." + std::to_string(info.st_mtim.tv_nsec) +
                "\"}";
    }
    return json + ']';
}
} // namespace

std::string FRunReport::toJson(const FRunnerOptions &options) const
{
    std::string command = "[";
    for (size_t i = 0; options.command[i]; ++i) {
        command += i > 0 ? ", " : "";
        appendString(&command, options.command[i]);
    }
    command += ']';
    FJsonObject json;
    json.string("computation", options.computation);
    json.string("design", options.design);
    json.raw("command", command);
    json.string("directory", options.directory);
    json.raw("environment", environmentJson(options.variables));
    json.string("start", utcText(startMs));
    json.raw("seconds", secondsText(seconds));
    json.raw("cpuSeconds", secondsText(cpuSeconds));
    json.raw("exitCode", hasExitCode ? std::to_string(exitCode) : "null");
    json.raw("signal", hasSignal ? std::to_string(signal) : "null");
    json.raw("processesEnded", std::to_string(processesEnded));
    json.raw("peakMemoryKiB", std::to_string(peakMemoryKiB));
    json.string("state", state);
    json.string("reason", reason);
    json.string("inputs", options.inputs);
    json.string("program", options.program);
    json.raw("resultFiles", filesJson(options));
    json.raw("stdoutBytes", std::to_string(stdoutBytes));
    json.raw("stderrBytes", std::to_string(stderrBytes));
    json.raw("stdoutOmitted", std::to_string(stdoutOmitted));
    json.raw("stderrOmitted", std::to_string(stderrOmitted));
    return json.text();
}

bool writeAll(int fd, const char *text, size_t size)
{
    while (size > 0) {
        const ssize_t written = ::write(fd, text, size);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0) {
            errno = written == 0 ? ENOSPC : errno;
            return false;
        }
        text += written;
        size -= size_t(written);
    }
    return true;
}

void splitPath(const std::string &path, std::string *folder, std::string *name)
{
    const size_t slash = path.rfind('/');
    *folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    *name = path.substr(slash + 1);
}

bool replaceFile(int folder, const std::string &name, const std::string &text, std::string *why)
{
    const std::string temporary = name + '.' + std::to_string(::getpid()) + ".tmp";
    const int fd =
        ::openat(folder, temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) {
        *why = std::strerror(errno);
        return false;
    }
    int error = writeAll(fd, text.data(), text.size()) ? 0 : errno;
    if (::close(fd) != 0 && error == 0)
        error = errno;
    if (error == 0 && ::renameat(folder, temporary.c_str(), folder, name.c_str()) != 0)
        error = errno;
    if (error == 0)
        return true;
    *why = std::strerror(error);
    ::unlinkat(folder, temporary.c_str(), 0);
    return false;
}
