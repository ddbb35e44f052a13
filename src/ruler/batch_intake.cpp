// SPDX-License-Identifier: Apache-2.0
#include "ruler/batch_intake.h"

#include <cstddef>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include "image/back_projection.h"
#include "image/image_form.h"
#include "image/kept_images.h"
#include "image/scaled_down.h"
#include "ruler/batch_check.h"
#include "ruler/calibration.h"
#include "ruler/members.h"

namespace quorvel::internal {

namespace {

/// \return whether every frame was kept: the first empty one ends the batch
bool keepBatch(Quorvel& ruler, const std::vector<cv::Mat>& colorFrames, const std::vector<cv::Mat>& depthFrames) {
    // Copies, because both members may still refer to a frame that the host owns. Into kept storage: after a batch the
    // members refer to the host's last frame, and their own storage of before is kept.
    ruler.colorImage.release();
    ruler.depthImage.release();
    keepCopy(colorFrames.front(), ruler.colorImage);
    keepCopy(depthFrames.front(), ruler.depthImage);
    for (std::size_t i = 0; i < colorFrames.size(); ++i) {
        ruler.colorFrameBuffer.push_back(colorFrames[i]);
        ruler.depthFrameBuffer.push_back(depthFrames[i]);
        if (isEmptyFrame(colorFrames[i], depthFrames[i])) {
            return false;
        }
    }
    return true;
}

void deriveBatchImages(Quorvel& ruler) {
    const cv::Size smallSize(ruler.imageWidth / ruler.downScale, ruler.imageHeight / ruler.downScale);
    const cv::Size size(ruler.imageWidth, ruler.imageHeight);
    KeptImages& kept = KeptImages::instance();
    for (std::size_t i = 0; i < ruler.depthFrameBuffer.size(); ++i) {
        ruler.colorSmallBuffer.push_back(kept.take(smallSize, CV_8UC3));
        scaleDown(ruler.colorFrameBuffer[i], smallSize, ruler.colorSmallBuffer[i]);
        ruler.depthSmallBuffer.push_back(kept.take(smallSize, CV_16UC1));
        scaleDown(ruler.depthFrameBuffer[i], smallSize, ruler.depthSmallBuffer[i]);
        ruler.pointCloudSmallBuffer.push_back(kept.take(smallSize, CV_32FC3));
        backProject(ruler.depthSmallBuffer[i], {ruler.cxSmall, ruler.cySmall, ruler.invFxSmall, ruler.invFySmall},
                    ruler.pointCloudSmallBuffer[i]);
        ruler.pointCloudSmallCopyBuffer.push_back(kept.take(smallSize, CV_32FC3));
        copyExclusive(ruler.pointCloudSmallBuffer[i], ruler.pointCloudSmallCopyBuffer[i]);
        ruler.pointCloudBuffer.push_back(kept.take(size, CV_32FC3));
        backProject(ruler.depthFrameBuffer[i], {ruler.cx, ruler.cy, ruler.invFx, ruler.invFy},
                    ruler.pointCloudBuffer[i]);
    }
}

void makeFirstFrameCurrent(Quorvel& ruler) {
    // Deep copies into storage of their own: measuring the batch writes into the buffers, and the host may hold the old
    // images.
    copyExclusive(ruler.pointCloudBuffer.front(), ruler.pointCloud);
    copyExclusive(ruler.pointCloudSmallBuffer.front(), ruler.pointCloudSmall);
    copyExclusive(ruler.colorSmallBuffer.front(), ruler.colorSmall);
    copyExclusive(ruler.depthSmallBuffer.front(), ruler.depthSmall);
    copyExclusive(ruler.pointCloudSmallCopyBuffer.front(), ruler.pointCloudSmallCopy);
}

}  // namespace

bool takeBatch(Quorvel& ruler, const std::vector<cv::Mat>& colorFrames, const std::vector<cv::Mat>& depthFrames,
               std::ostream* lines) {
    if (colorFrames.size() != depthFrames.size()) {
        if (lines != nullptr) {
            *lines << "size not match" << std::endl;
        }
        return false;
    }
    const std::string problem = batchProblem(colorFrames, depthFrames,
                                             {ruler.imageWidth, ruler.imageHeight, ruler.downScale, ruler.offlineMode});
    if (!problem.empty()) {
        printInDebugMode(ruler, problem, lines);
        return false;
    }
    emptyBatch(ruler);
    if (!keepBatch(ruler, colorFrames, depthFrames)) {
        printInDebugMode(ruler, "Image data size is empty.", lines);
        return false;
    }
    deriveBatchImages(ruler);
    makeFirstFrameCurrent(ruler);
    if (ruler.productType == GROUND_TRACKING) {
        refitPlane(ruler, lines);
        ruler.calibStatus = true;
    }
    return true;
}

void emptyBatch(Quorvel& ruler) {
    // What the library has derived may serve the next batch; the frames and the spare buffers are the host's.
    for (std::vector<cv::Mat>* buffer : {&ruler.pointCloudBuffer, &ruler.pointCloudSmallBuffer, &ruler.colorSmallBuffer,
                                         &ruler.depthSmallBuffer, &ruler.pointCloudSmallCopyBuffer}) {
        for (cv::Mat& image : *buffer) {
            KeptImages::instance().giveBack(std::move(image));
        }
    }
    for (std::vector<cv::Mat>* buffer :
         {&ruler.colorFrameBuffer, &ruler.depthFrameBuffer, &ruler.pointCloudBuffer, &ruler.spareBuffer1,
          &ruler.pointCloudSmallBuffer, &ruler.colorSmallBuffer, &ruler.depthSmallBuffer, &ruler.spareBuffer2,
          &ruler.pointCloudSmallCopyBuffer, &ruler.spareBuffer3}) {
        buffer->clear();
    }
}

}  // namespace quorvel::internal

bool Quorvel::getCameraMultipleFrame(std::vector<cv::Mat> colorFrames, std::vector<cv::Mat> depthFrames) {
    return quorvel::internal::takeBatch(*this, colorFrames, depthFrames, &std::cout);
}

void Quorvel::ClearBuffer() {
    quorvel::internal::emptyBatch(*this);
}
