// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <iostream>
#include <string>

#include <quorvel/quorvel.h>

#include "calib/calibration_file.h"
#include "calib/calibration_region.h"
#include "calib/reference_fit.h"
#include "calib/smoothing.h"
#include "common/frame_size.h"
#include "common/image_file.h"
#include "common/text_file.h"
#include "ruler/back_projection.h"
#include "ruler/frame_check.h"
#include "ruler/members.h"

using namespace quorvel::internal;

namespace {

/// \return the part of an image that holds a region's points and what shapes the normals of every pixel that is not
///         empty and surrounded by empty ones: two pixels more on the left and above, one on the right and below,
///         because a normal takes in the right and the lower neighbour and the outermost pixels have none
cv::Rect shapedBy(const cv::Rect& inside, const cv::Size& image) {
    const cv::Rect grown(inside.x - 2, inside.y - 2, inside.width + 3, inside.height + 3);
    return inside.empty() ? cv::Rect() : grown & cv::Rect({0, 0}, image);
}

/// Fits by the method of the operating mode and shifts the fitted plane; the modes that do not calibrate here keep
/// their plane and ignore the shift.
Plane calibratedPlane(const Quorvel& ruler, const RegionCorners& corners, float shift) {
    const cv::Rect inside = insideOf(corners, ruler.calibCloud.size());
    Plane plane = referencePlane(ruler);
    switch (ruler.productType) {
        case KIOSK:
            plane = fitDominantPlane(ruler.calibCloud(shapedBy(inside, ruler.calibCloud.size())), plane);
            break;
        case GROUND_GROWING:
            plane = fitGrownPlane(ruler.calibFullCloud, ruler.calibCloud, halfRegionArea(corners), plane);
            break;
        default:
            return plane;
    }
    plane.offset += shift;
    return plane;
}

}  // namespace

int Quorvel::calibRef(float& t, float offset) {
    if (debugMode) {
        std::cout << "Quorvel Calib Ref Plane Start" << std::endl;
    }
    if (!isFrameSize(imageWidth, imageHeight) || !hasForm(depthImage, imageHeight, imageWidth, CV_16UC1)) {
        if (debugMode) {
            std::cout << "No depth frame to calibrate on." << std::endl;
        }
        t = refPlaneOffset;
        return 0;
    }
    const RegionCorners corners = regionCorners(calibrationRoI);
    std::copy(corners.begin(), corners.end(), calibPoints);
    backProject(smoothDepth(depthImage), {cx, cy, invFx, invFy}, calibFullCloud);
    pointsInsideRegion(calibFullCloud, corners, calibCloud);
    const Plane plane = calibratedPlane(*this, corners, offset);
    adoptPlane(*this, plane);
    if (debugMode) {
        printPlane(plane);
    }
    ensureFolder(paramDir);
    writeCalibrationFile(calFilePath, plane);
    writeImageFile(paramDir + "/depth.tif", depthImage);
    calibStatus = true;
    cameraHeight = plane.offset;
    t = plane.offset;
    return 0;
}

int Quorvel::ransacCalibRef() {
    Plane plane = referencePlane(*this);
    if (isFrameSize(pointCloudSmall.cols, pointCloudSmall.rows) &&
        hasForm(pointCloudSmall, pointCloudSmall.rows, pointCloudSmall.cols, CV_32FC3)) {
        plane = fitDominantPlane(pointCloudSmall, plane);
    }
    adoptPlane(*this, plane);
    if (debugMode) {
        printPlane(plane);
    }
    return 0;
}
