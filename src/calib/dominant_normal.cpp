// SPDX-License-Identifier: Apache-2.0
#include "calib/dominant_normal.h"

#include <array>
#include <cstddef>

#include "common/numbers.h"

namespace quorvel::internal {

namespace {

constexpr int kBinsPerChannel = 4;
constexpr std::size_t kBins = 64;

// 0 ... 3: the top two of the low eight bits.
int channelBin(float value) {
    return (truncateToInt(value) & 0xFF) >> 6;
}

int binIndex(const cv::Vec3f& colour) {
    return channelBin(colour[0]) + kBinsPerChannel * channelBin(colour[1]) +
           kBinsPerChannel * kBinsPerChannel * channelBin(colour[2]);
}

}  // namespace

int dominantNormalBin(const cv::Mat& normalMap, cv::Vec3f& bin) {
    std::array<int, kBins> counts{};
    int best = 0;
    int bestCount = 0;
    for (int row = 0; row < normalMap.rows; ++row) {
        const auto* colours = normalMap.ptr<cv::Vec3f>(row);
        for (int column = 0; column < normalMap.cols; ++column) {
            const int index = binIndex(colours[column]);
            const int count = ++counts[static_cast<std::size_t>(index)];
            if (index != 0 && count > bestCount) {
                best = index;
                bestCount = count;
            }
        }
    }
    const cv::Vec3i bins(best % kBinsPerChannel, best / kBinsPerChannel % kBinsPerChannel,
                         best / (kBinsPerChannel * kBinsPerChannel));
    bin = cv::Vec3f(bins);
    return 0;
}

}  // namespace quorvel::internal
