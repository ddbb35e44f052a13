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
#include "calib/ransac_plane_loops.h"
#include "geometry/selection.h"
#include "geometry/vec3.h"
#include "image/bit_image.h"
#include "image/scratch.h"

namespace quorvel::internal {

namespace {

constexpr float kBinWidth = 64.0F;
/// The 2000th largest distance is taken as the floor's distance. The larger ones may be outliers.
constexpr int kFloorRank = 2000;
constexpr float kFirstBandShare = 10.0F;
constexpr float kLaterBandShare = 100.0F;
constexpr int kSamples = 1000;
constexpr int kMaxIterations = 100;
constexpr double kLeastImprovement = 1e-6;
constexpr int kRandomMask = 0x7FFF;

/// About so many distances are sampled to guess where the farthest ones begin.
constexpr std::size_t kGuessSample = 4096;
/// Room for the distances beyond the guess: several times the number that is expected in a large image.
constexpr int kFartherRoom = 16384;

struct RansacWorkspace {
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

std::size_t countPixels(const BitImage& image) {
    std::size_t count = 0;
    for (int i = 0; i < image.words(); ++i) {
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
    return normalized(cv::Vec3f(sum[0] / count, sum[1] / count, sum[2] / count));
}

Distances measureDistances(const cv::Mat& cloud, const Candidates& candidates, GrowingBuffer<float>& storage) {
    const cv::Vec3f along = meanDirection(candidates);
    const int words = candidates.pixels.words();
    const std::size_t stride = static_cast<std::size_t>(candidates.pixels.wordsPerRow()) * kWordBits;
    float* const values = storage.atLeast(static_cast<std::size_t>(words) * kWordBits);
    const RansacPlaneLoops& loops = ransacPlaneLoops();
    bool finite = true;
    for (int row = 0; row < cloud.rows; ++row) {
        finite &= loops.measureDistances(cloud.ptr<float>(row), cloud.cols, along.val, candidates.pixels.row(row),
                                         values + static_cast<std::size_t>(row) * stride);
    }
    return {values, words, finite};
}

/// Guesses, from a sample, a distance beyond which somewhat more than kFloorRank of the `count` candidates lie.
/// \return the distance; nothing when the sample is too small for a guess
std::optional<float> guessBound(const Distances& distances, std::size_t count, GrowingBuffer<float>& storage) {
    const std::size_t total = static_cast<std::size_t>(distances.words) * kWordBits;
    const std::size_t step = (total / kGuessSample) | 1U;  // odd, so that the sample comes from all columns
    float* const sample = storage.atLeast(total / step + 1);
    std::size_t size = 0;
    for (std::size_t i = 0; i < total; i += step) {
        sample[size] = distances.values[i];
        size += std::isfinite(distances.values[i]) ? 1 : 0;
    }
    // Few more than wanted: in a large image there is just room for them.
    constexpr double kDeviations = 3.0;
    return boundFromSample(sample, size, count, kFloorRank, kDeviations);
}

/// \return the kFloorRank-th largest distance; nothing when it does not lie beyond the guess
std::optional<float> floorBeyondGuess(const Distances& distances, std::size_t count, RansacWorkspace& workspace) {
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

/// The value that selectKth() gives. Without NaN that is the k-th smallest value: both scans stop at index k at the
/// latest, because the pivot is there, so every step cuts off only values on one side of the value sought. The same
/// value is found faster among the few distances beyond a guess; the others are only compared with the guess. It may be
/// +0 instead of -0, which makes no difference to any later step.
float floorDistance(const Distances& distances, const Candidates& candidates, RansacWorkspace& workspace) {
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
FloorBand selectFloor(const cv::Mat& cloud, const Candidates& candidates, BitImage& pixels,
                      RansacWorkspace& workspace) {
    const Distances distances = measureDistances(cloud, candidates, workspace.distances);
    const float floor = floorDistance(distances, candidates, workspace);
    FloorBand kept;
    kept.threshold = floor / kFirstBandShare;
    float errorSum = 0.0F;
    pixels.reset(cloud.rows, cloud.cols);
    ransacPlaneLoops().findNear(distances.values, distances.words, floor, kept.threshold, errorSum, pixels.row(0));
    // Divided by the number of all candidates, not only of those kept. The first re-selection is compared with this.
    kept.meanError = errorSum / static_cast<float>(candidates.count);
    return kept;
}

/// Least squares over 1000 pixels drawn at random. A drawn pixel outside the band is not used and not put back.
/// \return nothing when the list is empty before 1000 pixels were accepted
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
SamplingFit ransacFitPlane(const cv::Mat& cloud, const cv::Mat& normalMap, const cv::Vec3f& bin) {
    const Borrowed<RansacWorkspace> scratch;
    RansacWorkspace& workspace = *scratch;
    const Scene scene{cloud, normalMap};
    NormalBand band({kBinWidth * bin[0], kBinWidth * bin[1], kBinWidth * bin[2]});
    const Candidates candidates = findCandidates(scene, band, workspace.candidates);
    SamplingFit fit;
    fit.oriented = candidates.count;
    if (candidates.count <= kLeastOriented) {
        return fit;
    }
    BitImage& pixels = workspace.pixels;
    DrawPool& pool = workspace.pool;
    const FloorBand floor = selectFloor(cloud, candidates, pixels, workspace);
    float previousError = floor.meanError;
    float threshold = floor.threshold;
    while (fit.rounds < kMaxIterations) {
        ++fit.rounds;
        pool.fill(pixels);
        fit.plane = fitSample(scene, pool, band);
        if (!fit.plane) {
            return fit;
        }
        const NormalBand newBand = bandAround(fit.plane->normal);
        const InlierSums inliers = selectInliers(scene, *fit.plane, newBand, threshold, pixels);
        fit.inliers = countPixels(pixels);
        const auto count = static_cast<float>(fit.inliers);
        fit.residual = inliers.error / count;
        const double improvement = previousError - fit.residual;
        // "Not greater" instead of "at most": a round without inliers gives NaN, and has to end the search too.
        if (!(improvement > kLeastImprovement)) {
            break;
        }
        band = newBand;
        previousError = fit.residual;
        threshold = inliers.depth / count / kLaterBandShare;
    }
    return fit;
}

}  // namespace quorvel::internal
