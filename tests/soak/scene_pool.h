// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

#include <opencv2/core.hpp>

#include "sim/scene.h"
#include "support/random.h"

namespace quorvel::soak {

/// One instant: colour CV_8UC3 and depth CV_16UC1, mm.
struct Frame {
    cv::Mat color;
    cv::Mat depth;
};

/// A camera above one surface on which something else lies every time. The scenes are rendered once; every frame of
/// them gets noise of its own.
class ScenePool {
public:
    /// \param size of the pictures, pixels; the focal length is 15/16 of the width
    /// \param scenes how many to render
    ScenePool(const cv::Size& size, int scenes);

    const sim::Camera& camera() const { return camera_; }

    std::size_t scenes() const { return scenes_.size(); }

    /// \return one of the scenes with up to 2 mm of noise; its pixels are overwritten by the next call
    const Frame& scene(std::size_t index, test::Draws& draws);

    /// \return any of the scenes
    const Frame& draw(test::Draws& draws);

    /// \return the surface with nothing on it, under the same noise
    const Frame& drawEmpty(test::Draws& draws);

private:
    struct Rendered {
        Frame frame;
        cv::Mat present;  ///< CV_8UC1, 255 where there is depth
    };

    const Frame& withNoise(const Rendered& rendered, test::Draws& draws);

    sim::Camera camera_;
    Rendered empty_;
    std::vector<Rendered> scenes_;
    cv::Mat noise_;  ///< CV_16UC1, larger than a frame: each frame takes another part of it
    Frame current_;
};

}  // namespace quorvel::soak
