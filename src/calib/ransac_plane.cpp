// SPDX-License-Identifier: Apache-2.0
#include "calib/ransac_plane.h"

#include <cmath>
#include <cstdlib>
#include <optional>
#include <utility>
#include <vector>

#include "calib/draw_pool.h"
#include "calib/least_squares.h"
#include "calib/plane_model.h"
#include "calib/select_kth.h"

namespace quorvel::internal {

namespace {

constexpr float kBinWidth = 64.0F;
constexpr float kMiddleColour = 127.5F;
constexpr std::size_t kMinCandidates = 4000;
/// Rank from the far end of the value that stands for the floor's distance: far enough in to pass over outliers.
constexpr int kFloorRank = 2000;
constexpr float kFirstBandShare = 10.0F;
constexpr float kLaterBandShare = 100.0F;
constexpr int kSamples = 1000;
constexpr int kMaxIterations = 100;
constexpr double kLeastImprovement = 1e-6;
constexpr int kRandomMask = 0x7FFF;

/// Pixels of a cloud with the sums that the next step needs.
struct Selection {
    std::vector<cv::Point> pixels;
    float errorSum = 0.0F;
    float depthSum = 0.0F;
};

/// The first sample list: the candidates near the floor, with the band that chose them and their residual.
struct FloorSample {
    std::vector<cv::Point> pixels;
    float threshold = 0.0F;
    float meanError = 0.0F;
};

struct Candidates {
    std::vector<cv::Point> pixels;
    cv::Vec3f colourSum{0.0F, 0.0F, 0.0F};
};

Candidates collectCandidates(const cv::Mat& cloud, const cv::Mat& normalMap, const NormalBand& band) {
    Candidates found;
    for (int row = 0; row < cloud.rows; ++row) {
        const auto* points = cloud.ptr<cv::Vec3f>(row);
        const auto* colours = normalMap.ptr<cv::Vec3f>(row);
        for (int column = 0; column < cloud.cols; ++column) {
            if (points[column][2] != 0.0F && band.contains(colours[column])) {
                for (int channel = 0; channel < 3; ++channel) {
                    found.colourSum[channel] += colours[column][channel] - kMiddleColour;
                }
                found.pixels.emplace_back(column, row);
            }
        }
    }
    return found;
}

cv::Vec3f meanDirection(const Candidates& candidates) {
    const auto count = static_cast<float>(candidates.pixels.size());
    const cv::Vec3f& sum = candidates.colourSum;
    const cv::Vec3d mean(sum[0] / count, sum[1] / count, sum[2] / count);
    const double length = std::sqrt(mean[0] * mean[0] + mean[1] * mean[1] + mean[2] * mean[2]);
    return {static_cast<float>(mean[0] / length), static_cast<float>(mean[1] / length),
            static_cast<float>(mean[2] / length)};
}

/// Keeps the candidates within a tenth of the floor's distance of the floor, along the mean direction.
FloorSample selectFloor(const cv::Mat& cloud, const Candidates& candidates) {
    const cv::Vec3f direction = meanDirection(candidates);
    std::vector<float> distances;
    distances.reserve(candidates.pixels.size());
    for (const cv::Point& pixel : candidates.pixels) {
        const auto& p = cloud.at<cv::Vec3f>(pixel);
        distances.push_back(p[0] * direction[0] + p[1] * direction[1] + p[2] * direction[2]);
    }
    const auto count = static_cast<int>(distances.size());
    const float floor = selectKth(distances, count, count - kFloorRank);

    FloorSample kept;
    kept.threshold = floor / kFirstBandShare;
    float errorSum = 0.0F;
    for (std::size_t i = 0; i < distances.size(); ++i) {
        const float error = std::fabs(distances[i] - floor);
        if (error < kept.threshold) {
            kept.pixels.push_back(candidates.pixels[i]);
            errorSum += error;
        }
    }
    // Divided by all candidates, not by those kept: that is the measure the first re-selection has to beat.
    kept.meanError = errorSum / static_cast<float>(count);
    return kept;
}

/// Least squares over 1000 pixels drawn at random; a drawn pixel outside the band is lost. Nothing when the list runs
/// dry.
std::optional<Plane> fitSample(const cv::Mat& cloud, const cv::Mat& normalMap, std::vector<cv::Point> pixels,
                               const NormalBand& band) {
    DrawPool pool(std::move(pixels));
    PlaneSums sums;
    for (int accepted = 0; accepted < kSamples;) {
        if (pool.size() == 0) {
            return std::nullopt;
        }
        const auto random = static_cast<std::size_t>(std::rand() & kRandomMask);
        const cv::Point pixel = pool.take(random % pool.size());
        if (band.contains(normalMap.at<cv::Vec3f>(pixel))) {
            sums.add(cloud.at<cv::Vec3f>(pixel));
            ++accepted;
        }
    }
    return sums.solve();
}

Selection selectInliers(const cv::Mat& cloud, const cv::Mat& normalMap, const Plane& plane, const NormalBand& band,
                        float threshold) {
    Selection inliers;
    for (int row = 0; row < cloud.rows; ++row) {
        const auto* points = cloud.ptr<cv::Vec3f>(row);
        const auto* colours = normalMap.ptr<cv::Vec3f>(row);
        for (int column = 0; column < cloud.cols; ++column) {
            const cv::Vec3f& point = points[column];
            if (point[2] == 0.0F) {
                continue;
            }
            const float error = std::fabs(signedDistance(point, plane.normal, plane.offset));
            if (error < threshold && band.contains(colours[column])) {
                inliers.errorSum += error;
                inliers.depthSum += point[2];
                inliers.pixels.emplace_back(column, row);
            }
        }
    }
    return inliers;
}

NormalBand bandAround(const cv::Vec3f& normal) {
    return NormalBand({normalColour(normal[0]), normalColour(normal[1]), normalColour(normal[2])});
}

}  // namespace

int ransacFitPlane(const cv::Mat& cloud, const cv::Mat& normalMap, const cv::Vec3f& bin, cv::Vec3f& normal,
                   float& offset) {
    NormalBand band({kBinWidth * bin[0], kBinWidth * bin[1], kBinWidth * bin[2]});
    const Candidates candidates = collectCandidates(cloud, normalMap, band);
    if (candidates.pixels.size() <= kMinCandidates) {
        return 1;
    }
    FloorSample floor = selectFloor(cloud, candidates);
    std::vector<cv::Point> pixels = std::move(floor.pixels);
    float previousError = floor.meanError;
    float threshold = floor.threshold;
    std::optional<Plane> plane;
    for (int iteration = 0; iteration < kMaxIterations; ++iteration) {
        plane = fitSample(cloud, normalMap, std::move(pixels), band);
        if (!plane) {
            return 1;
        }
        const NormalBand newBand = bandAround(plane->normal);
        Selection inliers = selectInliers(cloud, normalMap, *plane, newBand, threshold);
        const auto count = static_cast<float>(inliers.pixels.size());
        const float error = inliers.errorSum / count;
        const double improvement = previousError - error;
        // Not greater, rather than smaller or equal: a round without inliers (NaN) ends the search too.
        if (!(improvement > kLeastImprovement)) {
            break;
        }
        band = newBand;
        previousError = error;
        threshold = inliers.depthSum / count / kLaterBandShare;
        pixels = std::move(inliers.pixels);
    }
    normal = plane->normal;
    offset = plane->offset;
    return 0;
}

}  // namespace quorvel::internal
