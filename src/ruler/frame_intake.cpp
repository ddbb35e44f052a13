// SPDX-License-Identifier: Apache-2.0
#include <iostream>
#include <string>

#include <quorvel/quorvel.h>

#include "common/exclusive.h"
#include "ruler/back_projection.h"
#include "ruler/frame_check.h"
#include "ruler/scaled_down.h"

using namespace quorvel::internal;

namespace {

/// The third image and those of an empty frame may have any form.
void keepCopy(const cv::Mat& image, cv::Mat& member) {
    if (image.dims == 2 && !image.empty()) {
        copyExclusive(image, member);
    } else {
        member = image.clone();
    }
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
        keepCopy(color, colorImage);
        keepCopy(depth, depthImage);
        if (aux != nullptr) {
            keepCopy(*aux, auxImage);
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
    scaleDown(colorImage, smallSize, colorSmall);
    scaleDown(depthImage, smallSize, depthSmall);
    backProject(depthSmall, {cxSmall, cySmall, invFxSmall, invFySmall}, pointCloudSmall);
    copyExclusive(pointCloudSmall, pointCloudSmallCopy);
    backProject(depthImage, {cx, cy, invFx, invFy}, pointCloud);
}
