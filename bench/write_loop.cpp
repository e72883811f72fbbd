// SPDX-License-Identifier: Apache-2.0
//
// Reads the files of one folder and writes them into another.
//
//   write_loop FROM TO

#include "barefiles.h"

int main(int argc, char **argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: write_loop FROM TO\n");
        return 2;
    }
    BareFiles::writeAll(argv[2], BareFiles::readFolder(argv[1]));
    return 0;
}
