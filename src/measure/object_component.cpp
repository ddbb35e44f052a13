// SPDX-License-Identifier: Apache-2.0
#include "measure/object_component.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "image/bit_image.h"
#include "image/scratch.h"
#include "measure/object_component_loops.h"
#include "measure/object_window.h"

namespace quorvel::internal {

namespace {

/// Candidates side by side in one row.
struct Run {
    int row = 0;
    int first = 0;
    int end = 0;               ///< column behind the last
    std::size_t region = 0;    ///< an earlier run of the region, or this run; at the end the region's first run
    int pixels = 0;            ///< of the region, at its first run
    float distanceSum = 0.0F;  ///< of the region, at its first run
};

struct ComponentWorkspace {
    std::vector<std::uint64_t> bits;
    std::vector<float> distances;
    std::vector<Run> runs;
};

std::size_t regionOf(std::vector<Run>& runs, std::size_t run) {
    while (runs[run].region != run) {
        runs[run].region = runs[runs[run].region].region;
        run = runs[run].region;
    }
    return run;
}

void join(std::vector<Run>& runs, std::size_t a, std::size_t b) {
    const std::size_t first = regionOf(runs, a);
    const std::size_t other = regionOf(runs, b);
    runs[std::max(first, other)].region = std::min(first, other);
}

/// Joins the runs of a row with those above that share a column.
/// \param above,row,end positions of the first run above, of the row's first and behind its last
void joinRows(std::vector<Run>& runs, std::size_t above, std::size_t row, std::size_t end) {
    const std::size_t aboveEnd = row;
    while (above < aboveEnd && row < end) {
        if (runs[above].first < runs[row].end && runs[row].first < runs[above].end) {
            join(runs, above, row);
        }
        if (runs[above].end < runs[row].end) {
            ++above;
        } else {
            ++row;
        }
    }
}

/// Finds the runs in row-major order and joins those that touch. A region is named by its first run, which holds its
/// first pixel: regions ordered by name are in the order in which a row-major scan meets them.
void findRegions(const cv::Mat& depth, ComponentWorkspace& scratch) {
    std::vector<Run>& runs = scratch.runs;
    runs.clear();
    std::size_t above = 0;
    for (int row = 0; row < depth.rows; ++row) {
        scratch.bits.assign(static_cast<std::size_t>(wordsFor(depth.cols)), 0U);
        objectComponentLoops().findDepths(depth.ptr<ushort>(row), depth.cols, scratch.bits.data());
        const std::size_t rowStart = runs.size();
        for (int first = nextBit(scratch.bits.data(), 0, depth.cols, true); first < depth.cols;) {
            const int end = nextBit(scratch.bits.data(), first, depth.cols, false);
            runs.push_back({row, first, end, runs.size(), 0, 0.0F});
            first = nextBit(scratch.bits.data(), end, depth.cols, true);
        }
        joinRows(runs, above, rowStart, runs.size());
        above = rowStart;
    }
    for (std::size_t i = 0; i < runs.size(); ++i) {
        runs[i].region = regionOf(runs, i);
        runs[runs[i].region].pixels += runs[i].end - runs[i].first;
    }
}

/// Adds up the distances from the middle for every large enough region: in float, pixel by pixel in row-major order.
void measureRegions(const cv::Size& image, int minPixels, ComponentWorkspace& scratch) {
    const cv::Point middle(image.width / 2, image.height / 2);
    std::vector<Run>& runs = scratch.runs;
    scratch.distances.resize(static_cast<std::size_t>(wordsFor(image.width)) * kWordBits);
    int measuredRow = -1;
    for (const Run& run : runs) {
        Run& region = runs[run.region];
        if (region.pixels <= minPixels) {
            continue;
        }
        if (run.row != measuredRow) {
            objectComponentLoops().measureDistances(middle.x, run.row - middle.y, image.width,
                                                    scratch.distances.data());
            measuredRow = run.row;
        }
        const float* distances = scratch.distances.data();
        for (int column = run.first; column < run.end; ++column) {
            region.distanceSum += distances[column];
        }
    }
}

/// \return the large enough region nearest the middle, the first one on a tie
std::optional<std::size_t> nearestRegion(const cv::Size& image, int minPixels, ComponentWorkspace& scratch) {
    const std::vector<Run>& runs = scratch.runs;
    measureRegions(image, minPixels, scratch);
    float bestScore = std::numeric_limits<float>::max();
    std::optional<std::size_t> best;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        if (runs[i].region != i || runs[i].pixels <= minPixels) {
            continue;
        }
        const float score = runs[i].distanceSum / static_cast<float>(runs[i].pixels);
        if (bestScore > score) {
            bestScore = score;
            best = i;
        }
    }
    return best;
}

void clear(uchar* row, int first, int end) {
    std::memset(row + first, 0, static_cast<std::size_t>(end - first));
}

/// Clears the mask outside a region.
void keepRegion(const std::vector<Run>& runs, std::size_t region, cv::Mat& mask) {
    std::size_t next = 0;
    for (int row = 0; row < mask.rows; ++row) {
        auto* marks = mask.ptr<uchar>(row);
        int done = 0;
        for (; next < runs.size() && runs[next].row == row; ++next) {
            if (runs[next].region == region) {
                clear(marks, done, runs[next].first);
                done = runs[next].end;
            }
        }
        clear(marks, done, mask.cols);
    }
}

void openMask(cv::Mat mask) {
    const cv::Point centre(-1, -1);
    const cv::Scalar outside(0);
    // Isolated: when the mask is a window of a larger image, the pixels around the window are not read.
    constexpr int kBorder = cv::BORDER_CONSTANT | cv::BORDER_ISOLATED;
    cv::erode(mask, mask, cv::Mat(), centre, 1, kBorder, outside);
    cv::dilate(mask, mask, cv::Mat(), centre, 1, kBorder, outside);
}

/// With at most so many runs of candidates there are fewer regions than 16-bit labels.
constexpr int kMostLabelledRuns = 65000;

struct LabelledRegion {
    int pixels = 0;
    float distanceSum = 0.0F;
};

/// The pixel count and the sum of distances from the middle for every label, in one pass. Each label's pixels are added
/// in row-major order, so its float sum has the same bits as in a scan of that label alone.
std::vector<LabelledRegion> describeLabels(const cv::Mat& labels, int labelCount) {
    std::vector<LabelledRegion> regions(static_cast<std::size_t>(labelCount));
    const cv::Point middle(labels.cols / 2, labels.rows / 2);
    for (int row = 0; row < labels.rows; ++row) {
        const auto* labelRow = labels.ptr<ushort>(row);
        const double dy = row - middle.y;
        for (int column = 0; column < labels.cols; ++column) {
            const std::size_t label = labelRow[column];
            // With more regions than 16-bit labels the labels wrap around. Labels at or above the count are ignored.
            if (label == 0 || label >= regions.size()) {
                continue;
            }
            const double dx = column - middle.x;
            ++regions[label].pixels;
            regions[label].distanceSum += static_cast<float>(std::sqrt(dx * dx + dy * dy));
        }
    }
    return regions;
}

/// \return the label of the large enough region nearest the middle, 0 when there is none
std::size_t nearestLabel(const std::vector<LabelledRegion>& regions, int minPixels) {
    float bestScore = std::numeric_limits<float>::max();
    std::size_t best = 0;
    for (std::size_t label = 1; label < regions.size(); ++label) {
        const LabelledRegion& region = regions[label];
        if (region.pixels <= minPixels) {
            continue;
        }
        const float score = region.distanceSum / static_cast<float>(region.pixels);
        if (bestScore > score) {
            bestScore = score;
            best = label;
        }
    }
    return best;
}

/// The choice of selectObjectComponent() for images that may have more regions than there are 16-bit labels. The labels
/// then wrap around, and all pixels with the same label are taken as one region. Only extreme images come here, such as
/// a checkerboard with more than 65000 single candidates.
/// \param depth CV_16UC1; the candidates are its non-zero pixels
/// \param minPixels a region needs more pixels than this
/// \param[in,out] mask CV_8UC1 of the same size, reduced to the region
/// \return pixels of the region; 0 when none is large enough
int keepNearestWrappedRegion(const cv::Mat& depth, int minPixels, cv::Mat& mask) {
    cv::Mat candidates;
    depth.convertTo(candidates, CV_8U);
    cv::Mat labels;
    const int labelCount = cv::connectedComponents(candidates, labels, 4, CV_16U, cv::CCL_WU);
    const std::vector<LabelledRegion> regions = describeLabels(labels, labelCount);
    const std::size_t best = nearestLabel(regions, minPixels);
    if (best == 0) {
        return 0;
    }
    mask.setTo(0, labels != static_cast<double>(best));
    return regions[best].pixels;
}

/// Counts the candidates and their regions.
ComponentChoice describeRegions(const std::vector<Run>& runs, bool withSizes) {
    ComponentChoice choice;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        if (runs[i].region != i) {
            continue;
        }
        choice.candidates += runs[i].pixels;
        ++choice.regions;
        choice.largest = std::max(choice.largest, runs[i].pixels);
        if (withSizes) {
            choice.sizes.push_back(runs[i].pixels);
        }
    }
    return choice;
}

