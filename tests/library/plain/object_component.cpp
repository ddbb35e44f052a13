// SPDX-License-Identifier: Apache-2.0
#include "library/plain/object_component.h"

#include <cmath>
#include <iostream>
#include <limits>

#include <opencv2/imgproc.hpp>

namespace quorvel::test::plain {

namespace {

float meanDistance(const cv::Mat& region, const cv::Point& center) {
    float sum = 0.0F;
    int count = 0;
    for (int row = 0; row < region.rows; ++row) {
        for (int column = 0; column < region.cols; ++column) {
            if (region.at<uchar>(row, column) > 254) {
                const double dx = column - center.x;
                const double dy = row - center.y;
                sum += static_cast<float>(std::sqrt(dx * dx + dy * dy));
                ++count;
            }
        }
    }
    return sum / static_cast<float>(count);
}

}  // namespace

int selectObjectComponent(const cv::Mat& depth, int minPixels, cv::Mat& mask) {
    cv::Mat coarse;
    depth.convertTo(coarse, CV_8U, 1.0, 0.0);
    cv::Mat labels;
    const int count = cv::connectedComponents(coarse, labels, 4, CV_16U, cv::CCL_WU);
    const cv::Point center(depth.cols / 2, depth.rows / 2);
    float bestScore = std::numeric_limits<float>::max();
    int bestLabel = 0;
    for (int label = 1; label < count; ++label) {
        cv::Mat region = cv::Mat::zeros(labels.size(), CV_8U);
        region.setTo(255, labels == label);
        if (cv::countNonZero(region) <= minPixels) {
            continue;
        }
        const float score = meanDistance(region, center);
        if (bestScore > score) {
            bestScore = score;
            bestLabel = label;
        }
    }
    if (bestLabel == 0) {
        std::cout << "No object found." << std::endl;
        return 1;
    }
    mask.setTo(0, labels != bestLabel);
    const cv::Mat square = cv::getStructuringElement(cv::MORPH_RECT, cv::Size(3, 3));
    const cv::Point anchor(-1, -1);
    cv::erode(mask, mask, square, anchor, 1, cv::BORDER_CONSTANT, cv::Scalar(0));
    cv::dilate(mask, mask, square, anchor, 1, cv::BORDER_CONSTANT, cv::Scalar(0));
    return 0;
}

}  // namespace quorvel::test::plain
