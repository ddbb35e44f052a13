// SPDX-License-Identifier: Apache-2.0
#include "measure/surface_filter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "geometry/vec3.h"
#include "image/bit_image.h"
#include "image/scratch.h"
#include "measure/surface_filter_loops.h"

namespace quorvel::internal {

namespace {

constexpr auto kSteepCosine = static_cast<double>(0.8F);
constexpr float kOutlierDeviations = 4.5F;
/// Below this mean height (mm) the outlier test is off, because the sensor's noise is about as large as the object.
constexpr float kLowObjectHeight = 10.0F;

struct FilterWorkspace {
    BitImage present;
    BitImage steep;
    BitImage accepted;  ///< after the first pass
    BitImage kept;      ///< after the second
    GrowingBuffer<float> planes;
    GrowingBuffer<std::uint64_t> comparisons;
    GrowingBuffer<float> heights;
    GrowingBuffer<int> outliers;
};

/// What the first pass leaves for the second, besides the bits of the accepted points.
struct AcceptedHeights {
    float* values = nullptr;  ///< of the accepted points, in scan order, mm
    int count = 0;
    float mean = 0.0F;  ///< of all interior points, accepted or not, mm
};

bool isUnit(const Direction& normal) {
    constexpr float kAboutOne = 1.001F;
    return std::fabs(normal.x) < kAboutOne && std::fabs(normal.y) < kAboutOne && std::fabs(normal.z) < kAboutOne;
}

/// Two neighbouring rows that are compared: coordinates and heights of both, and the bits of the comparison.
class RowPair {
public:
    RowPair(FilterWorkspace& scratch, int columns) : words_(wordsFor(columns)) {
        // Room for one value before a row, and after it up to the end of its last word plus one widest register.
        constexpr std::size_t kBefore = 16;
        const std::size_t stride = kBefore + static_cast<std::size_t>(words_) * kWordBits + kBefore;
        float* next = scratch.planes.atLeast(8 * stride) + kBefore;
        for (std::size_t i = 0; i < 2; ++i) {
            planes_[i] = {next, next + stride, next + 2 * stride};
            heights_[i] = next + 3 * stride;
            next += 4 * stride;
        }
        bits_ = scratch.comparisons.atLeast(6 * static_cast<std::size_t>(words_));
    }

    const PointPlanes& planes(int row) const { return planes_[static_cast<std::size_t>(row) % 2]; }
    float* heights(int row) const { return heights_[static_cast<std::size_t>(row) % 2]; }

