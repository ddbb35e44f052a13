// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <optional>
#include <string>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// The reference plane: a point p lies on it when normal . p = offset.
///
/// The normal is a unit vector that points away from the camera (positive z), so the offset is the camera's
/// perpendicular distance in mm and points between camera and plane have a negative signed distance. An all-zero
/// normal means that there is no plane.
struct Plane {
    cv::Vec3f normal{0.0F, 0.0F, 0.0F};
    float offset = 0.0F;
};

/// Signed distance of a point from the plane, mm; negative on the camera's side. Float, left to right.
inline float signedDistance(const cv::Vec3f& point, const cv::Vec3f& normal, float offset) {
    return normal[0] * point[0] + normal[1] * point[1] + normal[2] * point[2] - offset;
}

/// \return whether a plane is available: the normal is not (0, 0, 0)
bool hasPlane(const cv::Vec3f& normal);

/// Says why a plane is not usable for a measurement. A zero normal, which means that there is no plane, is not usable.
/// \return the reason in words, empty for a usable plane: four finite numbers, a normal of length 1 within a hundredth,
///         a positive offset, and a normal that is not along the optical axis or is exactly (0, 0, 1). For any other
///         normal along the axis planeBasis() has no directions for the footprint.
std::string planeProblem(const Plane& plane);

/// Turns the solution of z = a x + b y + c into a plane.
/// \param a,b slopes
/// \param c z at the origin, mm
Plane planeFromSlopes(float a, float b, float c);

/// Encodes a component of a unit normal as a "normal colour" channel: n * 127.5 + 127.5, in [0, 255].
/// The product is made in double and rounded to float before the addition.
/// \param component in [-1, 1]
float normalColour(float component);

/// An open band of +-64 around a normal colour, one interval a channel: how orientations are compared. 64 is a
/// quarter of the colour range, about 30 degrees for a plane that faces the camera.
class NormalBand {
public:
    /// \param center the normal colour in the middle of the band
    explicit NormalBand(const cv::Vec3f& center);

    /// \return whether every channel lies strictly inside its interval; false for NaN
    bool contains(const cv::Vec3f& colour) const {
        return colour[0] > low_[0] && colour[0] < high_[0] && colour[1] > low_[1] && colour[1] < high_[1] &&
               colour[2] > low_[2] && colour[2] < high_[2];
    }

    /// The ends of the three intervals.
    const cv::Vec3f& low() const { return low_; }
    const cv::Vec3f& high() const { return high_; }

private:
    cv::Vec3f low_;
    cv::Vec3f high_;
};

/// The smallest object region: the pixel area that a square of 50 mm x 50 mm covers at the plane's distance in the
/// small image, (50 / t * fxSmall)^2 truncated to int.
/// \param offset distance t of the plane, mm
/// \param fxSmall focal length for the small image, pixels
/// \return the area in pixels; INT_MIN when it is not a number that int holds (t = 0)
int objectPixelMinimum(float offset, float fxSmall);

/// Two directions that span a plane, in which footprints are measured.
struct PlaneBasis {
    cv::Vec3f e1;
    cv::Vec3f e2;
};

/// \param normal unit normal; (0, 0, 1) gives e1 = (1, 0, 0), any other e1 = (ny, -nx, 0) / |(nx, ny)|. Any
///        other normal with nx = ny = 0 is not allowed: its e1 would be NaN.
/// \return e1 and e2 = normal x e1
PlaneBasis planeBasis(const cv::Vec3f& normal);

/// Solves A x = b by Gaussian elimination with partial pivoting, in float.
///
/// The system is singular when the largest entry of a column is below max|Aij| * 1e-12. An all-zero matrix has the
/// threshold 0; it is not found singular, and its solution is NaN.
/// \param a 3 x 3 matrix, row-major
/// \param b right-hand side
/// \return the solution; nothing when the system is singular
std::optional<std::array<float, 3>> solve3x3(std::array<float, 9> a, std::array<float, 3> b);

}  // namespace quorvel::internal
