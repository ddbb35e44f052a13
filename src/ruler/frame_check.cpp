// SPDX-License-Identifier: Apache-2.0
#include "ruler/frame_check.h"

#include <sstream>

#include "common/frame_size.h"

namespace quorvel::internal {

namespace {

std::string describe(const cv::Mat& image) {
    std::ostringstream text;
    for (int axis = image.dims - 1; axis >= 0; --axis) {
        text << image.size[axis] << (axis > 0 ? " x " : " ");
    }
    text << cv::typeToString(image.type()) << (image.data == nullptr ? " without pixels" : "");
    return text.str();
}

}  // namespace

bool hasForm(const cv::Mat& image, int rows, int columns, int type) {
    return !image.empty() && image.dims == 2 && image.rows == rows && image.cols == columns && image.type() == type;
}

std::string frameProblem(const cv::Mat& color, const cv::Mat& depth, int width, int height, int downScale) {
    std::ostringstream text;
    if (width <= 0 || height <= 0 || downScale <= 0) {
        text << "Frame refused: the ruler is not configured, its frame size is " << width << " x " << height
             << " and its down-scale factor " << downScale << ".";
    } else if (!isFrameSize(width, height)) {
        text << "Frame refused: a frame of " << width << " x " << height << " is too large, at most "
             << kLargestFrameSide << " pixels a side and " << kMostFramePixels << " in all are measured.";
    } else if (width / downScale == 0 || height / downScale == 0) {
        text << "Frame refused: a frame of " << width << " x " << height << " is too small for the down-scale factor "
             << downScale << ".";
    } else if (!hasForm(color, height, width, CV_8UC3) || !hasForm(depth, height, width, CV_16UC1)) {
        text << "Frame refused: expected colour and depth of " << width << " x " << height
             << " in CV_8UC3 and CV_16UC1, got colour " << describe(color) << " and depth " << describe(depth) << ".";
    }
    return text.str();
}

}  // namespace quorvel::internal
