// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <vector>

#include <opencv2/core.hpp>

#include "geometry/camera.h"
#include "geometry/plane_model.h"

namespace quorvel::internal {

/// The three sizes of an object, or one bound for each of them, mm.
struct Sizes {
    float length = 0.0F;  ///< longer side of the footprint
    float width = 0.0F;   ///< shorter side of the footprint
    float height = 0.0F;  ///< above the plane
};

/// Corners of a footprint rectangle in plane coordinates, mm.
using FootprintCorners = std::array<cv::Point2f, 4>;

/// Projects the ground and top corners of a box into the picture.
/// \param footprint corners on the plane, mm
/// \param plane the reference plane, mm
/// \param topDistance signed distance of the top from the plane, mm; negative towards the camera
/// \return eight positions: the ground corners, then the top corners in the same order, pixels
std::vector<cv::Point2f> boxCorners(const FootprintCorners& footprint, const PlaneBasis& basis, const Plane& plane,
                                    float topDistance, const Projection& camera);

/// \return the 0.99 height quantile corrected for the camera's distance t: h - k (t - h), with k = 0.0055 for
///         1300 < t < 1400, 0.0065 for 1400 < t < 1500 and 0.007 elsewhere (1300, 1400 and 1500 included); mm
float correctedHeight(float height, float offset);

/// The two sides of a footprint, mm.
struct Sides {
    float a = 0.0F;  ///< corner 0 to corner 1
    float b = 0.0F;  ///< corner 1 to corner 2
};

/// Lengths of the footprint's sides: float differences, length in double, rounded to float.
Sides footprintSides(const FootprintCorners& footprint);

/// Corrects the sides by the box's orientation in the picture: 1 % less when both sides run more than about 30 degrees
/// from the vertical; otherwise the side nearer the vertical grows by 250 / N when fewer than 20000 points N were
/// measured.
/// \param corners the box's eight image positions, pixels
/// \param points number of points measured
Sides correctedSides(Sides sides, const std::vector<cv::Point2f>& corners, std::size_t points);

}  // namespace quorvel::internal