/// Keeps the nearest region in the mask, if there is one.
ComponentChoice keepNearestRegion(const cv::Mat& depth, int minPixels, bool withSizes, cv::Mat& mask) {
    const Borrowed<ComponentWorkspace> borrowed;
    ComponentWorkspace& scratch = *borrowed;
    findRegions(depth, scratch);
    ComponentChoice choice = describeRegions(scratch.runs, withSizes);
    if (scratch.runs.size() > kMostLabelledRuns) {
        const int pixels = keepNearestWrappedRegion(depth, minPixels, mask);
        choice.chosen = pixels > 0 ? std::optional<Region>({pixels, {}}) : std::nullopt;
        return choice;
    }
    const std::optional<std::size_t> best = nearestRegion(depth.size(), minPixels, scratch);
    if (best) {
        keepRegion(scratch.runs, *best, mask);
        choice.chosen = Region{scratch.runs[*best].pixels, {}};
    }
    return choice;
}

}  // namespace

ComponentChoice selectObjectComponent(const cv::Mat& depth, int minPixels, cv::Mat& mask, bool withSizes) {
    if (depth.empty()) {
        return {};
    }
    ComponentChoice choice = keepNearestRegion(depth, minPixels, withSizes, mask);
    if (choice.chosen) {
        choice.chosen->bounds = maskBounds(mask);
        // The mask is 0 outside the region, so the opening can change pixels only in the region's bounding rectangle.
        openMask(mask(withMargin(choice.chosen->bounds, mask.size())));
    }
    return choice;
}

}  // namespace quorvel::internal
