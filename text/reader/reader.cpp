// SPDX-License-Identifier: Apache-2.0
// turnbuckle-reader: reads by expressions that may take too long; whoever started it ends it.
#include "fgenintslowread.h"

int main() { return FGenIntSlowRead::serve(0) ? 0 : 2; }
