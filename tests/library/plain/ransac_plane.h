// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

namespace quorvel::test::plain {

/// What one fit by random sampling did, for the tests that look inside it.
struct RansacTrace {
    int candidates = 0;  ///< pixels that passed the orientation gate
    int firstList = 0;   ///< pixels of the sample list before the first iteration
    int iterations = 0;  ///< samplings that were completed
    int draws = 0;       ///< random numbers taken
};

/// Fit of the plane of one orientation by random sampling; the sample list is a vector from which drawn entries are
/// erased.
/// \return 0, or 1 with the outputs untouched
int ransacFitPlane(const cv::Mat& cloud, const cv::Mat& normalMap, const cv::Vec3f& bin, cv::Vec3f& normal, float& t,
                   RansacTrace* trace = nullptr);

}  // namespace quorvel::test::plain
