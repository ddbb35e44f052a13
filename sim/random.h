// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <initializer_list>
#include <random>

namespace quorvel::sim {

/// Random numbers that are the same on every platform. The language standard defines every bit of std::mt19937 and
/// std::seed_seq, but not of its distributions, so values are made from integers here.
class Random {
public:
    /// @param key identifies the sequence, for example {seed, frame, effect}
    explicit Random(std::initializer_list<std::uint32_t> key);

    /// Uniform in [0, 1), a multiple of 2^-32.
    double uniform();

    /// Mean 0, standard deviation 1: the sum of twelve uniform numbers of 8 bits each (Irwin-Hall), hence a multiple of
    /// 1/256 and never beyond +-6.
    double gaussian();

private:
    std::mt19937 engine_;
};

}  // namespace quorvel::sim
