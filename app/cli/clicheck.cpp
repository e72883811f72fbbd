// SPDX-License-Identifier: Apache-2.0
#include "cli.h"

int FCli::check(const FCliOptions &options)
{
    return load(options);
}
