// SPDX-License-Identifier: Apache-2.0
// The trivial external program: adds the numbers in in1.txt to in5.txt and writes out.txt.
// Linked statically, so that its own start costs next to nothing.
#include <cstdio>

int main()
{
    double sum = 0;
    for (int i = 1; i <= 5; ++i) {
        char name[16];
        std::snprintf(name, sizeof name, "in%d.txt", i);
        std::FILE *in = std::fopen(name, "r");
        double value = 0;
        if (!in || std::fscanf(in, "x = %lf", &value) != 1)
            return 1;
        std::fclose(in);
        sum += value;
    }
    std::FILE *out = std::fopen("out.txt", "w");
    if (!out)
        return 2;
    std::fprintf(out, "result of the run\nsum = %.17g\n", sum);
    return std::fclose(out) == 0 ? 0 : 3;
}
