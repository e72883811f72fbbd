// SPDX-License-Identifier: Apache-2.0
//
// Writes a project whose input templates are mesh-like tables with tags spread over them; the same
// arguments give the same bytes.
//
//   gen_template FILES BYTES TAGS NAMES PROJECT     each file of about BYTES bytes with TAGS tags

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {
std::string nodeLine(unsigned long number)
{
    char line[96];
    const double x = double(number % 977) / 977, y = double(number % 1009) / 1009;
    snprintf(line, sizeof line, "%8lu, %14.8f, %14.8f, %14.6e\n", number, x, y, x * y - 0.25);
    return line;
}

std::string templateText(long file, size_t bytes, long tags, long names)
{
    const std::string close = "</entry>, 1.0\n";
    std::string text;
    text.reserve(bytes + 256);
    unsigned long number = 1;
    for (long tag = 0; tag <= tags; ++tag) {
        const size_t until = size_t(double(bytes) * double(tag + 1) / double(tags + 1));
        while (text.size() < until)
            text += nodeLine(number++);
        if (tag < tags)
            text += "*PARAMETER, <entry>value" + std::to_string((file + tag) % names) + close;
    }
    return text;
}

std::string base64(const std::string &bytes)
{
    static const char letters[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string out;
    out.reserve(bytes.size() / 3 * 4 + 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const size_t count = std::min<size_t>(3, bytes.size() - i);
        uint32_t bits = 0;
        for (size_t k = 0; k < 3; ++k)
            bits = bits << 8 | (k < count ? static_cast<unsigned char>(bytes[i + k]) : 0u);
        for (size_t k = 0; k < 4; ++k)
            out += k <= count ? letters[bits >> (18 - 6 * k) & 63] : '=';
    }
    return out;
}
} // namespace

int main(int argc, char **argv)
{
    FILE *out = argc == 6 ? fopen(argv[5], "w") : nullptr;
    if (!out) {
        fprintf(stderr, "usage: gen_template FILES BYTES TAGS NAMES PROJECT\n");
        return 2;
    }
    const long files = atol(argv[1]), tags = atol(argv[3]), names = atol(argv[4]);
    std::string list;
    for (long i = 0; i < files; ++i) {
        const std::string text = templateText(i, size_t(atol(argv[2])), tags, names);
        fprintf(out,
                "genericIntegrationCommandFile file%ld() {\n    .setContent(\"[B64]%s\");\n"
                "    .setFileName(\"mesh%ld.inp\");\n    .setForceWindowsLineEndings(false);\n}\n",
                i, base64(text).c_str(), i);
        list += (i > 0 ? ",file" : "file") + std::to_string(i);
    }
    fprintf(out, "genericIntegrationDefinition mesh() {\n");
    for (long i = 0; i < names; ++i)
        fprintf(out, "    .addEntry(\"value%ld\",%ld.5);\n", i, i);
    fprintf(out,
            "    .setFiles([%s]);\n}\ngenericIntegrationConfiguration design0() {\n"
            "    .setDefinition(mesh);\n",
            list.c_str());
    for (long i = 0; i < names; ++i)
        fprintf(out, "    .setEntry(\"value%ld\",%ld.125);\n", i, i);
    fprintf(out, "}\n");
    const bool good = !ferror(out);
    return fclose(out) == 0 && good ? 0 : 1;
}
