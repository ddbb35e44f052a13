// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <opencv2/core.hpp>

namespace quorvel::kit {

/// One instant of the depth camera.
struct FramePair {
    /// CV_8UC3, the size of `depth`.
    cv::Mat color;
    /// CV_16UC1, mm, 0 = no measurement.
    cv::Mat depth;
};

/// \param path PNG, TIFF, JPEG or another still picture; grey, alpha and 16-bit pictures are converted
/// \return CV_8UC3
/// \throws InputError when the file is missing, damaged or no picture
cv::Mat readColor(const std::string& path);

/// \param path one-channel PNG or TIFF of 16-bit or floating-point values
/// \param millimetresPerUnit millimetres that one stored unit stands for
/// \return CV_16UC1, mm
/// \throws InputError when the file is missing, damaged, of another kind (8-bit, colour), or holds depths nearer
///         than any depth camera sees, as a file in metres does without its scale
cv::Mat readDepth(const std::string& path, double millimetresPerUnit);

/// Reads depth that is certainly in millimetres, as the library writes it; small depths are not refused.
/// \param path one-channel PNG or TIFF of 16-bit values
/// \return CV_16UC1, mm
/// \throws InputError when the file is missing, damaged or of another kind
cv::Mat readMillimetres(const std::string& path);

/// \return "W x H", pixels
std::string sizeText(cv::Size size);

/// Reads both images of an instant.
/// \param colorPath empty when there is no colour image; a grey picture made from the depth stands in
/// \throws InputError as the two readers do, and when the sizes differ
FramePair readFrame(const std::string& colorPath, const std::string& depthPath, double millimetresPerUnit);

/// \throws InputError when the frame's size is not the camera's
/// \param depthPath file of the frame, for the message
void requireSize(const FramePair& frame, cv::Size camera, const std::string& depthPath);

}  // namespace quorvel::kit
