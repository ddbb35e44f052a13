// SPDX-License-Identifier: Apache-2.0
#include "calib/normal_map.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "calib/normal_map_loops.h"
#include "image/image_form.h"
#include "image/numbers.h"
#include "image/scratch.h"

namespace quorvel::internal {

// Every lane makes the operations of a single pixel, in the same precision and order. 640 x 480 take 0.48 instead of
// 1.4 ms.
namespace {

struct MapScratch {
    cv::Mat map;
};

}  // namespace

// The returned image is the scratch image itself: both share one block of pixels, and nothing is copied. It is safe to
// keep, as these steps show:
//   1. The call returns. The pixels have two holders: the scratch image and the caller's image.
//   2. A later call, on any thread, borrows the same scratch. createExclusive() counts two holders, leaves the old
//      pixels to the caller and allocates new ones for the scratch image.
//   3. Or the caller has let go before. createExclusive() counts one holder and the pixels are used again.
// So the caller, and everybody who gets the image from the caller, may read and write it for as long as they hold it.
cv::Mat computeNormalMap(const cv::Mat& cloud) {
    const Borrowed<MapScratch> scratch;
    cv::Mat& map = scratch->map;
    if (cloud.empty()) {
        return cv::Mat::zeros(cloud.rows, cloud.cols, CV_32FC3);
    }
    createExclusive(map, cloud.size(), CV_32FC3);
    const NormalMapLoops& loops = normalMapLoops();
    const int interior = std::max(cloud.cols - 2, 0);
    for (int row = 0; row < cloud.rows; ++row) {
        auto* colours = map.ptr<cv::Vec3f>(row);
        if (row == 0 || row == cloud.rows - 1 || interior == 0) {
            std::fill(colours, colours + cloud.cols, cv::Vec3f());
            continue;
        }
        colours[0] = cv::Vec3f();
        colours[cloud.cols - 1] = cv::Vec3f();
        loops.colourRow(cloud.ptr<float>(row) + 3, cloud.ptr<float>(row + 1) + 3, interior, map.ptr<float>(row) + 3);
    }
    return map;
}

namespace {

constexpr int kBinsPerChannel = 4;
constexpr auto kBins = static_cast<std::size_t>(kNormalBins);

using BinCounts = std::array<std::int32_t, kBins>;

// 0 ... 3: the top two of the low eight bits.
int channelBin(float value) {
    return (truncateToInt(value) & 0xFF) >> 6;
}

int binIndex(const cv::Vec3f& colour) {
    return channelBin(colour[0]) + kBinsPerChannel * channelBin(colour[1]) +
           kBinsPerChannel * kBinsPerChannel * channelBin(colour[2]);
}

BinCounts countBins(const cv::Mat& normalMap) {
    std::array<std::int32_t, kCountsPerBin * kBins> parts{};
    const DominantNormalLoops& loops = dominantNormalLoops();
    for (int row = 0; row < normalMap.rows; ++row) {
        loops.countRow(normalMap.ptr<float>(row), normalMap.cols, parts.data());
    }
    BinCounts counts{};
    for (std::size_t i = 0; i < parts.size(); ++i) {
        counts[i % kBins] += parts[i];
    }
    counts[0] = 0;  // empty and border pixels
    return counts;
}

/// \param count the highest count of any bin but 0; several bins have it
/// \return the bin whose count reaches this number first, in row-major order
int firstToReach(const cv::Mat& normalMap, std::int32_t count) {
    BinCounts counts{};
    for (int row = 0; row < normalMap.rows; ++row) {
        const auto* colours = normalMap.ptr<cv::Vec3f>(row);
        for (int column = 0; column < normalMap.cols; ++column) {
            const int index = binIndex(colours[column]);
            if (++counts[static_cast<std::size_t>(index)] == count && index != 0) {
                return index;
            }
        }
    }
    return 0;
}

/// All bins are counted first. Only when several bins share the highest count, a second pass finds the one that reached
/// it first. The plain form keeps the best bin while it counts, and replaces it only by a larger count. Its winner is
/// the same: the bin that reaches the highest count first. Six times faster over 512 x 384.
int mostFrequentBin(const cv::Mat& normalMap) {
    const BinCounts counts = countBins(normalMap);
    const std::int32_t highest = *std::max_element(counts.begin(), counts.end());
    if (highest > 0 && std::count(counts.begin(), counts.end(), highest) > 1) {
        return firstToReach(normalMap, highest);
    }
    return static_cast<int>(std::distance(counts.begin(), std::find(counts.begin(), counts.end(), highest)));
}

}  // namespace

cv::Vec3f dominantNormalBin(const cv::Mat& normalMap) {
    const int best = mostFrequentBin(normalMap);
    const cv::Vec3i bins(best % kBinsPerChannel, best / kBinsPerChannel % kBinsPerChannel,
                         best / (kBinsPerChannel * kBinsPerChannel));
    return {bins};
}

}  // namespace quorvel::internal
