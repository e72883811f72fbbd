// SPDX-License-Identifier: Apache-2.0
//
// Writes the data that reading is measured with; the same arguments give the same bytes.
//
//   gen_log log MEGABYTES FILE     iteration log with headings and, once each, 100 markers
//   gen_log table ROWS FILE        history of ROWS rows and 8 columns

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {
/// Small generator with a fixed sequence on every machine.
class FSequence
{
public:
    uint32_t next()
    {
        mState = mState * 6364136223846793005ULL + 1442695040888963407ULL;
        return static_cast<uint32_t>(mState >> 33);
    }
    double unit() { return next() / 2147483648.0; }

private:
    uint64_t mState = 20240501;
};

void iteration(FSequence &random, long number, std::string *out)
{
    char line[200];
    snprintf(line, sizeof line, "%8ld  %13.6E  %13.6E  %13.6E  %10.5f  %10.5f\n", number,
             random.unit() * 1e-3, random.unit() * 1e-4, random.unit() * 1e-5,
             random.unit() * 2 - 1, random.unit());
    *out += line;
}

void heading(FSequence &random, long number, std::string *out)
{
    static const char *const parts[] = {"wing", "fuselage", "tail", "nacelle", "flap", "slat"};
    char text[400];
    snprintf(text, sizeof text,
             "\n Iteration %ld of the solver, time step size = %.4e s\n"
             " Linear solver converged after %u sweeps (relative drop %.2e)\n"
             " Forces on %s: lift = %.6f, drag = %.6f\n"
             "    step      continuity     x-momentum     y-momentum         lift        drag\n",
             number, random.unit() * 1e-2, random.next() % 40, random.unit() * 1e-2,
             parts[random.next() % 6], random.unit(), random.unit() * 0.1);
    *out += text;
}

void marker(FSequence &random, unsigned which, std::string *out)
{
    static const char *const words[] = {"Maximum stress", "Total mass", "Drag coefficient",
                                        "Outlet pressure", "Heat flux"};
    char text[300];
    snprintf(text, sizeof text,
             " summary above %.4f %.4f\n %s in zone %03u: %.8f  %.4e  %.3f\n first %.5f second "
             "%.5f third %.5f\n next %.6E %.6E\n last %.2f %.2f %.2f\n",
             random.unit(), random.unit(), words[which % 5], which, random.unit() * 100,
             random.unit(), random.unit(), random.unit(), random.unit(), random.unit(),
             random.unit(), random.unit(), random.unit(), random.unit(), random.unit());
    *out += text;
}

bool writeLog(FILE *file, double megabytes)
{
    FSequence random;
    const double total = megabytes * 1e6;
    double written = 0;
    unsigned markers = 0;
    std::string part;
    for (long number = 1; written < total; ++number) {
        part.clear();
        if (number % 50 == 1)
            heading(random, number, &part);
        iteration(random, number, &part);
        // The markers stand around the middle, 0.3 % of the file apart.
        while (markers < 100 && written > total * (0.35 + 0.003 * markers))
            marker(random, markers++, &part);
        written += static_cast<double>(part.size());
        if (fwrite(part.data(), 1, part.size(), file) != part.size())
            return false;
    }
    return true;
}

bool writeTable(FILE *file, long rows)
{
    FSequence random;
    fputs("# iteration time cl cd cm residual mass energy\n", file);
    for (long row = 1; row <= rows; ++row) {
        fprintf(file, "%8ld %.6f %.6f %.6f %.6f %.6E %.6E %.6E\n", row,
                static_cast<double>(row) * 1e-4, random.unit(), random.unit(), random.unit(),
                random.unit(), random.unit(), random.unit());
    }
    return ferror(file) == 0;
}
} // namespace

int main(int argc, char **argv)
{
    if (argc != 4 || (strcmp(argv[1], "log") != 0 && strcmp(argv[1], "table") != 0)) {
        fputs("usage: gen_log log MEGABYTES FILE | gen_log table ROWS FILE\n", stderr);
        return 2;
    }
    FILE *file = fopen(argv[3], "wb");
    if (!file) {
        perror(argv[3]);
        return 1;
    }
    const bool done = strcmp(argv[1], "log") == 0 ? writeLog(file, strtod(argv[2], nullptr))
                                                  : writeTable(file, strtol(argv[2], nullptr, 10));
    if (fclose(file) != 0 || !done) {
        perror(argv[3]);
        return 1;
    }
    return 0;
}
