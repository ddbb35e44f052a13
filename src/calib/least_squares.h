// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>

#include <opencv2/core.hpp>

#include "calib/least_squares_loops.h"
#include "calib/plane_model.h"

namespace quorvel::internal {

/// Running sums of the normal equations of z = a x + b y + c, in float, in the order in which points are added.
/// Over large clouds float sums shift the fitted offset by some millimetres; the system's calibrations carry that.
class PlaneSums {
public:
    /// Adds one point, mm.
    void add(const cv::Vec3f& point);
    /// Adds the points of a row whose z is not 0, one after the other.
    /// \param points count times (x, y, z), mm
    void addRow(const float* points, int count);
    /// \return the number of points added, as a float counts them: never more than 2^24, to which adding 1 adds nothing
    float count() const;
    /// \return the plane of least squares; normal (0, 0, 1) and offset 0 when the equations are singular
    Plane solve() const;

private:
    std::array<float, kPlaneSums> sums_{};
    std::int64_t points_ = 0;
};

/// Fits a plane to all points of a cloud whose z is not 0, by least squares in z.
/// \param cloud CV_32FC3, mm
/// \param[out] normal,offset the plane; left as they were when there are too few points
/// \param minPoints fewest points wanted; rounded up to a whole number
/// \return 0, or -1 when there are too few points
int fitPlaneLeastSquares(const cv::Mat& cloud, cv::Vec3f& normal, float& offset, float minPoints);

}  // namespace quorvel::internal
