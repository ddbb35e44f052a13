// SPDX-License-Identifier: Apache-2.0
#include "library/plain/calibration.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "library/plain/back_projection.h"
#include "library/plain/calibration_region.h"
#include "library/plain/reference_fit.h"

namespace quorvel::test::plain {

namespace {

/// Top left, bottom left, top right; every coordinate passes through float.
std::array<cv::Point, 3> cornersOf(const cv::Rect& region) {
    const auto left = static_cast<float>(region.x);
    const auto top = static_cast<float>(region.y);
    const auto right = static_cast<float>(region.x + region.width);
    const auto bottom = static_cast<float>(region.y + region.height);
    return {cv::Point(cvRound(left), cvRound(top)), cv::Point(cvRound(left), cvRound(bottom)),
            cv::Point(cvRound(right), cvRound(top))};
}

cv::Mat smoothedTwice(const cv::Mat& depth) {
    cv::Mat once;
    cv::Mat twice;
    cv::GaussianBlur(depth.clone(), once, cv::Size(5, 5), 0.0, 0.0, cv::BORDER_REFLECT_101);
    cv::GaussianBlur(once, twice, cv::Size(5, 5), 0.0, 0.0, cv::BORDER_REFLECT_101);
    return twice;
}

void writePlane(const Quorvel& ruler) {
    std::array<char, 256> line{};
    const cv::Vec3f& n = ruler.refPlaneNormal;
    static_cast<void>(std::snprintf(line.data(), line.size(), "%f %f %f %f\n", static_cast<double>(n[0]),
                                    static_cast<double>(n[1]), static_cast<double>(n[2]),
                                    static_cast<double>(ruler.refPlaneOffset)));
    std::ofstream(ruler.calFilePath) << line.data();
}

}  // namespace

void calibRef(Quorvel& ruler, float& t, float offset) {
    const std::array<cv::Point, 3> corners = cornersOf(ruler.calibrationRoI);
    std::copy(corners.begin(), corners.end(), ruler.calibPoints);
    ruler.calibFullCloud = backProject(smoothedTwice(ruler.depthImage), ruler.cx, ruler.cy, ruler.invFx, ruler.invFy);
    ruler.calibCloud = pointsInsideRegion(ruler.calibFullCloud, corners);
    if (ruler.productType == KIOSK) {
        fitDominantPlane(ruler.calibCloud, ruler.refPlaneNormal, ruler.refPlaneOffset);
        ruler.refPlaneOffset += offset;
    } else if (ruler.productType == GROUND_GROWING) {
        fitGrownPlane(ruler.calibFullCloud, ruler.calibCloud, halfRegionArea(corners), ruler.refPlaneNormal,
                      ruler.refPlaneOffset);
        ruler.refPlaneOffset += offset;
    }
    ruler.minObjectPixels = objectPixelMinimum(ruler.refPlaneOffset, ruler.fxSmall);
    std::error_code unchecked;
    std::filesystem::create_directory(ruler.paramDir, unchecked);
    writePlane(ruler);
    cv::imwrite(ruler.paramDir + "/depth.tif", ruler.depthImage);
    ruler.calibStatus = true;
    ruler.cameraHeight = ruler.refPlaneOffset;
    t = ruler.refPlaneOffset;
}

void ransacCalibRef(Quorvel& ruler) {
    fitDominantPlane(ruler.pointCloudSmall, ruler.refPlaneNormal, ruler.refPlaneOffset);
    ruler.minObjectPixels = objectPixelMinimum(ruler.refPlaneOffset, ruler.fxSmall);
}

}  // namespace quorvel::test::plain
