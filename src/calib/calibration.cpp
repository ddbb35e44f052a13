// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <iostream>
#include <string>

#include <opencv2/imgcodecs.hpp>

#include <quorvel/quorvel.h>

#include "calib/calibration_file.h"
#include "calib/calibration_region.h"
#include "calib/reference_fit.h"
#include "calib/smoothing.h"
#include "common/text_file.h"
#include "ruler/back_projection.h"
#include "ruler/frame_check.h"
#include "ruler/members.h"

using namespace quorvel::internal;

namespace {

/// Fits by the method of the operating mode and shifts the fitted plane; the modes that do not calibrate here keep
/// their plane and ignore the shift.
Plane calibratedPlane(int productType, const cv::Mat& fullCloud, const cv::Mat& regionCloud, float minPoints,
                      const Plane& previous, float shift) {
    Plane plane = previous;
    switch (productType) {
        case KIOSK:
            plane = fitDominantPlane(regionCloud, previous);
            break;
        case GROUND_GROWING:
            plane = fitGrownPlane(fullCloud, regionCloud, minPoints, previous);
            break;
        default:
            return previous;
    }
    plane.offset += shift;
    return plane;
}

}  // namespace

int Quorvel::calibRef(float& t, float offset) {
    if (debugMode) {
        std::cout << "Quorvel Calib Ref Plane Start" << std::endl;
    }
    if (!hasForm(depthImage, imageHeight, imageWidth, CV_16UC1)) {
        if (debugMode) {
            std::cout << "No depth frame to calibrate on." << std::endl;
        }
        t = refPlaneOffset;
        return 0;
    }
    const RegionCorners corners = regionCorners(calibrationRoI);
    std::copy(corners.begin(), corners.end(), calibPoints);
    calibFullCloud = backProject(smoothDepth(depthImage), {cx, cy, invFx, invFy});
    calibCloud = pointsInsideRegion(calibFullCloud, corners);
    const Plane plane = calibratedPlane(productType, calibFullCloud, calibCloud, halfRegionArea(corners),
                                        referencePlane(*this), offset);
    adoptPlane(*this, plane);
    if (debugMode) {
        printPlane(plane);
    }
    ensureFolder(paramDir);
    writeCalibrationFile(calFilePath, plane);
    cv::imwrite(paramDir + "/depth.tif", depthImage);
    calibStatus = true;
    cameraHeight = plane.offset;
    t = plane.offset;
    return 0;
}

int Quorvel::ransacCalibRef() {
    Plane plane = referencePlane(*this);
    if (pointCloudSmall.type() == CV_32FC3 && pointCloudSmall.dims == 2) {
        plane = fitDominantPlane(pointCloudSmall, plane);
    }
    adoptPlane(*this, plane);
    if (debugMode) {
        printPlane(plane);
    }
    return 0;
}
