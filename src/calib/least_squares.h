// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <opencv2/core.hpp>

#include "calib/plane_model.h"

namespace quorvel::internal {

/// Running sums of the normal equations of z = a x + b y + c, in float, in the order in which points are added.
/// Over large clouds float sums shift the fitted offset by some millimetres; the system's calibrations carry that.
class PlaneSums {
public:
    /// Adds one point, mm.
    void add(const cv::Vec3f& point);
    /// \return the number of points added
    float count() const { return n_; }
    /// \return the plane of least squares; normal (0, 0, 1) and offset 0 when the equations are singular
    Plane solve() const;

private:
    float n_ = 0.0F;
    float x_ = 0.0F;
    float y_ = 0.0F;
    float z_ = 0.0F;
    float xx_ = 0.0F;
    float xy_ = 0.0F;
    float yy_ = 0.0F;
    float xz_ = 0.0F;
    float yz_ = 0.0F;
};

/// Fits a plane to all points of a cloud whose z is not 0, by least squares in z.
/// \param cloud CV_32FC3, mm
/// \param[out] normal,offset the plane; left as they were when there are too few points
/// \param minPoints fewest points wanted; rounded up to a whole number
/// \return 0, or -1 when there are too few points
int fitPlaneLeastSquares(const cv::Mat& cloud, cv::Vec3f& normal, float& offset, float minPoints);

}  // namespace quorvel::internal
