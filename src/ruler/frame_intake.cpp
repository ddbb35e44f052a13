// SPDX-License-Identifier: Apache-2.0
#include <iostream>
#include <string>

#include <opencv2/imgproc.hpp>

#include <quorvel/quorvel.h>

#include "ruler/back_projection.h"
#include "ruler/frame_check.h"

using namespace quorvel::internal;

namespace {

cv::Mat scaledDown(const cv::Mat& image, const cv::Size& size) {
    cv::Mat small;
    // Nearest neighbour keeps depths unblended.
    cv::resize(image, small, size, 0.0, 0.0, cv::INTER_NEAREST);
    return small;
}

}  // namespace

bool Quorvel::getCameraFrame(cv::Mat color, cv::Mat depth) {
    return takeFrame(color, depth, nullptr);
}

bool Quorvel::getCameraFrame(cv::Mat color, cv::Mat depth, cv::Mat aux) {
    return takeFrame(color, depth, &aux);
}

bool Quorvel::takeFrame(const cv::Mat& color, const cv::Mat& depth, const cv::Mat* aux) {
    const cv::Mat& newColor = offlineMode ? colorImage : color;
    const cv::Mat& newDepth = offlineMode ? depthImage : depth;
    const bool empty = newColor.rows == 0 || newDepth.rows == 0;
    const std::string problem =
        empty ? std::string() : frameProblem(newColor, newDepth, imageWidth, imageHeight, downScale);
    if (!problem.empty()) {
        if (debugMode) {
            std::cout << problem << std::endl;
        }
        return false;
    }
    if (!offlineMode) {
        colorImage = color.clone();
        depthImage = depth.clone();
        if (aux != nullptr) {
            auxImage = aux->clone();
        }
    }
    if (empty) {
        if (debugMode) {
            std::cout << "Image data size is empty." << std::endl;
        }
        return false;
    }
    deriveImages();
    if (productType == GROUND_TRACKING) {
        ransacCalibRef();
        calibStatus = true;
    }
    return true;
}

void Quorvel::deriveImages() {
    const cv::Size smallSize(imageWidth / downScale, imageHeight / downScale);
    colorSmall = scaledDown(colorImage, smallSize);
    depthSmall = scaledDown(depthImage, smallSize);
    pointCloudSmall = backProject(depthSmall, {cxSmall, cySmall, invFxSmall, invFySmall});
    pointCloudSmallCopy = pointCloudSmall.clone();
    pointCloud = backProject(depthImage, {cx, cy, invFx, invFy});
}
