// SPDX-License-Identifier: Apache-2.0
#include "measure/height_survey.h"

#include <algorithm>
#include <limits>

#include "geometry/vec3.h"

namespace quorvel::internal {

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
