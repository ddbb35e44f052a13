// SPDX-License-Identifier: Apache-2.0
#include "image/frame_check.h"

#include <string>

#include "image/image_form.h"

namespace quorvel::internal {

namespace {

/// \return "640 x 480"; without a stream, because the host's locale may group the digits of large numbers
std::string sizeText(int width, int height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

std::string describe(const cv::Mat& image) {
    std::string text;
    for (int axis = image.dims - 1; axis >= 0; --axis) {
        text += std::to_string(image.size[axis]) + (axis > 0 ? " x " : " ");
    }
    return text + cv::typeToString(image.type()) + (image.data == nullptr ? " without pixels" : "");
}

}  // namespace

std::string frameProblem(const cv::Mat& color, const cv::Mat& depth, int width, int height, int downScale) {
    if (width <= 0 || height <= 0 || downScale <= 0) {
        return "Frame refused: the ruler is not configured, its frame size is " + sizeText(width, height) +
               " and its down-scale factor " + std::to_string(downScale) + ".";
    }
    if (!isFrameSize(width, height)) {
        return "Frame refused: a frame of " + sizeText(width, height) + " is too large, at most " +
               std::to_string(kLargestFrameSide) + " pixels a side and " + std::to_string(kMostFramePixels) +
               " in all are measured.";
    }
    if (width / downScale == 0 || height / downScale == 0) {
        return "Frame refused: a frame of " + sizeText(width, height) + " is too small for the down-scale factor " +
               std::to_string(downScale) + ".";
    }
    if (!hasForm(color, {width, height}, CV_8UC3) || !hasForm(depth, {width, height}, CV_16UC1)) {
        return "Frame refused: expected colour and depth of " + sizeText(width, height) +
               " in CV_8UC3 and CV_16UC1, got colour " + describe(color) + " and depth " + describe(depth) + ".";
    }
    return {};
}

}  // namespace quorvel::internal
