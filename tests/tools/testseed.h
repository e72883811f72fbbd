// SPDX-License-Identifier: Apache-2.0
#ifndef TESTSEED_H
#define TESTSEED_H
#include <QtGlobal>
#include <random>

/// Where the random cases of a test begin: another place in each run, printed, so that the
/// variable F_TEST_SEED can bring a failure back.
inline unsigned testSeed()
{
    static const unsigned seed = [] {
        const unsigned first = qEnvironmentVariableIsSet("F_TEST_SEED")
                                   ? unsigned(qEnvironmentVariable("F_TEST_SEED").toULongLong())
                                   : std::random_device{}();
        qInfo("F_TEST_SEED=%u", first);
        return first;
    }();
    return seed;
}
#endif
