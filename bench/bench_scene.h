// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

#include "sim/scene.h"

namespace quorvel::bench {

/// A noisy parcel of 400 x 300 x 200 mm seen from 1 m. At 640 x 480 the focal length is 600 pixels and the noise 1 mm;
/// both are scaled to the picture's width, the noise inversely.
sim::Scene parcelScene(const cv::Size& size);

/// One instant of a scene.
struct Frame {
    cv::Mat color;  ///< CV_8UC3, a plain grey: no stage looks at its values
    cv::Mat depth;  ///< CV_16UC1, mm
};

/// \param index another index, other noise
Frame occupiedFrame(const sim::Scene& scene, unsigned index);

/// The same camera and surface without any object.
Frame emptyFrame(const sim::Scene& scene);

/// The parcel's frames, rendered once a size.
struct ParcelFrames {
    Frame empty;
    Frame occupied;
};
const ParcelFrames& parcelFrames(const cv::Size& size);

/// Frames of the parcel that differ in their noise; rendered once.
std::vector<Frame> parcelBatch(const cv::Size& size, std::size_t length);

/// A ruler for the scene's camera with the areas set; nothing pushed. Its files go into the working directory.
Quorvel makeRuler(const sim::Camera& camera, ProductType mode);

/// As makeRuler, with the plane that a KIOSK calibration of the parcel's empty surface finds. Holds no frame; the plane
/// is fitted once a picture size.
Quorvel calibratedRuler(const sim::Camera& camera, ProductType mode);

/// \return "640x480"
std::string sizeName(const cv::Size& size);

/// Pixels of a full and of a small image.
struct PixelCounts {
    double full = 0.0;
    double small = 0.0;
};
PixelCounts pixelCounts(const cv::Size& size);

}  // namespace quorvel::bench
