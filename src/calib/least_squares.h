// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include <opencv2/core.hpp>

#include "calib/least_squares_loops.h"
#include "geometry/plane_model.h"

namespace quorvel::internal {

/// Running sums of the normal equations of z = a x + b y + c, in float, in the order in which points are added.
/// Over large clouds the rounding of the float sums shifts the fitted offset by some millimetres. Existing calibrations
/// contain this shift, so it is part of the promised results.
class PlaneSums {
public:
    /// Adds one point, mm.
    void add(const cv::Vec3f& point);
    /// Adds the points of a row whose z is not 0, one after the other.
    /// \param points count times (x, y, z), mm
    void addRow(const float* points, int count);
    /// \return the number of points added
    std::int64_t points() const { return points_; }
    /// \return the number of points added, counted in a float; the count stops at 2^24, because 2^24 + 1 is not a float
    float count() const;
    /// \return the plane of least squares; normal (0, 0, 1) and offset 0 when the equations are singular
    Plane solve() const;

private:
    std::array<float, kPlaneSums> sums_{};
    std::int64_t points_ = 0;
};

/// What a least-squares fit found.
struct LeastSquaresFit {
    std::int64_t points = 0;
    std::optional<Plane> plane;  ///< nothing when there are too few points
};

/// Fits a plane to all points of a cloud whose z is not 0, by least squares in z.
/// \param cloud CV_32FC3, mm
/// \param minPoints fewest points wanted; rounded up to a whole number
LeastSquaresFit fitPlaneLeastSquares(const cv::Mat& cloud, float minPoints);

}  // namespace quorvel::internal
