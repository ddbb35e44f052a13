// SPDX-License-Identifier: Apache-2.0
#include "calibration.h"

#include <cmath>

#include "calibration_files.h"
#include "input_error.h"
#include "muted_errors.h"
#include "stopwatch.h"
#include "stream_redirect.h"
#include "text_format.h"

namespace quorvel::command {

namespace {

/// The kiosk fit needs more points than this of one orientation.
constexpr int kKioskPoints = 4000;

void setArea(Quorvel& ruler, const std::optional<Region>& area) {
    if (!area) {
        return;
    }
    if (const auto* rect = std::get_if<cv::Rect>(&*area)) {
        ruler.setCalibrationRoI(*rect);
    } else {
        cv::Rect chosen;
        ruler.setCalibrationRoI(std::get<float>(*area), chosen);
    }
}

void countPixels(const Quorvel& ruler, double offset, CalibrationOutcome& outcome) {
    const cv::Rect inside = outcome.area & cv::Rect({0, 0}, ruler.pointCloud.size());
    const cv::Mat_<cv::Vec3f> points = ruler.pointCloud(inside);
    for (const cv::Vec3f& point : points) {
        if (!isPresent(point)) {
            continue;
        }
        ++outcome.measuredPixels;
        const double fromFittedPlane = static_cast<double>(heightAbove(outcome.plane, point)) - offset;
        if (std::abs(fromFittedPlane) <= kNearPlane) {
            ++outcome.pixelsNearPlane;
        }
    }
}

std::string fitProblem(ProductType mode, const CalibrationOutcome& outcome) {
    const int areaPixels = outcome.area.width * outcome.area.height;
    std::string text = "no plane could be fitted: the calibration area " + rectangleText(outcome.area) + " has " +
                       std::to_string(outcome.measuredPixels) + " pixels with depth out of " +
                       std::to_string(areaPixels) + "; ";
    if (mode == GROUND_GROWING) {
        return text + "ground-growing needs half of them, " + std::to_string(areaPixels / 2) +
               ", on a surface in front of the camera. Clear the surface, or choose another --calibration-area.";
    }
    text += "kiosk needs more than " + std::to_string(kKioskPoints) + " that face one way. ";
    if (areaPixels <= kKioskPoints) {
        return text + "Choose a larger --calibration-area.";
    }
    return text + "Clear and flatten the surface, or choose another --calibration-area.";
}

/// Fits the plane and stores it. The picture writers' lines about a full disk are kept from standard error: whether the
/// files are whole is seen afterwards.
void fitAndStore(Quorvel& ruler, double offset) {
    const HeldBackLibraryOutput output;
    const MutedErrors muted;
    float distance = 0.0F;
    ruler.calibRef(distance, static_cast<float>(offset));
}

}  // namespace

Plane planeOf(const Quorvel& ruler) {
    return {ruler.refPlaneNormal, ruler.refPlaneOffset};
}

CalibrationOutcome calibrate(Quorvel& ruler, const FramePair& empty, const CalibrationSettings& settings) {
    const CalibrationFiles files(ruler);
    files.requireWritable();
    CalibrationOutcome outcome;
    outcome.planeFile = files.planePath().string();
    outcome.depthFile = files.depthPath().string();

    const LibraryOutputToStderr redirected;
    setArea(ruler, settings.area);
    ruler.getCameraFrame(empty.color, empty.depth);
    // A plane of an earlier calibration would outlive a failed fit and hide the failure.
    ruler.refPlaneNormal = {0.0F, 0.0F, 0.0F};
    ruler.refPlaneOffset = 0.0F;
    const Stopwatch watch;
    fitAndStore(ruler, settings.offset);
    outcome.milliseconds = watch.milliseconds();

    outcome.plane = planeOf(ruler);
    outcome.area = ruler.calibrationRoI;
    countPixels(ruler, settings.offset, outcome);
    const Plane fitted{outcome.plane.normal, outcome.plane.offset - static_cast<float>(settings.offset)};
    if (!isUsable(fitted) || !isUsable(outcome.plane)) {
        outcome.problem = fitProblem(static_cast<ProductType>(ruler.productType), outcome) + " " + files.restore();
    } else if (!files.hold(outcome.plane, ruler.depthImage)) {
        throw InputError(files.planePath().parent_path().string() +
                         ": the new plane cannot be stored whole; check the space on the disk. " + files.restore());
    }
    return outcome;
}

}  // namespace quorvel::command
