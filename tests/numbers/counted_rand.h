// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace quorvel::test {

/// The program brings its own rand(): the C libraries' sequences differ, this one is the same everywhere.
/// \param seed starts the sequence anew
void seedRand(std::uint32_t seed);

/// \return how often rand() has been called since the program started
std::uint64_t randCalls();

}  // namespace quorvel::test
