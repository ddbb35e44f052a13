// SPDX-License-Identifier: Apache-2.0
#include <cstddef>
#include <iostream>
#include <string>

#include <quorvel/quorvel.h>

#include "common/exclusive.h"
#include "multi/batch_check.h"
#include "ruler/back_projection.h"
#include "ruler/scaled_down.h"

using namespace quorvel::internal;

bool Quorvel::getCameraMultipleFrame(std::vector<cv::Mat> colorFrames, std::vector<cv::Mat> depthFrames) {
    if (colorFrames.size() != depthFrames.size()) {
        std::cout << "size not match" << std::endl;
        return false;
    }
    const std::string problem =
        batchProblem(colorFrames, depthFrames, {imageWidth, imageHeight, downScale, offlineMode});
    if (!problem.empty()) {
        if (debugMode) {
            std::cout << problem << std::endl;
        }
        return false;
    }
    ClearBuffer();
    if (!keepBatch(colorFrames, depthFrames)) {
        return false;
    }
    deriveBatchImages();
    makeFirstFrameCurrent();
    if (productType == GROUND_TRACKING) {
        ransacCalibRef();
        calibStatus = true;
    }
    return true;
}

bool Quorvel::keepBatch(const std::vector<cv::Mat>& colorFrames, const std::vector<cv::Mat>& depthFrames) {
    // Clones, since both members may still refer to a frame that the host owns.
    colorImage = colorFrames.front().clone();
    depthImage = depthFrames.front().clone();
    for (std::size_t i = 0; i < colorFrames.size(); ++i) {
        colorFrameBuffer.push_back(colorFrames[i]);
        depthFrameBuffer.push_back(depthFrames[i]);
        if (isEmptyFrame(colorFrames[i], depthFrames[i])) {
            if (debugMode) {
                std::cout << "Image data size is empty." << std::endl;
            }
            return false;
        }
    }
    return true;
}

void Quorvel::deriveBatchImages() {
    const cv::Size smallSize(imageWidth / downScale, imageHeight / downScale);
    for (std::size_t i = 0; i < depthFrameBuffer.size(); ++i) {
        colorSmallBuffer.emplace_back();
        scaleDown(colorFrameBuffer[i], smallSize, colorSmallBuffer[i]);
        depthSmallBuffer.emplace_back();
        scaleDown(depthFrameBuffer[i], smallSize, depthSmallBuffer[i]);
        pointCloudSmallBuffer.push_back(backProject(depthSmallBuffer[i], {cxSmall, cySmall, invFxSmall, invFySmall}));
        pointCloudSmallCopyBuffer.push_back(pointCloudSmallBuffer[i].clone());
        pointCloudBuffer.push_back(backProject(depthFrameBuffer[i], {cx, cy, invFx, invFy}));
    }
}

void Quorvel::makeFirstFrameCurrent() {
    // Deep copies into storage of their own: measuring the batch writes into the buffers, and the host may hold the old
    // images.
    copyExclusive(pointCloudBuffer.front(), pointCloud);
    copyExclusive(pointCloudSmallBuffer.front(), pointCloudSmall);
    copyExclusive(colorSmallBuffer.front(), colorSmall);
    copyExclusive(depthSmallBuffer.front(), depthSmall);
    copyExclusive(pointCloudSmallCopyBuffer.front(), pointCloudSmallCopy);
}

void Quorvel::ClearBuffer() {
    for (std::vector<cv::Mat>* buffer :
         {&colorFrameBuffer, &depthFrameBuffer, &pointCloudBuffer, &spareBuffer1, &pointCloudSmallBuffer,
          &colorSmallBuffer, &depthSmallBuffer, &spareBuffer2, &pointCloudSmallCopyBuffer, &spareBuffer3}) {
        buffer->clear();
    }
}
