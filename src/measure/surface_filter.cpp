// SPDX-License-Identifier: Apache-2.0
#include "measure/surface_filter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "common/bit_image.h"
#include "common/growing_buffer.h"
#include "common/scratch.h"
#include "measure/surface_filter_loops.h"

namespace quorvel::internal {

namespace {

constexpr auto kSteepCosine = static_cast<double>(0.8F);
constexpr float kOutlierDeviations = 4.5F;
/// Below this mean height (mm) the outlier test is off: the sensor's noise is of the object's own size there.
constexpr float kLowObjectHeight = 10.0F;

struct Workspace {
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

Direction normalized(const cv::Vec3f& normal) {
    const double x = normal[0];
    const double y = normal[1];
    const double z = normal[2];
    const double length = std::sqrt(x * x + y * y + z * z);
    return {static_cast<float>(x / length), static_cast<float>(y / length), static_cast<float>(z / length)};
}

bool isUnit(const Direction& normal) {
    constexpr float kAboutOne = 1.001F;
    return std::fabs(normal.x) < kAboutOne && std::fabs(normal.y) < kAboutOne && std::fabs(normal.z) < kAboutOne;
}

/// The row pair under comparison: planes and heights of two rows, and the bits of one comparison.
class RowPair {
public:
    RowPair(Workspace& scratch, int columns) : words_(wordsFor(columns)) {
        // Room for one value before a row, and after it up to a whole word and a widest register.
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

/// The word whose bit c is bit c - 1 of the row: what each pixel's left neighbour has.
std::uint64_t fromLeft(const std::uint64_t* row, int word) {
    return row[word] << 1 | (word > 0 ? row[word - 1] >> (kWordBits - 1) : 0U);
}

/// The word whose bit c is bit c + 1 of the row: what each pixel's right neighbour has.
std::uint64_t fromRight(const std::uint64_t* row, int word, int words) {
    return row[word] >> 1 | (word + 1 < words ? row[word + 1] << (kWordBits - 1) : 0U);
}

/// Whether p lies below q, in a direction within about 37 degrees of the normal.
bool isSteep(const cv::Vec3f& p, const cv::Vec3f& q, const Direction& normal) {
    const double dx = static_cast<double>(p[0]) - q[0];
    const double dy = static_cast<double>(p[1]) - q[1];
    const double dz = static_cast<double>(p[2]) - q[2];
    const double length = std::sqrt(dx * dx + dy * dy + dz * dz);
    return dx / length * normal.x + dy / length * normal.y + dz / length * normal.z > kSteepCosine;
}

void setBit(std::uint64_t* row, int column) {
    row[column / kWordBits] |= std::uint64_t{1} << (column % kWordBits);
}

/// Compares a pixel with its right and its three lower neighbours in double, both ways.
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

/// Brings the comparisons of a row with itself and the next one into the image of steep points.
void collectSteep(const SteepBits& found, int rowIndex, BitImage& steep) {
    const int words = steep.wordsPerRow();
    std::uint64_t* row = steep.row(rowIndex);
    std::uint64_t* next = steep.row(rowIndex + 1);
    for (int word = 0; word < words; ++word) {
        row[word] |= found.here[word] | fromLeft(found.right, word);
        next[word] |= found.below[word] | fromLeft(found.belowRight, word) | fromRight(found.belowLeft, word, words);
    }
}

/// Marks every pixel of a row and of the next one that lies steeply below one of the other's pixels. A point's eight
/// comparisons are so made four at a time with the opposite four of its neighbours; in floats, with the few that floats
/// cannot decide repeated as they are defined. Only points with eight neighbours are looked at later, so comparisons
/// with absent ones need not be left out.
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

/// The pixels of a word of an interior row whose nine points around are all present.
std::uint64_t surrounded(const BitImage& present, int row, int word) {
    const int words = present.wordsPerRow();
    std::uint64_t all = ~std::uint64_t{0};
    for (int r = row - 1; r <= row + 1; ++r) {
        const std::uint64_t* bits = present.row(r);
        all &= bits[word] & fromLeft(bits, word) & fromRight(bits, word, words);
    }
    return all;
}

/// The first pass. Absent points have height +0, and adding that to a sum of absolute values changes no bit of it.
AcceptedHeights acceptSurfacePoints(const cv::Mat& cloud, const Direction& normal, float offset, Workspace& scratch) {
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

/// Takes the outliers out of an image of the accepted points.
void clearOutliers(const AcceptedHeights& heights, Workspace& scratch, BitImage& image) {
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

/// Sums of three bits at every position of a word.
struct BitSum {
    std::uint64_t ones;
    std::uint64_t twos;
};

BitSum sumOf(std::uint64_t a, std::uint64_t b, std::uint64_t c) {
    return {a ^ b ^ c, (a & b) | (c & (a ^ b))};
}

/// A word of the second pass. Seven of a pixel's neighbours are known: the three above as they were left, the right one
/// and the three below as they were accepted. With four of them a candidate stays, with three it stays when its left
/// neighbour did: a carry that runs along the candidates with three.
std::uint64_t keptCandidates(std::uint64_t candidates, const std::array<std::uint64_t, 7>& neighbours, bool leftKept) {
    const BitSum above = sumOf(neighbours[0], neighbours[1], neighbours[2]);
    const BitSum below = sumOf(neighbours[3], neighbours[4], neighbours[5]);
    const BitSum ones = sumOf(above.ones, below.ones, neighbours[6]);
    const BitSum twos = sumOf(above.twos, below.twos, ones.twos);
    const std::uint64_t four = candidates & twos.twos;
    const std::uint64_t three = candidates & ~twos.twos & twos.ones & ones.ones;
    const std::uint64_t starts = (four << 1 | (leftKept ? 1U : 0U)) & three;
    // Adding a run's start to the run turns its ones into zeros; runs that do not start stay.
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

/// Clears every pixel that is not kept, those without a point included: their zeros may have signs.
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
void filter(cv::Mat& cloud, const cv::Vec3f& normal, float offset, Workspace& scratch) {
    const AcceptedHeights heights = acceptSurfacePoints(cloud, normalized(normal), offset, scratch);
    // The steep points have done their work: their image takes the candidates.
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
        const Borrowed<Workspace> scratch;
        filter(cloud, normal, offset, *scratch);
    }
}

void filterSurfacePoints(cv::Mat& cloud, const cv::Vec3f& normal, float offset, cv::Mat& mask) {
    if (cloud.empty()) {
        mask.setTo(0);
        return;
    }
    const Borrowed<Workspace> scratch;
    filter(cloud, normal, offset, *scratch);
    writeMask(scratch->kept, mask);
}

}  // namespace quorvel::internal
