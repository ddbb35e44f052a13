// SPDX-License-Identifier: Apache-2.0
#include "sim/effects.h"

#include <algorithm>
#include <cmath>

#include "sim/random.h"

namespace quorvel::sim {

namespace {

/// The sequences of random numbers; the values are part of what a seed means.
enum Sequence : std::uint32_t { kFlying = 1, kNoise = 2, kJitter = 3, kDropout = 4, kHoles = 5 };

/// The depth of the measured 4-neighbour that differs most from the pixel's depth; the pixel's depth when no neighbour
/// is measured.
double farthestOffNeighbour(const cv::Mat& depth, int row, int col) {
    const double own = depth.at<double>(row, col);
    double other = own;
    const auto consider = [&](int r, int c) {
        if (r < 0 || r >= depth.rows || c < 0 || c >= depth.cols) {
            return;
        }
        const double z = depth.at<double>(r, c);
        if (z > 0.0 && std::abs(z - own) > std::abs(other - own)) {
            other = z;
        }
    };
    consider(row - 1, col);
    consider(row, col - 1);
    consider(row, col + 1);
    consider(row + 1, col);
    return other;
}

cv::Mat withFlyingPixels(const cv::Mat& depth, const SensorEffects& effects, Random random) {
    cv::Mat mixed = depth.clone();
    for (int row = 0; row < depth.rows; ++row) {
        for (int col = 0; col < depth.cols; ++col) {
            const double own = depth.at<double>(row, col);
            if (own == 0.0) {
                continue;
            }
            const double other = farthestOffNeighbour(depth, row, col);
            if (std::abs(other - own) > effects.edgeThreshold && random.uniform() < effects.flyingPixels) {
                mixed.at<double>(row, col) = own + random.uniform() * (other - own);
            }
        }
    }
    return mixed;
}

/// Draws one number for every pixel, measured or not, so that an object does not change the noise of other pixels.
void addAxialNoise(cv::Mat& depth, double sigmaAtOneMetre, Random random) {
    for (int row = 0; row < depth.rows; ++row) {
        auto* z = depth.ptr<double>(row);
        for (int col = 0; col < depth.cols; ++col) {
            const double metres = z[col] / 1000.0;
            z[col] += sigmaAtOneMetre * metres * metres * random.gaussian();
        }
    }
}

/// Depth of the nearest disparity step; 0 when the depth lies beyond the last one.
double quantised(double z, double stepAtOneMetre) {
    constexpr double kSquareMetre = 1.0e6;  // mm^2; neighbouring steps differ by z^2 step / kSquareMetre
    const double disparity = std::round(kSquareMetre / (stepAtOneMetre * z));
    return disparity < 1.0 ? 0.0 : kSquareMetre / (stepAtOneMetre * disparity);
}

std::uint16_t toMillimetres(double z) {
    const double rounded = std::round(z);
    return rounded >= 1.0 && rounded <= 65535.0 ? static_cast<std::uint16_t>(rounded) : std::uint16_t{0};
}

cv::Mat toSensorUnits(const cv::Mat& exact, const cv::Mat& depth, double jitter, double quantisationStep) {
    cv::Mat result(depth.size(), CV_16UC1);
    for (int row = 0; row < depth.rows; ++row) {
        for (int col = 0; col < depth.cols; ++col) {
            double z = exact.at<double>(row, col) > 0.0 ? depth.at<double>(row, col) + jitter : 0.0;
            if (quantisationStep > 0.0 && z > 0.0) {
                z = quantised(z, quantisationStep);
            }
            result.at<std::uint16_t>(row, col) = toMillimetres(z);
        }
    }
    return result;
}

void dropPixels(cv::Mat& depth, double probability, Random random) {
    for (int row = 0; row < depth.rows; ++row) {
        auto* z = depth.ptr<std::uint16_t>(row);
        for (int col = 0; col < depth.cols; ++col) {
            if (random.uniform() < probability) {
                z[col] = 0;
            }
        }
    }
}

void cutHoles(cv::Mat& depth, int count, double radius, Random random) {
    const int reach = static_cast<int>(std::ceil(radius));
    for (int i = 0; i < count; ++i) {
        const int centreCol = static_cast<int>(random.uniform() * depth.cols);
        const int centreRow = static_cast<int>(random.uniform() * depth.rows);
        const int lastRow = std::min(centreRow + reach, depth.rows - 1);
        const int lastCol = std::min(centreCol + reach, depth.cols - 1);
        for (int row = std::max(centreRow - reach, 0); row <= lastRow; ++row) {
            for (int col = std::max(centreCol - reach, 0); col <= lastCol; ++col) {
                const double dx = col - centreCol;
                const double dy = row - centreRow;
                if (dx * dx + dy * dy <= radius * radius) {
                    depth.at<std::uint16_t>(row, col) = 0;
                }
            }
        }
    }
}

}  // namespace

cv::Mat applyEffects(const cv::Mat& exact, const SensorEffects& effects, std::uint32_t seed, unsigned frameIndex) {
    const auto sequence = [&](Sequence which) { return Random({seed, frameIndex, which}); };
    cv::Mat depth = effects.flyingPixels > 0.0 ? withFlyingPixels(exact, effects, sequence(kFlying)) : exact.clone();
    if (effects.axialNoise > 0.0) {
        addAxialNoise(depth, effects.axialNoise, sequence(kNoise));
    }
    const double jitter = effects.jitter > 0.0 ? effects.jitter * sequence(kJitter).gaussian() : 0.0;
    cv::Mat measured = toSensorUnits(exact, depth, jitter, effects.quantisationStep);
    if (effects.dropout > 0.0) {
        dropPixels(measured, effects.dropout, sequence(kDropout));
    }
    // No frame index: a hole stays where it is.
    cutHoles(measured, effects.holeCount, effects.holeRadius, Random({seed, kHoles}));
    return measured;
}

}  // namespace quorvel::sim
