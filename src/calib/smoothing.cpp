// SPDX-License-Identifier: Apache-2.0
#include "calib/smoothing.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "calib/smoothing_loops.h"
#include "common/exclusive.h"
#include "common/growing_buffer.h"
#include "common/scratch.h"

namespace quorvel::internal {

namespace {

constexpr int kReach = 2;  // pixels on either side
constexpr int kRows = 2 * kReach + 1;

struct Workspace {
    GrowingBuffer<std::uint16_t> extendedRow;
    GrowingBuffer<float> sums;
    cv::Mat once;
    cv::Mat twice;
};

int reflected(int index, int count) {
    return cv::borderInterpolate(index, count, cv::BORDER_REFLECT_101);
}

std::size_t roundedUp(int columns) {
    constexpr std::size_t kLanes = 8;  // of the widest variant
    return (static_cast<std::size_t>(columns) + kLanes - 1) / kLanes * kLanes;
}

/// Copies a row with what lies beyond its ends.
/// \param[out] extended room for roundedUp(columns) + 2 * kReach depths
void extendRow(const std::uint16_t* row, int columns, std::uint16_t* extended) {
    std::copy(row, row + columns, extended + kReach);
    for (int beyond = 1; beyond <= kReach; ++beyond) {
        extended[kReach - beyond] = row[reflected(-beyond, columns)];
        extended[kReach + columns - 1 + beyond] = row[reflected(columns - 1 + beyond, columns)];
    }
    std::uint16_t* const end = extended + columns + kRows - 1;
    std::fill(end, extended + roundedUp(columns) + kRows - 1, std::uint16_t{0});
}

/// The bits are those of cv::GaussianBlur with a 5 x 5 kernel: that computes this image in fixed point, exactly, and
/// rounds once at the end, halves up. Two passes over 640 x 480 take 0.21 instead of 0.97 ms.
void smoothOnce(const cv::Mat& depth, cv::Mat& smoothed, Workspace& workspace) {
    const SmoothingLoops& loops = smoothingLoops();
    const std::size_t stride = roundedUp(depth.cols);
    std::uint16_t* const extended = workspace.extendedRow.atLeast(stride + kRows - 1);
    float* const sums = workspace.sums.atLeast(kRows * stride);
    const auto sumsOf = [sums, stride](int row) { return sums + static_cast<std::size_t>(row % kRows) * stride; };
    int weighed = 0;
    for (int row = 0; row < depth.rows; ++row) {
        for (; weighed < std::min(row + kReach + 1, depth.rows); ++weighed) {
            extendRow(depth.ptr<std::uint16_t>(weighed), depth.cols, extended);
            loops.weighRow(extended, depth.cols, sumsOf(weighed));
        }
        std::array<const float*, kRows> around{};
        for (int i = 0; i < kRows; ++i) {
            around[static_cast<std::size_t>(i)] = sumsOf(reflected(row + i - kReach, depth.rows));
        }
        loops.weighColumns(around.data(), depth.cols, smoothed.ptr<std::uint16_t>(row));
    }
}

}  // namespace

cv::Mat smoothDepth(const cv::Mat& depth) {
    const Borrowed<Workspace> scratch;
    Workspace& workspace = *scratch;
    createExclusive(workspace.once, depth.size(), CV_16UC1);
    createExclusive(workspace.twice, depth.size(), CV_16UC1);
    smoothOnce(depth, workspace.once, workspace);
    smoothOnce(workspace.once, workspace.twice, workspace);
    return workspace.twice;
}

}  // namespace quorvel::internal
