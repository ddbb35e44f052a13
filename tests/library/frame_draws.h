// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

#include <opencv2/core.hpp>

#include "library/depth_scene.h"
#include "library/measure_draws.h"

namespace quorvel::test {

/// \return CV_8UC3 of random colours
inline cv::Mat drawColor(Draws& draws, const cv::Size& size) {
    cv::Mat color = drawMatrix(draws, size, CV_8UC3);
    for (int row = 0; row < size.height; ++row) {
        for (int i = 0; i < 3 * size.width; ++i) {
            color.ptr<uchar>(row)[i] = static_cast<uchar>(draws.below(256));
        }
    }
    return color;
}

/// \return CV_16UC1 of random depths, a fifth of them 0
inline cv::Mat drawDepth(Draws& draws, const cv::Size& size) {
    cv::Mat depth = drawMatrix(draws, size, CV_16UC1);
    for (int row = 0; row < size.height; ++row) {
        for (int column = 0; column < size.width; ++column) {
            depth.ptr<ushort>(row)[column] = static_cast<ushort>(draws.chance(20) ? 0 : draws.below(65536));
        }
    }
    return depth;
}

/// \return a ruler of any small camera and any factor between its images, which fits them
inline Quorvel drawRuler(Draws& draws) {
    const cv::Size size{draws.between(4, 70), draws.between(4, 50)};
    const cv::Vec2f focal{draws.real(20, 90), draws.real(20, 90)};
    const cv::Vec2f centre{draws.real(0, 60), draws.real(0, 40)};
    Quorvel ruler(focal[0], focal[1], centre[0], centre[1], size.width, size.height, false, "");
    ruler.downScale = draws.between(1, 4);
    return ruler;
}

/// Frames grabbed in quick succession.
struct Batch {
    std::vector<cv::Mat> colors;
    std::vector<cv::Mat> depths;

    /// \return a batch of the same pixels in storage of its own
    Batch clone() const {
        Batch copy;
        for (std::size_t i = 0; i < colors.size(); ++i) {
            copy.colors.push_back(colors[i].clone());
            copy.depths.push_back(depths[i].clone());
        }
        return copy;
    }
};

/// \return random frames, windows of larger matrices among them
inline Batch drawBatch(Draws& draws, const cv::Size& size, int frames) {
    Batch batch;
    for (int i = 0; i < frames; ++i) {
        batch.colors.push_back(drawColor(draws, size));
        batch.depths.push_back(drawDepth(draws, size));
    }
    return batch;
}

/// \return pictures of one scene, which differ in their noise and in their grey
inline Batch sceneBatch(const DepthScene& scene, Draws& draws, int frames) {
    Batch batch;
    for (int i = 0; i < frames; ++i) {
        batch.colors.emplace_back(scene.size, CV_8UC3, cv::Scalar::all(100 + i));
        batch.depths.push_back(scene.depth(draws));
    }
    return batch;
}

}  // namespace quorvel::test
