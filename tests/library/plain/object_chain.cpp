// SPDX-License-Identifier: Apache-2.0
#include "library/plain/object_chain.h"

#include <cmath>
#include <iostream>

#include <opencv2/imgproc.hpp>

#include "library/plain/height_cut.h"
#include "library/plain/object_component.h"
#include "library/plain/surface_filter.h"

namespace quorvel::test::plain {

namespace {

void lowerHeight(Quorvel& ruler) {
    const float t = ruler.refPlaneOffset;
    if (t <= 550.0F) {
        ruler.result.height -= 1.0F;
    } else if (t > 550.0F && t <= 700.0F) {
        ruler.result.height -= 3.0F;
    } else if (t > 700.0F && t <= 900.0F) {
        ruler.result.height -= 5.0F;
    } else if (t > 900.0F && t <= 1100.0F) {
        ruler.result.height -= 7.0F;
    } else if (t > 1100.0F) {
        ruler.result.height -= 8.0F;
    }
}

/// Whether the plane is usable: a unit normal, a positive distance, and a direction in the picture by which the
/// footprint is turned. Every comparison with NaN is false.
bool isPlane(const cv::Vec3f& n, float offset) {
    const double x = n[0];
    const double y = n[1];
    const double z = n[2];
    const double length = std::sqrt(x * x + y * y + z * z);
    const bool hasDirections = n[0] != 0.0F || n[1] != 0.0F || n[2] == 1.0F;
    return length >= 0.99 && length <= 1.01 && offset > 0.0F && !std::isinf(offset) && hasDirections;
}

}  // namespace

FootprintInput footprintInput(const Quorvel& ruler, const cv::Size& small) {
    FootprintInput input;
    input.small = small;
    input.normal = ruler.refPlaneNormal;
    input.offset = ruler.refPlaneOffset;
    input.cx = ruler.cx;
    input.cy = ruler.cy;
    input.fx = ruler.fx;
    input.fy = ruler.fy;
    input.downScale = ruler.downScale;
    input.cameraTypeSet = ruler.cameraTypeSet;
    input.cameraType = static_cast<int>(ruler.cameraType);
    input.effectiveRegion = ruler.effectiveRegion;
    return input;
}

void chooseMinHeight(Quorvel& ruler) {
    const float t = ruler.refPlaneOffset;
    if (t <= 800.0F) {
        ruler.minObjectHeight = 3.0F;
    } else if (t > 800.0F && t <= 1000.0F) {
        ruler.minObjectHeight = 5.0F;
    } else if (t > 1000.0F && t <= 1200.0F) {
        ruler.minObjectHeight = 8.0F;
    } else if (t > 1200.0F) {
        ruler.minObjectHeight = 10.0F;
    }
}

int measureObject(ChainFrame& frame, float minHeight, int minPixels, const FootprintInput& input, bool general,
                  MeasureResult& result) {
    cv::Mat mask = cv::Mat::zeros(frame.depthSmall.size(), CV_8U);
    const int cut =
        cutAboveReferencePlane(frame.depthSmall, frame.cloudSmall, input.normal, input.offset, minHeight, mask);
    const int selection = selectObjectComponent(frame.depthSmall, minPixels, mask);
    if (cut + selection != 0 || !isPlane(input.normal, input.offset)) {
        return 1;
    }
    cv::Mat fullMask;
    cv::resize(mask, fullMask, frame.cloud.size(), 0, 0, cv::INTER_AREA);
    for (int row = 0; row < frame.cloud.rows; ++row) {
        for (int column = 0; column < frame.cloud.cols; ++column) {
            if (fullMask.at<uchar>(row, column) < 255) {
                frame.cloud.at<cv::Vec3f>(row, column) = cv::Vec3f(0.0F, 0.0F, 0.0F);
            }
        }
    }
    filterSurfacePoints(frame.cloud, input.normal, input.offset, fullMask);
    result = general ? measureFootprint(frame.cloud, input) : measureFootprintWithoutMargin(frame.cloud, input);
    return 0;
}

int measureOnce(Quorvel& ruler) {
    ruler.result = MeasureResult{};
    const int type = ruler.productType;
    if (type != KIOSK && type != GROUND_TRACKING && type != GROUND_GROWING) {
        return 0;
    }
    if (type != GROUND_TRACKING && !ruler.calibStatus) {
        if (ruler.debugMode) {
            std::cout << "No calibration data." << std::endl;
        }
        return 1;
    }
    if (type == KIOSK) {
        chooseMinHeight(ruler);
    }
    removeGround(ruler.depthSmall, ruler.filterWeight, ruler.refPlaneOffset);
    ChainFrame frame{ruler.depthSmall, ruler.pointCloudSmallCopy, ruler.pointCloud};
    const FootprintInput input = footprintInput(ruler, ruler.depthSmall.size());
    const int outcome =
        measureObject(frame, ruler.minObjectHeight, ruler.minObjectPixels, input, type != GROUND_GROWING, ruler.result);
    ruler.pointCloud = frame.cloud;
    if (outcome == 0 && type == GROUND_TRACKING) {
        lowerHeight(ruler);
    }
    return outcome;
}

}  // namespace quorvel::test::plain
