// SPDX-License-Identifier: Apache-2.0
#include "library/plain/batch.h"

#include <cmath>
#include <cstddef>
#include <iostream>

#include <opencv2/imgproc.hpp>

#include "library/plain/back_projection.h"
#include "library/plain/calibration.h"
#include "library/plain/height_cut.h"
#include "library/plain/object_chain.h"

namespace quorvel::test::plain {

namespace {

void clearBuffers(Quorvel& ruler) {
    ruler.colorFrameBuffer.clear();
    ruler.depthFrameBuffer.clear();
    ruler.pointCloudBuffer.clear();
    ruler.spareBuffer1.clear();
    ruler.pointCloudSmallBuffer.clear();
    ruler.colorSmallBuffer.clear();
    ruler.depthSmallBuffer.clear();
    ruler.spareBuffer2.clear();
    ruler.pointCloudSmallCopyBuffer.clear();
    ruler.spareBuffer3.clear();
}

void bufferFrame(Quorvel& ruler, const cv::Mat& color, const cv::Mat& depth) {
    const cv::Size small(ruler.imageWidth / ruler.downScale, ruler.imageHeight / ruler.downScale);
    cv::Mat colorSmall;
    cv::Mat depthSmall;
    cv::resize(color, colorSmall, small, 0, 0, cv::INTER_NEAREST);
    cv::resize(depth, depthSmall, small, 0, 0, cv::INTER_NEAREST);
    const cv::Mat cloudSmall =
        backProject(depthSmall, ruler.cxSmall, ruler.cySmall, ruler.invFxSmall, ruler.invFySmall);
    ruler.colorFrameBuffer.push_back(color);
    ruler.depthFrameBuffer.push_back(depth);
    ruler.colorSmallBuffer.push_back(colorSmall);
    ruler.depthSmallBuffer.push_back(depthSmall);
    ruler.pointCloudBuffer.push_back(backProject(depth, ruler.cx, ruler.cy, ruler.invFx, ruler.invFy));
    ruler.pointCloudSmallBuffer.push_back(cloudSmall);
    ruler.pointCloudSmallCopyBuffer.push_back(cloudSmall.clone());
}

bool agree(const MeasureResult& a, const MeasureResult& b, float lengthTolerance, float widthTolerance,
           float heightTolerance) {
    if (std::fabs(a.height - b.height) > heightTolerance) {
        return false;
    }
    if (std::fabs(a.width - b.width) > widthTolerance) {
        return false;
    }
    return !(std::fabs(a.length - b.length) > lengthTolerance);
}

/// \return whether every record is usable and every pair agrees
bool allAgree(const std::vector<MeasureResult>& records, float lengthTolerance, float widthTolerance,
              float heightTolerance) {
    for (std::size_t k = 0; k < records.size(); ++k) {
        if (!records[k].inView || records[k].corners.empty()) {
            return false;
        }
        for (std::size_t j = k + 1; j < records.size(); ++j) {
            if (!agree(records[k], records[j], lengthTolerance, widthTolerance, heightTolerance)) {
                return false;
            }
        }
    }
    return true;
}

MeasureResult meanOf(const std::vector<MeasureResult>& records) {
    float length = 0.0F;
    float width = 0.0F;
    float height = 0.0F;
    for (const MeasureResult& record : records) {
        length += record.length;
        width += record.width;
        height += record.height;
    }
    const auto count = static_cast<float>(records.size());
    MeasureResult mean = records.back();
    mean.length = length / count;
    mean.width = width / count;
    mean.height = height / count;
    return mean;
}

}  // namespace

void takeBatch(Quorvel& ruler, const std::vector<cv::Mat>& colors, const std::vector<cv::Mat>& depths) {
    clearBuffers(ruler);
    for (std::size_t i = 0; i < colors.size(); ++i) {
        bufferFrame(ruler, colors[i], depths[i]);
    }
    ruler.colorImage = colors[0].clone();
    ruler.depthImage = depths[0].clone();
    ruler.pointCloud = ruler.pointCloudBuffer[0].clone();
    ruler.pointCloudSmall = ruler.pointCloudSmallBuffer[0].clone();
    ruler.colorSmall = ruler.colorSmallBuffer[0].clone();
    ruler.depthSmall = ruler.depthSmallBuffer[0].clone();
    ruler.pointCloudSmallCopy = ruler.pointCloudSmallCopyBuffer[0].clone();
    if (ruler.productType == GROUND_TRACKING) {
        ransacCalibRef(ruler);
        ruler.calibStatus = true;
    }
}

int measureMultiple(Quorvel& ruler, float lengthTolerance, float widthTolerance, float heightTolerance) {
    ruler.result = MeasureResult{};
    std::vector<MeasureResult> records;
    for (std::size_t i = 0; i < ruler.depthSmallBuffer.size(); ++i) {
        if (ruler.productType != KIOSK && ruler.productType != GROUND_TRACKING) {
            continue;
        }
        if (ruler.productType == KIOSK && !ruler.calibStatus) {
            if (ruler.debugMode) {
                std::cout << "No calibration data." << std::endl;
            }
            return 1;
        }
        ChainFrame frame{ruler.depthSmallBuffer[i], ruler.pointCloudSmallCopyBuffer[i], ruler.pointCloudBuffer[i]};
        removeGround(frame.depthSmall, ruler.filterWeight, ruler.refPlaneOffset);
        if (ruler.productType == KIOSK) {
            chooseMinHeight(ruler);
        }
        MeasureResult record;
        if (measureObject(frame, ruler.minObjectHeight, ruler.minObjectPixels,
                          footprintInput(ruler, frame.depthSmall.size()), true, record) != 0) {
            clearBuffers(ruler);
            return 1;
        }
        records.push_back(record);
    }
    if (records.empty()) {
        std::cout << "ERROR !! result is empty." << std::endl;
        clearBuffers(ruler);
        return 1;
    }
    if (!allAgree(records, lengthTolerance, widthTolerance, heightTolerance)) {
        std::cout << "ERROR !! The result did not reach the threshold" << std::endl;
        clearBuffers(ruler);
        return 1;
    }
    ruler.result = meanOf(records);
    ruler.colorImage = ruler.colorFrameBuffer.back();
    ruler.depthImage = ruler.depthFrameBuffer.back();
    clearBuffers(ruler);
    return 0;
}

}  // namespace quorvel::test::plain
