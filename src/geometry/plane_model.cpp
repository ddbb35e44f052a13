// SPDX-License-Identifier: Apache-2.0
#include "geometry/plane_model.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "geometry/vec3.h"
#include "image/numbers.h"

namespace quorvel::internal {

namespace {

constexpr float kBandHalfWidth = 64.0F;
constexpr float kObjectEdge = 50.0F;  // mm

/// A normal of six decimals from a file has a length that is off by 1e-6, one of two decimals typed by hand by 1e-2.
/// With a larger error the heights are wrong by percents.
constexpr double kLengthTolerance = 0.01;

bool isFinite(const Plane& plane) {
    return std::isfinite(plane.normal[0]) && std::isfinite(plane.normal[1]) && std::isfinite(plane.normal[2]) &&
           std::isfinite(plane.offset);
}

}  // namespace

std::string planeProblem(const Plane& plane) {
    if (!isFinite(plane)) {
        return "it is not four finite numbers";
    }
    if (std::fabs(lengthOf(plane.normal) - 1.0) > kLengthTolerance) {
        return "the length of its normal is not 1";
    }
    if (!(plane.offset > 0.0F)) {
        return "its distance from the camera is not positive";
    }
    if (plane.normal[0] == 0.0F && plane.normal[1] == 0.0F && plane.normal[2] != 1.0F) {
        return "a normal along the optical axis has to be exactly 0 0 1";
    }
    return {};
}

bool hasPlane(const cv::Vec3f& normal) {
    return !(normal[0] == 0.0F && normal[1] == 0.0F && normal[2] == 0.0F);
}

Plane planeFromSlopes(float a, float b, float c) {
    const auto length = static_cast<float>(lengthOf(cv::Vec3d(a, b, 1.0)));
    return {cv::Vec3f(-a / length, -b / length, 1.0F / length), c / length};
}

float normalColour(float component) {
    return static_cast<float>(static_cast<double>(component) * 127.5) + 127.5F;
}

NormalBand::NormalBand(const cv::Vec3f& center)
    : low_(center[0] - kBandHalfWidth, center[1] - kBandHalfWidth, center[2] - kBandHalfWidth),
      high_(center[0] + kBandHalfWidth, center[1] + kBandHalfWidth, center[2] + kBandHalfWidth) {}

int objectPixelMinimum(float offset, float fxSmall) {
    const float edge = kObjectEdge / offset * fxSmall;
    return truncateToInt(std::pow(static_cast<double>(edge), 2.0));
}

namespace {

cv::Vec3f firstDirection(const cv::Vec3f& normal) {
    if (normal[0] == 0.0F && normal[1] == 0.0F && normal[2] == 1.0F) {
        return {1.0F, 0.0F, 0.0F};
    }
    return normalized(cv::Vec3f(normal[1], -normal[0], 0.0F));
}

}  // namespace

PlaneBasis planeBasis(const cv::Vec3f& normal) {
    const cv::Vec3f e1 = firstDirection(normal);
    const cv::Vec3f e2(normal[1] * e1[2] - normal[2] * e1[1], normal[2] * e1[0] - normal[0] * e1[2],
                       normal[0] * e1[1] - normal[1] * e1[0]);
    return {e1, e2};
}

namespace {

constexpr std::size_t kSize = 3;
constexpr double kSingularRatio = 1e-12;

using Matrix = std::array<float, kSize * kSize>;
using Vector = std::array<float, kSize>;

float singularThreshold(const Matrix& a) {
    float largest = 0.0F;
    for (const float entry : a) {
        largest = std::max(largest, std::fabs(entry));
    }
    return static_cast<float>(static_cast<double>(largest) * kSingularRatio);
}

// The first row at or below the diagonal with the largest entry of the column.
std::size_t pivotRow(const Matrix& a, std::size_t column) {
    std::size_t best = column;
    for (std::size_t row = column + 1; row < kSize; ++row) {
        if (std::fabs(a[row * kSize + column]) > std::fabs(a[best * kSize + column])) {
            best = row;
        }
    }
    return best;
}

void swapRows(Matrix& a, Vector& b, std::size_t first, std::size_t second) {
    if (first == second) {
        return;
    }
    for (std::size_t column = 0; column < kSize; ++column) {
        std::swap(a[first * kSize + column], a[second * kSize + column]);
    }
    std::swap(b[first], b[second]);
}

void eliminateBelow(Matrix& a, Vector& b, std::size_t pivot) {
    for (std::size_t row = pivot + 1; row < kSize; ++row) {
        const float factor = -a[row * kSize + pivot] / a[pivot * kSize + pivot];
        for (std::size_t column = pivot + 1; column < kSize; ++column) {
            a[row * kSize + column] += factor * a[pivot * kSize + column];
        }
        b[row] += factor * b[pivot];
    }
}

}  // namespace

std::optional<std::array<float, 3>> solve3x3(std::array<float, 9> a, std::array<float, 3> b) {
    const float threshold = singularThreshold(a);
    for (std::size_t k = 0; k < kSize; ++k) {
        const std::size_t row = pivotRow(a, k);
        if (threshold > std::fabs(a[row * kSize + k])) {
            return std::nullopt;
        }
        swapRows(a, b, k, row);
        eliminateBelow(a, b, k);
    }
    Vector x{};
    for (std::size_t row = kSize; row > 0; --row) {
        const std::size_t i = row - 1;
        float rest = b[i];
        for (std::size_t j = i + 1; j < kSize; ++j) {
            rest -= a[i * kSize + j] * x[j];
        }
        x[i] = rest / a[i * kSize + i];
    }
    return x;
}

}  // namespace quorvel::internal
