// SPDX-License-Identifier: Apache-2.0
#include "fuzz/input.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace quorvel::fuzz {

std::uint32_t Input::bits() {
    const std::uint32_t low = word();
    const std::uint32_t high = word();
    return high << 16U | low;
}

int Input::anyInt() {
    constexpr std::array<int, 12> kTroublesome{0,
                                               1,
                                               -1,
                                               std::numeric_limits<int>::min(),
                                               std::numeric_limits<int>::max(),
                                               std::numeric_limits<int>::min() + 1,
                                               -4,
                                               255,
                                               4,
                                               16777217,
                                               65536,
                                               -65537};
    constexpr int kSigned16 = 32768;
    const int kind = below(4);
    if (kind == 0) {
        return kTroublesome[static_cast<std::size_t>(below(static_cast<int>(kTroublesome.size())))];
    }
    if (kind == 1) {
        return below(256);
    }
    if (kind == 2) {
        return word() - kSigned16;
    }
    const std::uint32_t raw = bits();
    int value = 0;
    std::memcpy(&value, &raw, sizeof value);
    return value;
}

float Input::anyReal() {
    using Limits = std::numeric_limits<float>;
    constexpr std::array<float, 16> kTroublesome{Limits::quiet_NaN(),
                                                 Limits::infinity(),
                                                 -Limits::infinity(),
                                                 0.0F,
                                                 -0.0F,
                                                 Limits::denorm_min(),
                                                 Limits::min(),
                                                 Limits::max(),
                                                 Limits::lowest(),
                                                 1e-9F,
                                                 1e15F,
                                                 -1e30F,
                                                 2147483648.0F,
                                                 -2147483904.0F,
                                                 1.0F,
                                                 -1.0F};
    const int kind = below(4);
    if (kind == 0) {
        return kTroublesome[static_cast<std::size_t>(below(static_cast<int>(kTroublesome.size())))];
    }
    if (kind == 1) {
        return real(-2.0F, 2.0F);
    }
    if (kind == 2) {
        return real(-3000.0F, 3000.0F);
    }
    const std::uint32_t raw = bits();
    float value = 0.0F;
    std::memcpy(&value, &raw, sizeof value);
    return value;
}

cv::Vec3f Input::anyVector() {
    cv::Vec3f vector;
    for (int axis = 0; axis < 3; ++axis) {
        vector[axis] = anyReal();
    }
    return vector;
}

cv::Rect Input::anyRect() {
    cv::Rect rect;
    for (int* value : {&rect.x, &rect.y, &rect.width, &rect.height}) {
        *value = anyInt();
    }
    return rect;
}

std::string Input::text(std::size_t most) {
    const std::size_t size = std::min(most, left());
    std::string taken(next_, next_ + size);
    next_ += size;
    return taken;
}

cv::Mat anyStorage(Input& input, const cv::Size& size, int type) {
    if (input.flag()) {
        return {size, type, cv::Scalar::all(0)};
    }
    constexpr int kBeside = 77;  // a read beyond the window would find this value
    const cv::Mat parent(size.height + 3, size.width + 5, type, cv::Scalar::all(kBeside));
    cv::Mat window = parent(cv::Rect({2, 1}, size));
    window.setTo(cv::Scalar::all(0));
    return window;
}

}  // namespace quorvel::fuzz
