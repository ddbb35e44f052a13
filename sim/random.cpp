// SPDX-License-Identifier: Apache-2.0
#include "sim/random.h"

namespace quorvel::sim {

namespace {

std::mt19937 engineFor(std::initializer_list<std::uint32_t> key) {
    std::seed_seq sequence(key);
    return std::mt19937(sequence);
}

}  // namespace

Random::Random(std::initializer_list<std::uint32_t> key) : engine_(engineFor(key)) {}

double Random::uniform() {
    constexpr double kStep = 1.0 / 4294967296.0;  // 2^-32
    return static_cast<double>(static_cast<std::uint32_t>(engine_())) * kStep;
}

double Random::gaussian() {
    // Each draw gives four of the twelve uniform numbers, integers in 0 ... 255 with variance (256^2 - 1) / 12.
    constexpr int kDraws = 3;
    constexpr double kMean = 12.0 * 255.0 / 2.0;
    std::uint32_t sum = 0;
    for (int i = 0; i < kDraws; ++i) {
        const auto bits = static_cast<std::uint32_t>(engine_());
        sum += (bits & 0xFFU) + (bits >> 8U & 0xFFU) + (bits >> 16U & 0xFFU) + (bits >> 24U);
    }
    return (static_cast<double>(sum) - kMean) / 256.0;
}

}  // namespace quorvel::sim
