// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

namespace quorvel::sim {

/// Pinhole camera without lens distortion. The ray through pixel (u, v) is ((u - cx) / fx, (v - cy) / fy, 1) in camera
/// coordinates (x right, y down, z along the optical axis); pixel centres lie at integer coordinates.
struct Camera {
    double fx = 600.0;  ///< focal length along x, pixels, > 0
    double fy = 600.0;  ///< focal length along y, pixels, > 0
    double cx = 320.0;  ///< principal point x, pixels; may lie outside the picture
    double cy = 240.0;  ///< principal point y, pixels; may lie outside the picture
    int width = 640;    ///< picture width, pixels, 1 ... kMaxImageSide
    int height = 480;   ///< picture height, pixels, 1 ... kMaxImageSide
};

/// The flat reference surface. Its unit normal, pointing away from the camera, is
/// n = (cos a sin b, -sin a, cos a cos b) with a = tiltXDeg and b = tiltYDeg: the direction (0, 0, 1) turned about the
/// camera's x axis by a, then about its y axis by b.
///
/// Plane coordinates: the origin is the point where the optical axis meets the plane; x runs along
/// (cos b, 0, -sin b), to the right in the picture, y along (sin a sin b, cos a, sin a cos b), downwards in the
/// picture.
struct Surface {
    double distance = 1000.0;  ///< perpendicular distance from the camera centre, mm, > 0
    double tiltXDeg = 0.0;     ///< rotation about the camera's x axis, degrees, -80 ... 80
    double tiltYDeg = 0.0;     ///< rotation about the camera's y axis, degrees, -80 ... 80
    double halfExtent = 0.0;   ///< the surface is the square |x|, |y| <= halfExtent, mm; 0 = unbounded
};

/// A cuboid standing on the surface.
struct Box {
    double x = 0.0;                             ///< middle of the footprint in plane coordinates, mm
    double y = 0.0;                             ///< middle of the footprint in plane coordinates, mm
    double yawDeg = 0.0;                        ///< turn of the length axis from plane x towards plane y, degrees
    double length = 100.0;                      ///< side along the length axis, mm, > 0
    double width = 100.0;                       ///< side across the length axis, mm, > 0
    double height = 100.0;                      ///< mm, > 0 and less than the surface's distance
    cv::Vec3b color = cv::Vec3b(98, 146, 186);  ///< blue, green, red; cardboard brown
};

/// An upright cylinder standing on the surface.
struct Cylinder {
    double x = 0.0;                             ///< centre of the footprint in plane coordinates, mm
    double y = 0.0;                             ///< centre of the footprint in plane coordinates, mm
    double diameter = 100.0;                    ///< mm, > 0
    double height = 100.0;                      ///< mm, > 0 and less than the surface's distance
    cv::Vec3b color = cv::Vec3b(150, 120, 70);  ///< blue, green, red
};

/// What the sensor does to the exact depth; everything is off by default. The effects are applied in the order of the
/// members. All but the holes are drawn anew for each frame.
struct SensorEffects {
    /// Share (0 ... 1) of the pixels at a depth edge whose depth becomes a mixture of both sides: with the
    /// farthest-off depth `other` among the four neighbours, z becomes z + w (other - z), w uniform in [0, 1).
    double flyingPixels = 0.0;
    /// A pixel lies at a depth edge when a measured 4-neighbour differs by more than this, mm, >= 0.
    double edgeThreshold = 20.0;
    /// Standard deviation of the axial noise at z = 1000 mm, mm; at depth z it is axialNoise (z / 1000)^2.
    double axialNoise = 0.0;
    /// Standard deviation of one offset added to all depths of a frame, mm.
    double jitter = 0.0;
    /// Distance of neighbouring depth values at z = 1000 mm, mm. The values are those of equal disparity steps, as
    /// stereo and structured light have them: z = 10^6 / (k quantisationStep) for integer k, so that the distance of
    /// neighbouring values grows with z^2.
    double quantisationStep = 0.0;
    /// Probability (0 ... 1) that a pixel has no measurement.
    double dropout = 0.0;
    /// Number of round holes without measurement, 0 ... 10000; their places follow from the scene's seed alone.
    int holeCount = 0;
    /// Radius of the holes, pixels, >= 0.
    double holeRadius = 0.0;
};

/// Everything that is rendered. Objects may overlap; the one nearest to the camera along a ray is seen.
struct Scene {
    std::string name;                 ///< free text
    Camera camera;                    ///< where the picture is taken from
    Surface surface;                  ///< what the objects stand on
    std::vector<Box> boxes;           ///< in any order
    std::vector<Cylinder> cylinders;  ///< in any order
    SensorEffects effects;            ///< off by default
    std::uint32_t seed = 1;           ///< of everything random
};

constexpr int kMaxImageSide = 16384;  ///< pixels; keeps pixel counts well within an int
constexpr double kMaxTiltDeg = 80.0;  ///< beyond it the surface is seen edge-on
constexpr double kMaxLength = 1.0e6;  ///< mm; bounds every length and coordinate of a scene
constexpr int kMaxHoleCount = 10000;  ///< holes of one picture

/// First reason why a scene cannot be rendered, as "member: what is wrong", for example
/// "boxes[0].length: expected a number above 0, found -3"; empty for a good scene.
std::string sceneProblem(const Scene& scene);

}  // namespace quorvel::sim
