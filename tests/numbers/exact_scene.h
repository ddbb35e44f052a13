// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

#include "support/random.h"

namespace quorvel::test {

/// One picture pair; both images have the scene's size.
struct ExactFrame {
    cv::Mat color;  ///< CV_8UC3
    cv::Mat depth;  ///< CV_16UC1, mm, 0 = no measurement
};

/// A surface seen from above with plates floating at their height above it, computed from integers with + - * / and
/// square roots alone: every IEEE 754 machine rounds these in the same way, but C libraries differ.
class ExactScene {
public:
    /// \param seed makes the size, camera, surface and objects; small frames, every 25th 640 x 480
    explicit ExactScene(std::uint32_t seed);

    int width() const { return width_; }
    int height() const { return height_; }
    float focalX() const { return focalX_; }
    float focalY() const { return focalY_; }
    float centreX() const { return centreX_; }
    float centreY() const { return centreY_; }

    /// The bare surface. Another index is another noise.
    ExactFrame empty(std::uint32_t index) const;
    /// The surface with its objects.
    ExactFrame occupied(std::uint32_t index) const;

private:
    struct Plate {
        double x = 0.0;       ///< middle, along the surface's first direction, mm
        double y = 0.0;       ///< middle, along the surface's second direction, mm
        double cosine = 1.0;  ///< of its turn
        double sine = 0.0;    ///< of its turn
        double length = 0.0;  ///< half the side, mm
        double width = 0.0;   ///< half the side, mm
        double height = 0.0;  ///< above the surface, mm
        bool round = false;   ///< a disc of half the length as radius
    };

    Plate makePlate(Draws& draw, int reach) const;
    double depthAt(int column, int row, const std::vector<Plate>& plates) const;
    ExactFrame render(std::uint32_t index, const std::vector<Plate>& plates) const;

    std::uint32_t seed_;
    int width_ = 0;
    int height_ = 0;
    float focalX_ = 0.0F;
    float focalY_ = 0.0F;
    float centreX_ = 0.0F;
    float centreY_ = 0.0F;
    double distance_ = 0.0;  ///< of the surface, mm
    cv::Vec3d normal_;
    cv::Vec3d first_;   ///< unit vector in the surface
    cv::Vec3d second_;  ///< unit vector in the surface, across the first
    std::vector<Plate> plates_;
    int noise_ = 0;       ///< mm in either direction
    int lostPerMil_ = 0;  ///< pixels without measurement
};

}  // namespace quorvel::test
