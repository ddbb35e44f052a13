// SPDX-License-Identifier: Apache-2.0
#include "calib/ransac_plane.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <optional>
#include <vector>

#include "calib/draw_pool.h"
#include "calib/least_squares.h"
#include "calib/plane_model.h"
#include "calib/ransac_plane_loops.h"
#include "calib/select_kth.h"
#include "common/bit_image.h"
#include "common/growing_buffer.h"
#include "common/scratch.h"

namespace quorvel::internal {

namespace {

constexpr float kBinWidth = 64.0F;
constexpr std::size_t kMinCandidates = 4000;
/// Rank from the far end of the value that stands for the floor's distance: far enough in to pass over outliers.
constexpr int kFloorRank = 2000;
constexpr float kFirstBandShare = 10.0F;
constexpr float kLaterBandShare = 100.0F;
constexpr int kSamples = 1000;
constexpr int kMaxIterations = 100;
constexpr double kLeastImprovement = 1e-6;
constexpr int kRandomMask = 0x7FFF;

/// Distances looked at to guess which are the farthest.
constexpr std::size_t kGuessSample = 4096;
/// Room for the distances beyond the guess, several times as many as the guess is made for in a large image.
constexpr int kFartherRoom = 16384;

struct Workspace {
    BitImage candidates;
    BitImage pixels;
    DrawPool pool;
    GrowingBuffer<float> distances;
    GrowingBuffer<float> farther;
    GrowingBuffer<float> sample;
};

/// A cloud with its normal map; CV_32FC3 of one size.
struct Scene {
    const cv::Mat& cloud;
    const cv::Mat& normalMap;
};

struct Candidates {
    BitImage& pixels;
    std::size_t count = 0;
    std::array<float, 3> colourSums{};
};

/// The candidates' distances along their mean direction, mm; minus infinity for the other pixels, row by row and
/// rounded up to whole words.
struct Distances {
    const float* values;
    int words;
    bool finite;
};

/// The first band around the floor and the residual of the candidates in it.
struct FloorBand {
    float threshold = 0.0F;
    float meanError = 0.0F;
};

struct InlierSums {
    float error = 0.0F;
    float depth = 0.0F;
};

int wordsOf(const BitImage& image) {
    return image.rows() * image.wordsPerRow();
}

std::size_t countPixels(const BitImage& image) {
    std::size_t count = 0;
    for (int i = 0; i < wordsOf(image); ++i) {
        count += static_cast<std::size_t>(countSetBits(image.row(0)[i]));
    }
    return count;
}

Candidates findCandidates(const Scene& scene, const NormalBand& band, BitImage& pixels) {
    Candidates found{pixels};
    pixels.reset(scene.cloud.rows, scene.cloud.cols);
    const RansacPlaneLoops& loops = ransacPlaneLoops();
    for (int row = 0; row < scene.cloud.rows; ++row) {
        loops.findCandidates(scene.cloud.ptr<float>(row), scene.normalMap.ptr<float>(row), scene.cloud.cols,
                             band.low().val, band.high().val, found.colourSums.data(), pixels.row(row));
    }
    found.count = countPixels(pixels);
    return found;
}

cv::Vec3f meanDirection(const Candidates& candidates) {
    const auto count = static_cast<float>(candidates.count);
    const std::array<float, 3>& sum = candidates.colourSums;
    const cv::Vec3d mean(sum[0] / count, sum[1] / count, sum[2] / count);
    const double length = std::sqrt(mean[0] * mean[0] + mean[1] * mean[1] + mean[2] * mean[2]);
    return {static_cast<float>(mean[0] / length), static_cast<float>(mean[1] / length),
            static_cast<float>(mean[2] / length)};
}

Distances measureDistances(const cv::Mat& cloud, const Candidates& candidates, GrowingBuffer<float>& storage) {
    const cv::Vec3f direction = meanDirection(candidates);
    const int words = wordsOf(candidates.pixels);
    const std::size_t stride = static_cast<std::size_t>(candidates.pixels.wordsPerRow()) * kWordBits;
    float* const values = storage.atLeast(static_cast<std::size_t>(words) * kWordBits);
    const RansacPlaneLoops& loops = ransacPlaneLoops();
    bool finite = true;
    for (int row = 0; row < cloud.rows; ++row) {
        finite &= loops.measureDistances(cloud.ptr<float>(row), cloud.cols, direction.val, candidates.pixels.row(row),
                                         values + static_cast<std::size_t>(row) * stride);
    }
    return {values, words, finite};
}

/// \return a distance that some more than kFloorRank of `count` candidates lie beyond, judging by a sample of them;
///         nothing when the sample has no such distance
std::optional<float> guessBound(const Distances& distances, std::size_t count, GrowingBuffer<float>& storage) {
    const std::size_t total = static_cast<std::size_t>(distances.words) * kWordBits;
    const std::size_t step = (total / kGuessSample) | 1U;  // odd: it wanders over the columns
    float* const sample = storage.atLeast(total / step + 1);
    std::size_t size = 0;
    for (std::size_t i = 0; i < total; i += step) {
        sample[size] = distances.values[i];
        size += std::isfinite(distances.values[i]) ? 1 : 0;
    }
    // Of as many as are expected beyond, three standard deviations more.
    const double expected = static_cast<double>(kFloorRank) * static_cast<double>(size) / static_cast<double>(count);
    const auto rank = static_cast<std::size_t>(expected + 3.0 * std::sqrt(expected) + 3.0);
    if (rank >= size) {
        return std::nullopt;
    }
    std::nth_element(sample, sample + rank, sample + size, std::greater<>());
    return sample[rank];
}

/// \return the kFloorRank-th greatest distance; nothing when the guess misses it
std::optional<float> floorBeyondGuess(const Distances& distances, std::size_t count, Workspace& workspace) {
    const std::optional<float> bound = guessBound(distances, count, workspace.sample);
    if (!bound) {
        return std::nullopt;
    }
    float* const farther = workspace.farther.atLeast(kFartherRoom + kWordBits + 1);
    int alike = 0;
    const int found =
        ransacPlaneLoops().collectFarther(distances.values, distances.words, *bound, farther, kFartherRoom, alike);
    if (found > kFartherRoom || found + alike < kFloorRank) {
        return std::nullopt;
    }
    if (found < kFloorRank) {
        return bound;
    }
    std::nth_element(farther, farther + kFloorRank - 1, farther + found, std::greater<>());
    return farther[kFloorRank - 1];
}

std::vector<float> listOf(const Distances& distances, const Candidates& candidates) {
    std::vector<float> list;
    list.reserve(candidates.count);
    for (int word = 0; word < distances.words; ++word) {
        forEachSetBit(candidates.pixels.row(0)[word], [&](int position) {
            list.push_back(
                distances.values[static_cast<std::size_t>(word) * kWordBits + static_cast<std::size_t>(position)]);
        });
    }
    return list;
}

/// The value of selectKth, which for numbers is the order statistic: its two scans meet at index k at the latest,
/// where the pivot is, so that no swap crosses them and what a step cuts off lies on one side of the value sought.
/// Without NaN the same value is found among the few distances beyond a guess, and the others are only compared with
/// it. It may be +0 instead of -0, which no later step tells apart.
float floorDistance(const Distances& distances, const Candidates& candidates, Workspace& workspace) {
    if (distances.finite) {
        const std::optional<float> floor = floorBeyondGuess(distances, candidates.count, workspace);
        if (floor) {
            return *floor;
        }
    }
    const auto count = static_cast<int>(candidates.count);
    return selectKth(listOf(distances, candidates), count, count - kFloorRank);
}

/// Keeps the candidates within a tenth of the floor's distance of the floor, along the mean direction.
/// \param[out] pixels the candidates kept
FloorBand selectFloor(const cv::Mat& cloud, const Candidates& candidates, BitImage& pixels, Workspace& workspace) {
    const Distances distances = measureDistances(cloud, candidates, workspace.distances);
    const float floor = floorDistance(distances, candidates, workspace);
    FloorBand kept;
    kept.threshold = floor / kFirstBandShare;
    float errorSum = 0.0F;
    pixels.reset(cloud.rows, cloud.cols);
    ransacPlaneLoops().findNear(distances.values, distances.words, floor, kept.threshold, errorSum, pixels.row(0));
    // Divided by all candidates, not by those kept: that is the measure the first re-selection has to beat.
    kept.meanError = errorSum / static_cast<float>(candidates.count);
    return kept;
}

/// Least squares over 1000 pixels drawn at random; a drawn pixel outside the band is lost. Nothing when the list runs
/// dry.
std::optional<Plane> fitSample(const Scene& scene, DrawPool& pool, const NormalBand& band) {
    PlaneSums sums;
    for (int accepted = 0; accepted < kSamples;) {
        if (pool.size() == 0) {
            return std::nullopt;
        }
        const auto random = static_cast<std::size_t>(std::rand() & kRandomMask);
        const cv::Point pixel = pool.take(random % pool.size());
        if (band.contains(scene.normalMap.at<cv::Vec3f>(pixel))) {
            sums.add(scene.cloud.at<cv::Vec3f>(pixel));
            ++accepted;
        }
    }
    return sums.solve();
}

InlierSums selectInliers(const Scene& scene, const Plane& plane, const NormalBand& band, float threshold,
                         BitImage& inliers) {
    const std::array<float, 4> coefficients{plane.normal[0], plane.normal[1], plane.normal[2], plane.offset};
    const RansacPlaneLoops& loops = ransacPlaneLoops();
    InlierSums sums;
    inliers.reset(scene.cloud.rows, scene.cloud.cols);
    for (int row = 0; row < scene.cloud.rows; ++row) {
        loops.findInliers(scene.cloud.ptr<float>(row), scene.normalMap.ptr<float>(row), scene.cloud.cols,
                          coefficients.data(), threshold, band.low().val, band.high().val, sums.error, sums.depth,
                          inliers.row(row));
    }
    return sums;
}

NormalBand bandAround(const cv::Vec3f& normal) {
    return NormalBand({normalColour(normal[0]), normalColour(normal[1]), normalColour(normal[2])});
}

}  // namespace

// The lists of pixels are images of bits, tested eight pixels at a time; the sums run in the order of the pixels, as
// they would over a list. Four times faster than lists over 512 x 384.
int ransacFitPlane(const cv::Mat& cloud, const cv::Mat& normalMap, const cv::Vec3f& bin, cv::Vec3f& normal,
                   float& offset) {
    const Borrowed<Workspace> scratch;
    Workspace& workspace = *scratch;
    const Scene scene{cloud, normalMap};
    NormalBand band({kBinWidth * bin[0], kBinWidth * bin[1], kBinWidth * bin[2]});
    const Candidates candidates = findCandidates(scene, band, workspace.candidates);
    if (candidates.count <= kMinCandidates) {
        return 1;
    }
    BitImage& pixels = workspace.pixels;
    DrawPool& pool = workspace.pool;
    const FloorBand floor = selectFloor(cloud, candidates, pixels, workspace);
    float previousError = floor.meanError;
    float threshold = floor.threshold;
    std::optional<Plane> plane;
    for (int iteration = 0; iteration < kMaxIterations; ++iteration) {
        pool.fill(pixels);
        plane = fitSample(scene, pool, band);
        if (!plane) {
            return 1;
        }
        const NormalBand newBand = bandAround(plane->normal);
        const InlierSums inliers = selectInliers(scene, *plane, newBand, threshold, pixels);
        const auto count = static_cast<float>(countPixels(pixels));
        const float error = inliers.error / count;
        const double improvement = previousError - error;
        // Not greater, rather than smaller or equal: a round without inliers (NaN) ends the search too.
        if (!(improvement > kLeastImprovement)) {
            break;
        }
        band = newBand;
        previousError = error;
        threshold = inliers.depth / count / kLaterBandShare;
    }
    normal = plane->normal;
    offset = plane->offset;
    return 0;
}

}  // namespace quorvel::internal
