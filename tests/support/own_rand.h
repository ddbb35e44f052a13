// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace quorvel::test {

/// A program with own_rand.cpp brings its own rand(): one sequence for every thread and the same with every C library.
/// What is worked out with random numbers can then be compared bit for bit, with the same work done alone or on another
/// platform. The C library's sequence is its own, and one for all threads.
/// \param seed starts the calling thread's sequence anew
void seedOwnRand(std::uint32_t seed);

/// \return how often the calling thread has called rand()
std::uint64_t ownRandCalls();

}  // namespace quorvel::test
