// SPDX-License-Identifier: Apache-2.0
// A program that plays the solver in tests: fakesim exit N | sum IN OUT
#include <cstdio>
#include <cstdlib>
#include <cstring>

int main(int argc, char **argv)
{
    if (argc == 3 && !std::strcmp(argv[1], "exit"))
        return std::atoi(argv[2]);
    if (argc == 4 && !std::strcmp(argv[1], "sum")) {
        std::FILE *in = std::fopen(argv[2], "r"), *out = std::fopen(argv[3], "w");
        if (!in || !out)
            return 3;
        double sum = 0, value;
        int count = 0;
        for (; std::fscanf(in, "%lf", &value) == 1; ++count)
            sum += value;
        std::fprintf(out, "sum = %.17g\nn = %d\n", sum, count);
        return std::fclose(out) == 0 ? 0 : 4;
    }
    return 2;
}
