// SPDX-License-Identifier: Apache-2.0
#include "ruler/calibration.h"

#include <algorithm>
#include <iostream>
#include <string>

#include "calib/calibration_input.h"
#include "calib/reference_fit.h"
#include "files/calibration_file.h"
#include "files/text_file.h"
#include "files/whole_file.h"
#include "image/back_projection.h"
#include "image/image_form.h"
#include "ruler/members.h"

namespace quorvel::internal {

namespace {

/// \return the part of an image that is enough to compute all normals that the region's points have an influence on.
///         That is two pixels more on the left and above, and one more on the right and below, because a normal depends
///         on the right and the lower neighbour, and the outermost pixels of an image have no normal.
cv::Rect shapedBy(const cv::Rect& inside, const cv::Size& image) {
    const cv::Rect grown(inside.x - 2, inside.y - 2, inside.width + 3, inside.height + 3);
    return inside.empty() ? cv::Rect() : grown & cv::Rect({0, 0}, image);
}

/// Fits by the method of the operating mode.
FitAccount fitByMode(const Quorvel& ruler, const RegionCorners& corners) {
    const cv::Rect inside = insideOf(corners, ruler.calibCloud.size());
    const Plane previous = referencePlane(ruler);
    switch (ruler.productType) {
        case KIOSK:
            return fitDominantPlane(ruler.calibCloud(shapedBy(inside, ruler.calibCloud.size())), previous);
        case GROUND_GROWING:
            return fitGrownPlane(ruler.calibFullCloud, ruler.calibCloud, halfRegionArea(corners), previous);
        default:
            FitAccount account;
            account.outcome = FitOutcome::ModeKeepsPlane;
            account.plane = previous;
            return account;
    }
}

void adopt(Quorvel& ruler, const Plane& plane, std::ostream* lines) {
    adoptPlane(ruler, plane);
    if (ruler.debugMode) {
        printPlane(plane, lines);
    }
}

}  // namespace

FitAccount fitReferencePlane(Quorvel& ruler, float shift, std::ostream* lines) {
    printInDebugMode(ruler, "Quorvel Calib Ref Plane Start", lines);
    if (!isFrameSize(ruler.imageWidth, ruler.imageHeight) ||
        !hasForm(ruler.depthImage, {ruler.imageWidth, ruler.imageHeight}, CV_16UC1)) {
        printInDebugMode(ruler, "No depth frame to calibrate on.", lines);
        FitAccount account;
        account.plane = referencePlane(ruler);
        return account;
    }
    const RegionCorners corners = regionCorners(ruler.calibrationRoI);
    std::copy(corners.begin(), corners.end(), ruler.calibPoints);
    backProject(smoothDepth(ruler.depthImage), {ruler.cx, ruler.cy, ruler.invFx, ruler.invFy}, ruler.calibFullCloud);
    pointsInsideRegion(ruler.calibFullCloud, corners, ruler.calibCloud);
    FitAccount account = fitByMode(ruler, corners);
    Plane plane = account.plane;
    // The modes that do not fit here ignore the shift.
    if (account.outcome != FitOutcome::ModeKeepsPlane) {
        plane.offset += shift;
    }
    adopt(ruler, plane, lines);
    return account;
}

StoredCalibration storeCalibration(const Quorvel& ruler) {
    ensureFolder(ruler.paramDir);
    StoredCalibration stored;
    stored.plane = writeCalibrationFile(ruler.calFilePath, referencePlane(ruler));
    stored.depth = writeImageFile(ruler.paramDir + "/depth.tif", ruler.depthImage);
    return stored;
}

void completeCalibration(Quorvel& ruler) {
    ruler.calibStatus = true;
    ruler.cameraHeight = ruler.refPlaneOffset;
}

FitAccount refitPlane(Quorvel& ruler, std::ostream* lines) {
    FitAccount account;
    account.plane = referencePlane(ruler);
    const cv::Mat& cloud = ruler.pointCloudSmall;
    if (isFrameSize(cloud.cols, cloud.rows) && hasForm(cloud, {cloud.cols, cloud.rows}, CV_32FC3)) {
        account = fitDominantPlane(cloud, account.plane);
    }
    adopt(ruler, account.plane, lines);
    return account;
}

}  // namespace quorvel::internal

int Quorvel::calibRef(float& t, float offset) {
    using namespace quorvel::internal;
    if (fitReferencePlane(*this, offset, &std::cout).outcome != FitOutcome::NoFrame) {
        storeCalibration(*this);
        completeCalibration(*this);
    }
    t = refPlaneOffset;
    return 0;
}

int Quorvel::ransacCalibRef() {
    quorvel::internal::refitPlane(*this, &std::cout);
    return 0;
}
