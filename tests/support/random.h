// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>

namespace quorvel::test {

/// Random numbers for tests, benchmarks and records: the same from one seed with every compiler and standard library,
/// because the generator (xorshift with 64 bits of state) and the ranges are our own. One draw a statement: compilers
/// evaluate the arguments of a call in different orders.
class Draws {
public:
    // An odd multiplier spreads neighbouring seeds; the generator must not start at 0.
    explicit Draws(std::uint64_t seed) : state_((seed + 1) * 0x9e3779b97f4a7c15ULL) {}

    /// \return 0 ... bound - 1
    int below(int bound) { return static_cast<int>((next() >> 20U) % static_cast<std::uint64_t>(bound)); }
    /// \return low ... high, both included
    int between(int low, int high) { return low + below(high - low + 1); }
    /// \return low ... high in 2^24 steps, as many as a float tells apart
    float real(float low, float high) { return low + (high - low) * static_cast<float>(next() >> 40U) / 16777216.0F; }
    /// \return low ... high in 2^32 steps
    double uniform(double low, double high) {
        return low + (high - low) * (static_cast<double>(next() >> 32U) / 4294967296.0);
    }
    /// \return 32 random bits
    std::uint32_t bits() { return static_cast<std::uint32_t>(next() >> 32U); }
    /// \return true in `percent` of 100 cases
    bool chance(int percent) { return below(100) < percent; }
    /// \param list a container or array with at least one entry
    /// \return one of its entries
    template <typename List>
    auto& oneOf(List& list) {
        return list[static_cast<std::size_t>(below(static_cast<int>(std::size(list))))];
    }

private:
    std::uint64_t next() {
        state_ ^= state_ << 13U;
        state_ ^= state_ >> 7U;
        state_ ^= state_ << 17U;
        return state_;
    }

    std::uint64_t state_;
};

}  // namespace quorvel::test
