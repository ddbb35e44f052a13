// SPDX-License-Identifier: Apache-2.0
#include "measure/height_cut.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "geometry/plane_model.h"
#include "geometry/vec3.h"
#include "image/bit_image.h"
#include "measure/height_cut_loops.h"

namespace quorvel::internal {

namespace {

bool isHigh(const cv::Vec3f& point, const cv::Vec3f& normal, float offset, float minHeight) {
    return isValidPoint(point) && !(signedDistance(point, normal, offset) > -minHeight);
}

}  // namespace

std::optional<int> cutAboveReferencePlane(cv::Mat& depth, const cv::Mat& cloud, const cv::Vec3f& normal, float offset,
                                          float minHeight, cv::Mat& mask) {
    if (!hasPlane(normal)) {
        return std::nullopt;
    }
    int marked = 0;
    const auto words = static_cast<std::size_t>(wordsFor(cloud.cols));
    std::vector<std::uint64_t> bits(2 * words);
    std::uint64_t* const high = bits.data();
    std::uint64_t* const doubt = high + words;
    for (int row = 0; row < cloud.rows; ++row) {
        std::fill(bits.begin(), bits.end(), 0U);
        const auto* points = cloud.ptr<cv::Vec3f>(row);
        heightCutLoops().findHigh(cloud.ptr<float>(row), cloud.cols, {normal[0], normal[1], normal[2]}, offset,
                                  minHeight, high, doubt);
        auto* depths = depth.ptr<ushort>(row);
        auto* marks = mask.ptr<uchar>(row);
        for (int column = 0; column < cloud.cols; ++column) {
            const bool inDoubt = (doubt[column / kWordBits] >> (column % kWordBits) & 1U) != 0;
            const bool candidate = inDoubt ? isHigh(points[column], normal, offset, minHeight)
                                           : (high[column / kWordBits] >> (column % kWordBits) & 1U) != 0;
            marked += candidate ? 1 : 0;
            marks[column] = candidate ? 255 : marks[column];
            depths[column] = candidate ? depths[column] : ushort{0};
        }
    }
    return marked;
}

HeightSurvey surveyHeights(const cv::Mat& cloudSmall, const Plane& plane, float groundDepth) {
    HeightSurvey survey;
    float highest = std::numeric_limits<float>::lowest();
    for (int row = 0; row < cloudSmall.rows; ++row) {
        const auto* points = cloudSmall.ptr<cv::Vec3f>(row);
        for (int column = 0; column < cloudSmall.cols; ++column) {
            if (!isPresent(points[column])) {
                continue;
            }
            ++survey.measured;
            survey.removedAsGround += points[column][2] > groundDepth ? 1 : 0;
            highest = std::max(highest, -signedDistance(points[column], plane.normal, plane.offset));
        }
    }
    survey.highest = survey.measured > 0 ? static_cast<double>(highest) : 0.0;
    return survey;
}

}  // namespace quorvel::internal
