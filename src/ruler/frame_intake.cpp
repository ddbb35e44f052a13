// SPDX-License-Identifier: Apache-2.0
#include "ruler/frame_intake.h"

#include <iostream>
#include <string>

#include "image/back_projection.h"
#include "image/frame_check.h"
#include "image/image_form.h"
#include "image/kept_images.h"
#include "image/scaled_down.h"
#include "ruler/calibration.h"
#include "ruler/members.h"

namespace quorvel::internal {

namespace {

void deriveImages(Quorvel& ruler) {
    const cv::Size smallSize(ruler.imageWidth / ruler.downScale, ruler.imageHeight / ruler.downScale);
    scaleDown(ruler.colorImage, smallSize, ruler.colorSmall);
    scaleDown(ruler.depthImage, smallSize, ruler.depthSmall);
    backProject(ruler.depthSmall, {ruler.cxSmall, ruler.cySmall, ruler.invFxSmall, ruler.invFySmall},
                ruler.pointCloudSmall);
    copyExclusive(ruler.pointCloudSmall, ruler.pointCloudSmallCopy);
    backProject(ruler.depthImage, {ruler.cx, ruler.cy, ruler.invFx, ruler.invFy}, ruler.pointCloud);
}

}  // namespace

bool takeFrame(Quorvel& ruler, const cv::Mat& color, const cv::Mat& depth, const cv::Mat* aux, std::ostream* lines) {
    const cv::Mat& newColor = ruler.offlineMode ? ruler.colorImage : color;
    const cv::Mat& newDepth = ruler.offlineMode ? ruler.depthImage : depth;
    const bool empty = isEmptyFrame(newColor, newDepth);
    const std::string problem =
        empty ? std::string() : frameProblem(newColor, newDepth, ruler.imageWidth, ruler.imageHeight, ruler.downScale);
    if (!problem.empty()) {
        printInDebugMode(ruler, problem, lines);
        return false;
    }
    if (!ruler.offlineMode) {
        keepCopy(color, ruler.colorImage);
        keepCopy(depth, ruler.depthImage);
        if (aux != nullptr) {
            keepCopy(*aux, ruler.auxImage);
        }
    }
    if (empty) {
        printInDebugMode(ruler, "Image data size is empty.", lines);
        return false;
    }
    deriveImages(ruler);
    if (ruler.productType == GROUND_TRACKING) {
        refitPlane(ruler, lines);
        ruler.calibStatus = true;
    }
    return true;
}

}  // namespace quorvel::internal

bool Quorvel::getCameraFrame(cv::Mat color, cv::Mat depth) {
    return quorvel::internal::takeFrame(*this, color, depth, nullptr, &std::cout);
}

bool Quorvel::getCameraFrame(cv::Mat color, cv::Mat depth, cv::Mat aux) {
    return quorvel::internal::takeFrame(*this, color, depth, &aux, &std::cout);
}
