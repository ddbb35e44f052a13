// SPDX-License-Identifier: Apache-2.0
#include "measure/object_points.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>

#include "common/bit_image.h"
#include "common/scratch.h"
#include "measure/object_points_loops.h"
#include "measure/points.h"

namespace quorvel::internal {

namespace {

/// Coordinates up to here (mm) leave the hull's cross products within 31 bits. Footprints that reach beyond keep all
/// points: whatever such points make of the hull, they make of it.
constexpr int kFarthest = 16000;

struct Workspace {
    BitImage valid;
    GrowingBuffer<float> heights;
    GrowingBuffer<std::int32_t> feet;
    GrowingBuffer<std::uint64_t> bits;
};

struct QuantileScratch {
    GrowingBuffer<float> heights;
};

Direction direction(const cv::Vec3f& v) {
    return {v[0], v[1], v[2]};
}

void findValidPoints(const cv::Mat& cloud, Workspace& scratch) {
    scratch.valid.reset(cloud.rows, cloud.cols);
    const int words = scratch.valid.wordsPerRow();
    std::uint64_t* doubt = scratch.bits.atLeast(static_cast<std::size_t>(words));
    for (int row = 0; row < cloud.rows; ++row) {
        std::fill(doubt, doubt + words, std::uint64_t{0});
        std::uint64_t* valid = scratch.valid.row(row);
        objectPointsLoops().findPoints(cloud.ptr<float>(row), cloud.cols, valid, doubt);
        for (int word = 0; word < words; ++word) {
            forEachSetBit(doubt[word], [&](int bit) {
                if (isValidPoint(cloud.ptr<cv::Vec3f>(row)[word * kWordBits + bit])) {
                    valid[word] |= std::uint64_t{1} << bit;
                }
            });
        }
    }
}

/// The column of a row's first or last set bit; -1 without one.
int firstColumn(const BitImage& image, int row) {
    for (int word = 0; word < image.wordsPerRow(); ++word) {
        if (image.row(row)[word] != 0) {
            return word * kWordBits + lowestSetBit(image.row(row)[word]);
        }
    }
    return -1;
}
int lastColumn(const BitImage& image, int row) {
    for (int word = image.wordsPerRow() - 1; word >= 0; --word) {
        if (image.row(row)[word] != 0) {
            return word * kWordBits + highestSetBit(image.row(row)[word]);
        }
    }
    return -1;
}

/// The foot of one point, as a row of them.
cv::Point footOf(const cv::Vec3f& point, const PlaneFrame& plane) {
    std::array<float, kWordBits> height{};
    std::array<std::int32_t, kWordBits> u{};
    std::array<std::int32_t, kWordBits> v{};
    std::uint64_t inside = 0;
    objectPointsLoops().projectRow(point.val, 1, plane, {}, {height.data(), u.data(), v.data(), &inside});
    return {u[0], v[0]};
}

/// The points that reach farthest in eight directions, counter-clockwise, among the first and last points of the rows.
/// \return nothing when a point lies too far away
std::vector<cv::Point> extremePoints(const cv::Mat& cloud, const BitImage& valid, const PlaneFrame& plane) {
    static const std::array<cv::Point, InnerPolygon::kEdges> kDirections{
        cv::Point(1, 0),  cv::Point(1, 1),   cv::Point(0, 1),  cv::Point(-1, 1),
        cv::Point(-1, 0), cv::Point(-1, -1), cv::Point(0, -1), cv::Point(1, -1)};
    std::vector<cv::Point> extremes;
    for (int row = 0; row < cloud.rows; ++row) {
        const int first = firstColumn(valid, row);
        if (first < 0) {
            continue;
        }
        for (const int column : {first, lastColumn(valid, row)}) {
            const cv::Point foot = footOf(cloud.at<cv::Vec3f>(row, column), plane);
            if (foot.x < -kFarthest || foot.x > kFarthest || foot.y < -kFarthest || foot.y > kFarthest) {
                return {};
            }
            extremes.resize(kDirections.size(), foot);
            for (std::size_t k = 0; k < kDirections.size(); ++k) {
                if (kDirections[k].dot(foot) > kDirections[k].dot(extremes[k])) {
                    extremes[k] = foot;
                }
            }
        }
    }
    return extremes;
}

/// The polygon with these corners, smaller by more than the rounding of the edge tests in float: their products and
/// sums are off by less than 2^-22 of the largest value that they can have.
InnerPolygon polygonOf(const std::vector<cv::Point>& corners) {
    InnerPolygon polygon;
    // cppcheck-suppress containerOutOfBounds; the sum is begin() for no corners
    if (std::equal(corners.begin() + (corners.empty() ? 0 : 1), corners.end(), corners.begin())) {
        return polygon;  // all of them are one point
    }
    for (std::size_t k = 0; k < corners.size(); ++k) {
        const cv::Point& from = corners[k];
        const cv::Point edge = corners[(k + 1) % corners.size()] - from;
        const double a = -edge.y;
        const double b = edge.x;
        const double margin = (std::fabs(a) + std::fabs(b)) * kFarthest * 0x1p-20;
        polygon.a[k] = static_cast<float>(a);
        polygon.b[k] = static_cast<float>(b);
        // Equal corners make no edge: 0 > -1 holds everywhere.
        polygon.c[k] = edge == cv::Point() ? -1.0F : static_cast<float>(a * from.x + b * from.y + margin);
        polygon.farthest = kFarthest;
    }
    return polygon;
}

/// Takes over a row's largest distance if it is larger than those before.
void keepLargest(const cv::Vec3f* points, const float* heights, const std::uint64_t* valid, int words,
                 const PlaneFrame& plane, float& largest) {
    for (int word = 0; word < words; ++word) {
        forEachSetBit(valid[word], [&](int bit) {
            const int column = word * kWordBits + bit;
            if (heights[column] > std::fabs(largest)) {
                const cv::Vec3f& p = points[column];
                largest = plane.normal.x * p[0] + plane.normal.y * p[1] + plane.normal.z * p[2] - plane.offset;
            }
        });
    }
}

/// Projects every valid point.
/// \return whether every point of the outline is near enough for the polygon to have chosen rightly
bool projectPoints(const cv::Mat& cloud, const PlaneFrame& plane, const InnerPolygon& polygon, Workspace& scratch,
                   ObjectPoints& object) {
    const int words = scratch.valid.wordsPerRow();
    const std::size_t room = static_cast<std::size_t>(words) * kWordBits;
    std::int32_t* feet = scratch.feet.atLeast(2 * room);
    const ProjectedRow projected{scratch.heights.atLeast(room), feet, feet + room,
                                 scratch.bits.atLeast(static_cast<std::size_t>(words))};
    float* const heights = object.heights.atLeast(cloud.total());
    float* end = heights;
    object.outline.clear();
    object.largestDistance = 0.0F;
    for (int row = 0; row < cloud.rows; ++row) {
        std::fill(projected.inside, projected.inside + words, std::uint64_t{0});
        const std::uint64_t* valid = scratch.valid.row(row);
        const float highest =
            objectPointsLoops().projectRow(cloud.ptr<float>(row), cloud.cols, plane, polygon, projected);
        if (highest > std::fabs(object.largestDistance)) {
            keepLargest(cloud.ptr<cv::Vec3f>(row), projected.heights, valid, words, plane, object.largestDistance);
        }
        for (int word = 0; word < words; ++word) {
            end = appendChosen(projected.heights + std::ptrdiff_t{word} * kWordBits, valid[word], end);
            forEachSetBit(valid[word] & ~projected.inside[word], [&](int bit) {
                const int column = word * kWordBits + bit;
                object.outline.emplace_back(projected.u[column], projected.v[column]);
            });
        }
    }
    object.count = static_cast<std::size_t>(end - heights);
    return std::all_of(object.outline.begin(), object.outline.end(), [](const cv::Point& foot) {
        return foot.x >= -kFarthest && foot.x <= kFarthest && foot.y >= -kFarthest && foot.y <= kFarthest;
    });
}

/// A height that some more than the last `wanted` of the ascending heights reach, judging by a sample; 0, which all
/// reach, when the sample is too small to tell.
float guessBound(const float* heights, std::size_t count, std::size_t wanted) {
    constexpr std::size_t kSample = 1024;
    std::array<float, kSample> sample{};
    if (count < 2 * kSample) {
        return 0.0F;
    }
    const std::size_t step = count / kSample;
    for (std::size_t i = 0; i < kSample; ++i) {
        const float height = heights[i * step];
        sample[i] = std::isnan(height) ? 0.0F : height;
    }
    // Of as many as are expected among the sample, four standard deviations more.
    const double expected = static_cast<double>(wanted) * kSample / static_cast<double>(count);
    const auto rank = static_cast<std::size_t>(expected + 4.0 * std::sqrt(expected) + 4.0);
    std::nth_element(sample.begin(), sample.begin() + rank, sample.end(), std::greater<>());
    return sample[rank];
}

/// NaN has no place in an order; sorted to the end it cannot upset the selection among the numbers.
float quantileAmongOddHeights(const float* heights, std::size_t count, std::size_t index) {
    std::vector<float> sorted(heights, heights + count);
    const auto numbersEnd =
        std::partition(sorted.begin(), sorted.end(), [](float height) { return !std::isnan(height); });
    const auto value = sorted.begin() + static_cast<std::ptrdiff_t>(index);
    if (value >= numbersEnd) {
        return std::numeric_limits<float>::quiet_NaN();
    }
    std::nth_element(sorted.begin(), value, numbersEnd);
    return *value;
}

}  // namespace

void collectObjectPoints(const cv::Mat& cloud, const cv::Vec3f& normal, float offset, const PlaneBasis& basis,
                         ObjectPoints& object) {
    const PlaneFrame plane{direction(normal), offset, direction(basis.e1), direction(basis.e2)};
    const Borrowed<Workspace> borrowed;
    Workspace& scratch = *borrowed;
    findValidPoints(cloud, scratch);
    const InnerPolygon polygon = polygonOf(extremePoints(cloud, scratch.valid, plane));
    if (!projectPoints(cloud, plane, polygon, scratch, object)) {
        projectPoints(cloud, plane, {}, scratch, object);
    }
}

// Only the few heights beyond a guess are put in order, all of them when the guess was too high: for 50000 heights 0.01
// instead of 0.4 ms.
float heightQuantile(const float* heights, std::size_t count) {
    constexpr double kQuantile = 0.99;
    const auto index = static_cast<std::size_t>(static_cast<double>(count) * kQuantile);
    const std::size_t fromEnd = count - index;  // 1 for the last
    const Borrowed<QuantileScratch> scratch;
    float* const found = scratch->heights.atLeast(count);
    bool numbers = true;
    int size = objectPointsLoops().collectFrom(heights, static_cast<int>(count), guessBound(heights, count, fromEnd),
                                               found, &numbers);
    if (!numbers) {
        return quantileAmongOddHeights(heights, count, index);
    }
    if (static_cast<std::size_t>(size) < fromEnd) {
        size = objectPointsLoops().collectFrom(heights, static_cast<int>(count), 0.0F, found, &numbers);
    }
    float* const value = found + (static_cast<std::size_t>(size) - fromEnd);
    std::nth_element(found, value, found + size);
    return *value;
}

}  // namespace quorvel::internal
