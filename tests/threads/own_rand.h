// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace quorvel::test {

/// The program brings its own rand(), with a sequence for every thread: what a thread works out with random numbers can
/// then be compared bit for bit with the same work done alone. The C library's rand() is one sequence for all threads.
/// \param seed starts the calling thread's sequence anew
void seedOwnRand(std::uint32_t seed);

}  // namespace quorvel::test
