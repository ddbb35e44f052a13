// SPDX-License-Identifier: Apache-2.0
// No C header here: the platforms declare rand() with different exception specifications.
#include "support/own_rand.h"

namespace {

struct Generator {
    std::uint32_t state = 1;
    std::uint64_t calls = 0;
};

Generator& generator() {
    thread_local Generator ofThisThread;
    return ofThisThread;
}

}  // namespace

/// Takes the place of the C library's. A linear congruential generator modulo 2^32; its upper 16 bits are handed out,
/// because the lower bits of such a generator have short periods.
extern "C" int rand() {
    Generator& g = generator();
    ++g.calls;
    g.state = g.state * 1664525U + 1013904223U;
    return static_cast<int>(g.state >> 16U);
}

namespace quorvel::test {

void seedOwnRand(std::uint32_t seed) {
    generator().state = seed;
}

std::uint64_t ownRandCalls() {
    return generator().calls;
}

}  // namespace quorvel::test
