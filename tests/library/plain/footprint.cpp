// SPDX-License-Identifier: Apache-2.0
#include "library/plain/footprint.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include <opencv2/imgproc.hpp>

#include "library/plain/detection_area.h"
#include "library/plain/object_points.h"

namespace quorvel::test::plain {

namespace {

cv::Point2f project(float x, float y, float z, const FootprintInput& input) {
    return {x * input.fx / z + input.cx, y * input.fy / z + input.cy};
}

std::vector<cv::Point2f> imageCorners(const std::array<cv::Point2f, 4>& rectangle, const Basis& basis, float largest,
                                      const FootprintInput& input) {
    std::vector<cv::Point2f> corners(8);
    const cv::Vec3f& n = input.normal;
    for (std::size_t k = 0; k < 4; ++k) {
        const float u = rectangle[k].x;
        const float v = rectangle[k].y;
        std::array<float, 3> ground{};
        std::array<float, 3> top{};
        for (int i = 0; i < 3; ++i) {
            const auto at = static_cast<std::size_t>(i);
            ground[at] = (u * basis.e1[i] + v * basis.e2[i]) + input.offset * n[i];
            top[at] = ground[at] + largest * n[i];
        }
        corners[k] = project(ground[0], ground[1], ground[2], input);
        corners[k + 4] = project(top[0], top[1], top[2], input);
    }
    return corners;
}

float heightOf(float h, float t) {
    float k = 0.007F;
    if (t > 1300.0F && t < 1400.0F) {
        k = 0.0055F;
    }
    if (t > 1400.0F && t < 1500.0F) {
        k = 0.0065F;
    }
    return h - k * (t - h);
}

float distance(const cv::Point2f& a, const cv::Point2f& b) {
    const float dx = a.x - b.x;
    const float dy = a.y - b.y;
    const double x = dx;
    const double y = dy;
    return static_cast<float>(std::sqrt(x * x + y * y));
}

float verticalShare(const cv::Point2f& from, const cv::Point2f& to) {
    const float dx = from.x - to.x;
    const float dy = from.y - to.y;
    const double x = dx;
    const double y = dy;
    return std::abs(static_cast<float>(y / std::sqrt(x * x + y * y)));
}

void correctSides(float& sideA, float& sideB, const std::vector<cv::Point2f>& corners, std::size_t count) {
    const float ay = verticalShare(corners[4], corners[5]);
    const float by = verticalShare(corners[5], corners[6]);
    if (ay <= 0.87F && by <= 0.87F) {
        sideA *= 0.99F;
        sideB *= 0.99F;
    } else if (count < 20000) {
        const float factor = 5000.0F / static_cast<float>(count) * 0.05F + 1.0F;
        if (ay > by) {
            sideA *= factor;
        } else {
            sideB *= factor;
        }
    }
}

bool allInView(const std::vector<cv::Point2f>& corners, float left, float right, float bottom) {
    return std::all_of(corners.begin(), corners.end(), [&](const cv::Point2f& corner) {
        return corner.x >= left && corner.x <= right && corner.y >= 0.0F && corner.y <= bottom;
    });
}

MeasureResult measure(const cv::Mat& cloud, const FootprintInput& input, bool general) {
    const Basis basis = planeBasis(input.normal);
    const Points points = collectObjectPoints(cloud, input.normal, input.offset, basis);
    if (points.footprint.size() < 4) {
        return {};
    }
    std::array<cv::Point2f, 4> rectangle;
    try {
        cv::minAreaRect(points.footprint).points(rectangle.data());
    } catch (const cv::Exception&) {
        return {};  // there is no rectangle around points so far out
    }
    MeasureResult result;
    result.corners = imageCorners(rectangle, basis, points.largest, input);

    const std::size_t count = points.heights.size();
    const float h = heightQuantile(points.heights);
    result.height = heightOf(h, input.offset);

    float sideA = distance(rectangle[0], rectangle[1]);
    float sideB = distance(rectangle[1], rectangle[2]);
    correctSides(sideA, sideB, result.corners, count);
    if (sideB > sideA) {
        std::swap(sideA, sideB);
    }
    result.length = sideA;
    result.width = sideB;

    const cv::Size image(input.downScale * input.small.width, input.downScale * input.small.height);
    float left = 0.0F;
    auto right = static_cast<float>(image.width);
    if (general && input.cameraTypeSet) {
        const float margin = static_cast<float>(input.cameraType) * input.fx / (input.offset - h) * 1.3F;
        result.sideMargin = margin;
        left = static_cast<float>(truncatedToInt(margin));
        right = static_cast<float>(truncatedToInt(static_cast<float>(image.width) - margin));
    }
    const auto& c = result.corners;
    if (!topFaceMeetsRegion({c[4], c[5], c[6], c[7]}, input.effectiveRegion, image)) {
        return {};
    }
    result.onTarget = general;
    result.inView = allInView(result.corners, left, right, static_cast<float>(image.height));
    if (!result.inView) {
        result.length = 0.0F;
        result.width = 0.0F;
        result.height = 0.0F;
    }
    return result;
}

}  // namespace

MeasureResult measureFootprint(const cv::Mat& cloud, const FootprintInput& input) {
    return measure(cloud, input, true);
}

MeasureResult measureFootprintWithoutMargin(const cv::Mat& cloud, const FootprintInput& input) {
    return measure(cloud, input, false);
}

}  // namespace quorvel::test::plain
