// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

#include "support/random.h"

namespace quorvel::test {

/// A depth picture of a flat surface with blocks on it, for the tests of the whole chain. Blocks are given by the
/// rectangle of pixels their top covers; their sides are not seen.
struct DepthScene {
    struct Block {
        cv::Rect pixels;
        float height = 0.0F;  ///< above the surface, along the optical axis, mm
    };

    cv::Size size{64, 48};
    float focal = 60.0F;       ///< pixels; the principal point is the picture's middle
    float distance = 1000.0F;  ///< of the surface on the optical axis, mm
    float slopeX = 0.0F;       ///< depth gained per pixel to the right, mm
    float slopeY = 0.0F;       ///< and downwards
    int noise = 0;             ///< up to so many mm nearer or farther
    int holes = 0;             ///< share of pixels without depth, percent
    std::vector<Block> blocks;

    /// \return CV_16UC1, mm
    cv::Mat depth(Draws& draws) const;
    /// \return CV_8UC3, a plain grey
    cv::Mat color() const { return {size, CV_8UC3, cv::Scalar::all(128)}; }
    /// \return a ruler for this camera, in its normal start
    Quorvel ruler() const {
        return {focal,
                focal,
                static_cast<float>(size.width) * 0.5F,
                static_cast<float>(size.height) * 0.5F,
                size.width,
                size.height,
                false,
                ""};
    }
};

/// One block in the middle of a surface at 1000 mm, without noise.
DepthScene blockScene(float height);

/// Any surface, blocks, noise and holes.
DepthScene drawScene(Draws& draws);

/// A tilted surface with noise and holes, large enough for the fit on every frame, which needs more than 4000
/// small-image pixels.
DepthScene largeScene(Draws& draws);
/// \return the scene with one more block, in the middle of the picture
DepthScene withBlock(DepthScene scene, Draws& draws);

/// Gives a ruler a plane as a calibration would: normal, distance, status and smallest region.
void setPlane(Quorvel& ruler, const cv::Vec3f& normal, float offset, int minPixels);

/// Brings a ruler into any state of a host's setters but the mode: plane, regions, weight, side band.
void drawState(Draws& draws, const DepthScene& scene, Quorvel& ruler);

/// A copy that shares no pixels with the original.
Quorvel detachedCopy(const Quorvel& ruler);

}  // namespace quorvel::test
