// SPDX-License-Identifier: Apache-2.0
#include "measure/object_window.h"

#include <cstddef>
#include <cstring>

#include <opencv2/imgproc.hpp>

#include "image/scratch.h"

namespace quorvel::internal {

namespace {

constexpr uchar kInside = 255;

bool isZero(const uchar* values, int count) {
    return values[0] == 0 && std::memcmp(values, values + 1, static_cast<std::size_t>(count - 1)) == 0;
}

void clearPoints(cv::Mat& cloud, int row, int first, int end) {
    constexpr std::size_t kFloats = 3;
    std::memset(cloud.ptr<float>(row) + kFloats * static_cast<std::size_t>(first), 0,
                kFloats * static_cast<std::size_t>(end - first) * sizeof(float));
}

/// Clears the points of one row of the cloud that lie outside the runs of 255 in a row of the mask. A pixel of the mask
/// covers `scale` pixels of the row.
void clearOutsideRuns(const uchar* marks, const cv::Range& columns, int scale, cv::Mat& cloud, int row) {
    int done = 0;
    for (int column = columns.start; column < columns.end; ++column) {
        if (marks[column] != kInside) {
            continue;
        }
        clearPoints(cloud, row, done, column * scale);
        while (column < columns.end && marks[column] == kInside) {
            ++column;
        }
        done = column * scale;
    }
    clearPoints(cloud, row, done, cloud.cols);
}

/// The factor between the two sizes when it is a power of two and the same in both directions, otherwise 0. For such a
/// factor the area interpolation computes exactly and just repeats each pixel of the mask.
int exactScale(const cv::Size& small, const cv::Size& full) {
    for (int scale = 1; scale <= full.width && scale <= full.height; scale *= 2) {
        if (full.width % scale == 0 && full.height % scale == 0 && full / scale == small) {
            return scale;
        }
    }
    return 0;
}

/// Clears the cloud with a mask of which each pixel covers `scale` x `scale` points.
cv::Rect isolate(const cv::Mat& mask, int scale, cv::Mat& cloud) {
    const cv::Rect bounds = maskBounds(mask);
    for (int row = 0; row < cloud.rows; ++row) {
        const int maskRow = row / scale;
        if (maskRow < bounds.y || maskRow >= bounds.y + bounds.height) {
            clearPoints(cloud, row, 0, cloud.cols);
        } else {
            clearOutsideRuns(mask.ptr(maskRow), {bounds.x, bounds.x + bounds.width}, scale, cloud, row);
        }
    }
    return withMargin({bounds.x * scale, bounds.y * scale, bounds.width * scale, bounds.height * scale}, cloud.size());
}

struct FullMaskScratch {
    cv::Mat mask;
};

}  // namespace

cv::Rect maskBounds(const cv::Mat& mask) {
    cv::Range rows(0, 0);
    cv::Range columns(mask.cols, 0);
    for (int row = 0; row < mask.rows; ++row) {
        const uchar* marks = mask.ptr(row);
        if (isZero(marks, mask.cols)) {
            continue;
        }
        rows = cv::Range(rows.empty() ? row : rows.start, row + 1);
        while (columns.start > 0 && !isZero(marks, columns.start)) {
            --columns.start;
        }
        while (columns.end < mask.cols && !isZero(marks + columns.end, mask.cols - columns.end)) {
            ++columns.end;
        }
    }
    return rows.empty() ? cv::Rect() : cv::Rect(columns.start, rows.start, columns.size(), rows.size());
}

cv::Rect withMargin(const cv::Rect& rectangle, const cv::Size& image) {
    return cv::Rect(rectangle.x - 1, rectangle.y - 1, rectangle.width + 2, rectangle.height + 2) &
           cv::Rect(cv::Point(0, 0), image);
}

cv::Rect isolateObject(const cv::Mat& mask, cv::Mat& cloud) {
    const int scale = exactScale(mask.size(), cloud.size());
    if (scale != 0) {
        return isolate(mask, scale, cloud);
    }
    const Borrowed<FullMaskScratch> scratch;
    cv::Mat& full = scratch->mask;
    cv::resize(mask, full, cloud.size(), 0.0, 0.0, cv::INTER_AREA);
    return isolate(full, 1, cloud);
}

}  // namespace quorvel::internal
