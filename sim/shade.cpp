// SPDX-License-Identifier: Apache-2.0
#include "sim/shade.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "sim/grain.h"
#include "sim/material.h"
#include "sim/shadow.h"

namespace quorvel::sim {

namespace {

constexpr double kAmbient = 0.52;  ///< share of the light that comes from all around
constexpr double kLamp = 0.62;     ///< the lamp's light on a face turned fully towards it
constexpr double kVignette = 0.2;  ///< darkening of the picture's corners

/// Outward unit normal of a face in plane coordinates (x, y, up).
cv::Vec3d faceNormal(const Solid& solid, Face face, const cv::Vec3d& local) {
    double x = 0.0;
    double y = 0.0;
    switch (face) {
        case Face::SideMinusX:
            x = -1.0;
            break;
        case Face::SidePlusX:
            x = 1.0;
            break;
        case Face::SideMinusY:
            y = -1.0;
            break;
        case Face::SidePlusY:
            y = 1.0;
            break;
        case Face::Round:
            x = local[0] / solid.halfLength;
            y = local[1] / solid.halfLength;
            break;
        default:
            return {0.0, 0.0, 1.0};
    }
    return {solid.yaw.cos * x - solid.yaw.sin * y, solid.yaw.sin * x + solid.yaw.cos * y, 0.0};
}

cv::Vec3d shadeSurface(const View& view, const cv::Vec3d& place) {
    const double lamp = kLamp * lampDirection()[2] * lampShare(view, place, -1);
    return boardColor(place[0], place[1]) * (kAmbient * ambientShare(view, place[0], place[1]) + lamp);
}

cv::Vec3d shadeSolid(const View& view, const Hit& hit, const cv::Vec3d& point, const cv::Vec3d& place) {
    const Solid& solid = view.solids[static_cast<std::size_t>(hit.solid)];
    const cv::Vec3d local = solid.pose.pointToLocal(point);
    const double facing = std::max(0.0, faceNormal(solid, hit.face, local).dot(lampDirection()));
    // Less light from all around reaches the foot of a side.
    const double low = hit.face == Face::Top ? 1.0 : 0.7 + 0.3 * smoothStep(0.0, 0.6 * solid.height, local[2]);
    const double light = kAmbient * low + kLamp * facing * lampShare(view, place, hit.solid);
    const cv::Vec3d color = solid.shape == Shape::Box
                                ? boxColor(solid, hit.face, local, static_cast<std::uint32_t>(hit.solid))
                                : cylinderColor(solid, hit.face, local);
    return color * light;
}

/// Light that leaves the hit towards the camera; blue, green, red, 1 = white.
cv::Vec3d shade(const View& view, const Hit& hit, double u, double v) {
    if (hit.face == Face::Nothing) {
        return {0.17, 0.16, 0.15};
    }
    const cv::Vec3d point = hit.z * rayThrough(view.camera, u, v);
    const cv::Vec3d place = view.surface.pointToLocal(point);
    return hit.face == Face::Surface ? shadeSurface(view, place) : shadeSolid(view, hit, point, place);
}

bool sameFace(const Hit& a, const Hit& b) {
    return a.solid == b.solid && a.face == b.face;
}

/// Whether a pixel's face ends within its 4-neighbourhood.
bool atFaceEdge(const std::vector<Hit>& hits, const Camera& camera, int row, int col) {
    const auto width = static_cast<std::ptrdiff_t>(camera.width);
    const auto pixel = hits.begin() + row * width + col;
    return (col > 0 && !sameFace(*pixel, *(pixel - 1))) ||
           (col + 1 < camera.width && !sameFace(*pixel, *(pixel + 1))) ||
           (row > 0 && !sameFace(*pixel, *(pixel - width))) ||
           (row + 1 < camera.height && !sameFace(*pixel, *(pixel + width)));
}

/// Mean of four places within the pixel.
cv::Vec3d shadeSmoothly(const View& view, int row, int col) {
    constexpr std::array<double, 2> kOffsets{-0.25, 0.25};
    cv::Vec3d sum;
    for (const double dv : kOffsets) {
        for (const double du : kOffsets) {
            sum += shade(view, castRay(view, col + du, row + dv), col + du, row + dv);
        }
    }
    return sum * 0.25;
}

/// Light that the lens leaves of a pixel, 1 in the picture's middle and 1 - kVignette in its corners.
double vignette(const Camera& camera, int row, int col) {
    const double dx = (col + 0.5) / camera.width - 0.5;
    const double dy = (row + 0.5) / camera.height - 0.5;
    return 1.0 - kVignette * 2.0 * (dx * dx + dy * dy);
}

cv::Vec3b toBytes(const cv::Vec3d& light) {
    cv::Vec3b bytes;
    for (int channel = 0; channel < 3; ++channel) {
        bytes[channel] = cv::saturate_cast<std::uint8_t>(light[channel] * 255.0);
    }
    return bytes;
}

}  // namespace

cv::Mat shadeImage(const View& view, const std::vector<Hit>& hits) {
    cv::Mat image(view.camera.height, view.camera.width, CV_8UC3);
    auto hit = hits.begin();
    for (int row = 0; row < image.rows; ++row) {
        for (int col = 0; col < image.cols; ++col, ++hit) {
            const cv::Vec3d light =
                atFaceEdge(hits, view.camera, row, col) ? shadeSmoothly(view, row, col) : shade(view, *hit, col, row);
            image.at<cv::Vec3b>(row, col) = toBytes(light * vignette(view.camera, row, col));
        }
    }
    return image;
}

}  // namespace quorvel::sim
