// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include <opencv2/core.hpp>

namespace quorvel::fuzz {

/// A fuzzer's bytes, read from front to back as the values that a target wants. Past the end every byte is 0, so that
/// any bytes make a whole case and a shortened input stays one.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : next_(data), end_(data + size) {}

    bool empty() const { return next_ == end_; }
    std::size_t left() const { return static_cast<std::size_t>(end_ - next_); }

    std::uint8_t byte() { return empty() ? std::uint8_t{0} : *next_++; }
    bool flag() { return (byte() & 1U) != 0U; }
    /// \param bound 1 ... 256
    /// \return 0 ... bound - 1
    int below(int bound) { return byte() % bound; }
    /// \param list 1 ... 256 entries
    /// \return one of them
    template <typename List>
    auto& oneOf(List& list) {
        return list[static_cast<std::size_t>(below(static_cast<int>(std::size(list))))];
    }
    std::uint16_t word() {
        // A separate statement, because compilers may evaluate the operands of a sum in any order.
        const int low = byte();
        return static_cast<std::uint16_t>(low + 256 * byte());
    }
    /// \return low ... high in 2^16 steps
    float real(float low, float high) { return low + (high - low) * (static_cast<float>(word()) / 65535.0F); }

    /// \return any int, the troublesome ones more often than chance would have them
    int anyInt();
    /// \return any float: ordinary ones, NaN, infinities, both zeros, subnormal and enormous ones, any bits at all
    float anyReal();
    cv::Vec3f anyVector();
    /// \return position and size anywhere, also negative and enormous
    cv::Rect anyRect();
    /// \return up to `most` bytes as they stand
    std::string text(std::size_t most);
    /// \return all bytes that are left
    std::string rest() { return text(left()); }

private:
    std::uint32_t bits();

    const std::uint8_t* next_;
    const std::uint8_t* end_;
};

/// \return a matrix of zeros; a window of a larger one now and then, so that its rows do not follow one another
cv::Mat anyStorage(Input& input, const cv::Size& size, int type);

}  // namespace quorvel::fuzz
