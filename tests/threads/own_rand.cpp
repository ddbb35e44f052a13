// SPDX-License-Identifier: Apache-2.0
// No C header here: the platforms declare rand() with different exception specifications.
#include "threads/own_rand.h"

namespace {

std::uint32_t& state() {
    thread_local std::uint32_t ofThisThread = 1;
    return ofThisThread;
}

}  // namespace

/// Takes the place of the C library's. A linear congruential generator modulo 2^32; its upper 16 bits are handed out,
/// because the lower bits of such a generator have short periods.
extern "C" int rand() {
    state() = state() * 1664525U + 1013904223U;
    return static_cast<int>(state() >> 16U);
}

namespace quorvel::test {

void seedOwnRand(std::uint32_t seed) {
    state() = seed;
}

}  // namespace quorvel::test
