// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

namespace quorvel::soak {

/// A number that is the same in two runs only if every added bit is the same (FNV-1a, 64 bits).
class Digest {
public:
    void add(int value) { addBytes(&value, sizeof(value)); }
    void add(float value) { addBytes(&value, sizeof(value)); }
    void add(const cv::Vec3f& value) { addBytes(value.val, sizeof(value.val)); }
    void add(const MeasureResult& result);
    /// \param image of two dimensions
    void add(const cv::Mat& image);

    std::uint64_t value() const { return value_; }

private:
    void addBytes(const void* bytes, std::size_t count);

    std::uint64_t value_ = 14695981039346656037U;
};

}  // namespace quorvel::soak