    SteepBits clearedBits() {
        std::fill(bits_, bits_ + 6 * words_, std::uint64_t{0});
        return {bits_,
                bits_ + words_,
                bits_ + std::ptrdiff_t{2} * words_,
                bits_ + std::ptrdiff_t{3} * words_,
                bits_ + std::ptrdiff_t{4} * words_,
                bits_ + std::ptrdiff_t{5} * words_};
    }

private:
    std::array<PointPlanes, 2> planes_{};
    std::array<float*, 2> heights_{};
    std::uint64_t* bits_ = nullptr;
    int words_;
};

/// Whether p lies below q, in a direction within about 37 degrees of the normal.
bool isSteep(const cv::Vec3f& p, const cv::Vec3f& q, const Direction& normal) {
    const cv::Vec3d way = cv::Vec3d(p) - cv::Vec3d(q);
    const double length = lengthOf(way);
    return way[0] / length * normal.x + way[1] / length * normal.y + way[2] / length * normal.z > kSteepCosine;
}

/// Compares a pixel with its right and its three lower neighbours in double, in both directions.
void compareExactly(const cv::Mat& cloud, const cv::Point& pixel, const Direction& normal, BitImage& steep) {
    static const std::array<cv::Point, 4> kSteps{cv::Point(1, 0), cv::Point(-1, 1), cv::Point(0, 1), cv::Point(1, 1)};
    const auto& p = cloud.at<cv::Vec3f>(pixel);
    for (const cv::Point& step : kSteps) {
        const cv::Point next = pixel + step;
        if (next.x < 0 || next.x >= cloud.cols) {
            continue;
        }
        const auto& q = cloud.at<cv::Vec3f>(next);
        if (isSteep(p, q, normal)) {
            setBit(steep.row(pixel.y), pixel.x);
        }
        if (isSteep(q, p, normal)) {
            setBit(steep.row(next.y), next.x);
        }
    }
}

/// Enters the comparisons of a row with itself and with the next row into the image of steep points.
void collectSteep(const SteepBits& found, int rowIndex, BitImage& steep) {
    const int words = steep.wordsPerRow();
    std::uint64_t* row = steep.row(rowIndex);
    std::uint64_t* next = steep.row(rowIndex + 1);
    for (int word = 0; word < words; ++word) {
        row[word] |= found.here[word] | fromLeft(found.right, word);
        next[word] |= found.below[word] | fromLeft(found.belowRight, word) | fromRight(found.belowLeft, word, words);
    }
}

/// Marks the pixels of a row and of the next row that lie steeply below a neighbour. Each pixel is compared with its
/// right and its three lower neighbours, in both directions; its four other neighbours compare themselves with it. The
/// comparisons are made in float. The few that are too close for float are repeated in double, as they are defined.
/// Comparisons with absent points do no harm, because only points with eight neighbours are used later.
void markSteepRow(const cv::Mat& cloud, int row, const Direction& normal, bool comparable, RowPair& pair,
                  BitImage& steep) {
    const SteepBits found = pair.clearedBits();
    const int words = steep.wordsPerRow();
    if (comparable) {
        surfaceFilterLoops().markSteep(pair.planes(row), pair.planes(row + 1), cloud.cols, normal, found);
        collectSteep(found, row, steep);
    } else {
        std::fill(found.doubt, found.doubt + words, ~std::uint64_t{0});
    }
    for (int word = 0; word < words; ++word) {
        forEachSetBit(found.doubt[word], [&](int bit) {
            const cv::Point pixel(word * kWordBits + bit, row);
            if (pixel.x < cloud.cols) {
                compareExactly(cloud, pixel, normal, steep);
            }
        });
    }
}

/// The pixels of a word of an interior row that are present together with all eight neighbours.
std::uint64_t surrounded(const BitImage& present, int row, int word) {
    const int words = present.wordsPerRow();
    std::uint64_t all = ~std::uint64_t{0};
    for (int r = row - 1; r <= row + 1; ++r) {
        const std::uint64_t* bits = present.row(r);
        all &= bits[word] & fromLeft(bits, word) & fromRight(bits, word, words);
    }
    return all;
}

/// The first pass. Absent points have the height +0, which changes no bit of a sum of absolute values.
AcceptedHeights acceptSurfacePoints(const cv::Mat& cloud, const Direction& normal, float offset,
                                    FilterWorkspace& scratch) {
    const SurfaceFilterLoops& loops = surfaceFilterLoops();
    scratch.present.reset(cloud.rows, cloud.cols);
    scratch.steep.reset(cloud.rows, cloud.cols);
    scratch.accepted.reset(cloud.rows, cloud.cols);
    RowPair pair(scratch, cloud.cols);
    AcceptedHeights accepted;
    accepted.values = scratch.heights.atLeast(cloud.total());
    float* end = accepted.values;
    float heightSum = 0.0F;
    int count = 0;
    const auto split = [&](int row) {
        // The analyser does not follow the components of cv::Vec3f into the normal.
        // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
        return loops.splitRow(cloud.ptr<float>(row), cloud.cols, row, normal, offset, pair.planes(row),
                              pair.heights(row), scratch.present.row(row));
    };
    bool numbers = split(0);
    for (int row = 0; row + 1 < cloud.rows; ++row) {
        const bool nextNumbers = split(row + 1);
        markSteepRow(cloud, row, normal, numbers && nextNumbers && isUnit(normal), pair, scratch.steep);
        numbers = nextNumbers;
        if (row == 0) {
            continue;
        }
        const float* heights = pair.heights(row);
        for (int column = 1; column + 1 < cloud.cols; ++column) {
            heightSum += heights[column];
        }
        const std::uint64_t* present = scratch.present.row(row);
        for (int word = 0; word < scratch.present.wordsPerRow(); ++word) {
            count += countSetBits(present[word]);
            const std::uint64_t bits = surrounded(scratch.present, row, word) & ~scratch.steep.row(row)[word];
            scratch.accepted.row(row)[word] = bits;
            end = appendChosen(heights + std::ptrdiff_t{word} * kWordBits, bits, end);
        }
        count -= (scratch.present.at(row, 0) ? 1 : 0) + (scratch.present.at(row, cloud.cols - 1) ? 1 : 0);
    }
    accepted.count = static_cast<int>(end - accepted.values);
    accepted.mean = heightSum / static_cast<float>(count);
    return accepted;
}

/// Largest distance from the mean height that an accepted point may have, mm; infinite for low objects.
float heightTolerance(const AcceptedHeights& accepted) {
    if (accepted.mean < kLowObjectHeight) {
        return std::numeric_limits<float>::infinity();
    }
    float sum = 0.0F;
    for (int i = 0; i < accepted.count; ++i) {
        sum += std::fabs(accepted.values[i] - accepted.mean);
    }
    return kOutlierDeviations * (sum / static_cast<float>(accepted.count));
}

/// Clears the outliers in an image of the accepted points. The heights are a list of all accepted points in scan order,
/// and an outlier is given by its position in this list: outlier n is the n-th set bit of the image, counted from 0.
///
/// Example with a word of eight pixels, pixel 0 on the left. Ten points were accepted before this word; 12 and 14 are
/// outliers.
///     accepted   0 1 1 0 1 1 0 1    points 10 to 14
///     rest       0 0 0 0 1 1 0 1    the lowest bits of points 10 and 11 cleared: the lowest bit left is point 12
///     rest       0 0 0 0 0 0 0 1    points 12 and 13 cleared: the lowest bit left is point 14
///     image      0 1 1 0 0 1 0 0    without points 12 and 14
/// `rest & (rest - 1)` clears the lowest set bit of `rest`, `rest & (~rest + 1)` is that bit alone.
void clearOutliers(const AcceptedHeights& heights, FilterWorkspace& scratch, BitImage& image) {
    int* positions = scratch.outliers.atLeast(static_cast<std::size_t>(heights.count));
    const int found = surfaceFilterLoops().findOutliers(heights.values, heights.count, heights.mean,
                                                        heightTolerance(heights), positions);
    const int* const positionsEnd = positions + found;
    int before = 0;
    for (int row = 0; row < image.rows() && positions != positionsEnd; ++row) {
        for (int word = 0; word < image.wordsPerRow(); ++word) {
            const std::uint64_t accepted = image.row(row)[word];
            std::uint64_t rest = accepted;
            int passed = before;
            before += countSetBits(accepted);
            for (; positions != positionsEnd && *positions < before; ++positions) {
                for (; passed < *positions; ++passed) {
                    rest &= rest - 1;
                }
                image.row(row)[word] &= ~(rest & (~rest + 1));
            }
        }
    }
}

/// The sums of three bits at every position of a word, as binary digits: twos and ones.
struct BitSum {
    std::uint64_t ones;
    std::uint64_t twos;
};

BitSum sumOf(std::uint64_t a, std::uint64_t b, std::uint64_t c) {
    return {a ^ b ^ c, (a & b) | (c & (a ^ b))};
}

/// One word of the second pass. A candidate is kept when at least four of its eight neighbours are there. Seven of them
/// are known beforehand: the three above as the second pass left them, the right one and the three below as the first
/// pass accepted them. With four of these a candidate is kept. With three it is kept exactly when its left neighbour
/// was kept, so the decision runs from left to right. The carry of an addition runs in the same way.
///
/// Example with eight candidates, pixel 0 on the left. Pixel 0 is the lowest bit, so carries run to the right.
///     known neighbours   4 3 3 2 3 3 4 3
///     four               1 0 0 0 0 0 1 0    kept
///     three              0 1 1 0 1 1 0 1    kept if the left neighbour is
///     starts             0 1 0 0 0 0 0 1    pixels of `three` whose left neighbour is in `four`
///     three + starts     0 0 0 1 1 1 0 0    runs with a start: 1 1 became 0 0 and a carry; the run 4, 5 is unchanged
///     three & ~sum       0 1 1 0 0 0 0 1    the runs that have a start
///     kept               1 1 1 0 0 0 1 1
/// A start is always the first pixel of its run, because the pixel before it is in `four` and so not in `three`. The
/// carry ends in the first pixel after the run, which is not in `three`. The carry of a run up to pixel 7 is lost.
/// \param leftKept whether the last pixel of the word before was kept
std::uint64_t keptCandidates(std::uint64_t candidates, const std::array<std::uint64_t, 7>& neighbours, bool leftKept) {
    const BitSum above = sumOf(neighbours[0], neighbours[1], neighbours[2]);
    const BitSum below = sumOf(neighbours[3], neighbours[4], neighbours[5]);
    const BitSum ones = sumOf(above.ones, below.ones, neighbours[6]);
    const BitSum twos = sumOf(above.twos, below.twos, ones.twos);
    const std::uint64_t four = candidates & twos.twos;
    const std::uint64_t three = candidates & ~twos.twos & twos.ones & ones.ones;
    const std::uint64_t starts = (four << 1 | (leftKept ? 1U : 0U)) & three;
    // Adding the start of a run turns the ones of the run into zeros; runs without a start keep their ones.
    return four | (three & ~(three + starts));
}

/// The second pass: clears the candidates with fewer than four neighbours, in scan order.
void keepAccompanied(const BitImage& accepted, const BitImage& candidates, BitImage& kept) {
    const int words = accepted.wordsPerRow();
    kept.reset(accepted.rows(), accepted.columns());
    for (int row = 1; row + 1 < accepted.rows(); ++row) {
        const std::uint64_t* above = kept.row(row - 1);
        const std::uint64_t* right = accepted.row(row);
        const std::uint64_t* below = accepted.row(row + 1);
        std::uint64_t* here = kept.row(row);
        bool leftKept = false;
        for (int word = 0; word < words; ++word) {
            here[word] = keptCandidates(
                candidates.row(row)[word],
                {fromLeft(above, word), above[word], fromRight(above, word, words), fromLeft(below, word), below[word],
                 fromRight(below, word, words), fromRight(right, word, words)},
                leftKept);
            leftKept = here[word] >> (kWordBits - 1) != 0;
        }
    }
}

/// Clears every pixel that is not kept, also those without a point, because these may hold -0.
void clearDropped(cv::Mat& cloud, const BitImage& kept) {
    for (int row = 0; row < cloud.rows; ++row) {
        for (int word = 0; word < kept.wordsPerRow(); ++word) {
            // cppcheck-suppress redundantInitialization; the row's address is no variable
            auto* points = cloud.ptr<cv::Vec3f>(row) + std::ptrdiff_t{word} * kWordBits;
            const int columns = std::min(kWordBits, cloud.cols - word * kWordBits);
            const std::uint64_t bits = kept.row(row)[word];
            if (bits == 0) {
                std::fill(points, points + columns, cv::Vec3f(0.0F, 0.0F, 0.0F));
                continue;
            }
            forEachSetBit(~bits & lowestBits(columns), [points](int bit) { points[bit] = {0.0F, 0.0F, 0.0F}; });
        }
    }
}

void writeMask(const BitImage& kept, cv::Mat& mask) {
    for (int row = 0; row < mask.rows; ++row) {
        auto* marks = mask.ptr<uchar>(row);
        for (int column = 0; column < mask.cols; ++column) {
            marks[column] = kept.at(row, column) ? 255 : 0;
        }
    }
}

/// Filters a cloud that is not empty; leaves the bits of the points kept in the scratch.
void filter(cv::Mat& cloud, const cv::Vec3f& normal, float offset, FilterWorkspace& scratch) {
    const AcceptedHeights heights = acceptSurfacePoints(cloud, direction(normalized(normal)), offset, scratch);
    // The image of the steep points is not needed any more, so it is used for the candidates.
    BitImage& candidates = scratch.steep;
    for (int row = 0; row < cloud.rows; ++row) {
        const std::uint64_t* bits = scratch.accepted.row(row);
        std::copy(bits, bits + scratch.accepted.wordsPerRow(), candidates.row(row));
    }
    clearOutliers(heights, scratch, candidates);
    keepAccompanied(scratch.accepted, candidates, scratch.kept);
    clearDropped(cloud, scratch.kept);
}

}  // namespace

void keepSurfacePoints(cv::Mat& cloud, const cv::Vec3f& normal, float offset) {
    if (!cloud.empty()) {
        const Borrowed<FilterWorkspace> scratch;
        filter(cloud, normal, offset, *scratch);
    }
}

void filterSurfacePoints(cv::Mat& cloud, const cv::Vec3f& normal, float offset, cv::Mat& mask) {
    if (cloud.empty()) {
        mask.setTo(0);
        return;
    }
    const Borrowed<FilterWorkspace> scratch;
    filter(cloud, normal, offset, *scratch);
    writeMask(scratch->kept, mask);
}

}  // namespace quorvel::internal
