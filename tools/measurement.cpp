// SPDX-License-Identifier: Apache-2.0
#include "measurement.h"

#include <algorithm>

#include "calibration.h"
#include "input_file.h"
#include "plane_basis.h"
#include "stopwatch.h"
#include "stream_redirect.h"

namespace quorvel::command {

namespace {

int countPoints(const cv::Mat_<cv::Vec3f>& cloud) {
    return static_cast<int>(std::count_if(cloud.begin(), cloud.end(), isPresent));
}

/// Measures the frame once more with the whole picture as detection area, to learn where a box lies that missed it.
std::vector<cv::Point2f> cornersAnywhere(const Quorvel& ruler, const FramePair& frame) {
    Quorvel probe = ruler;
    probe.getCameraFrame(frame.color, frame.depth);
    // GROUND_TRACKING has fitted another plane on the way in; the box is looked for on the one it was missed with.
    usePlaneOf(ruler, probe);
    probe.effectiveRegion = cv::Rect(0, 0, ruler.imageWidth, ruler.imageHeight);
    probe.measureOnce();
    return probe.result.corners;
}

/// Sides of the box on the plane, longer first, mm.
cv::Size2d footprintOf(const Quorvel& ruler) {
    if (ruler.result.corners.empty()) {
        return {};
    }
    const Camera camera{ruler.fx, ruler.fy, ruler.cx, ruler.cy, ruler.imageWidth, ruler.imageHeight};
    const cv::Size2d sides = groundSides(camera, planeOf(ruler), ruler.result.corners);
    return {std::max(sides.width, sides.height), std::min(sides.width, sides.height)};
}

MeasurementFacts factsOf(const Quorvel& ruler, const cv::Mat& depthBefore, int status) {
    MeasurementFacts facts;
    facts.plane = planeOf(ruler);
    facts.filterWeight = ruler.filterWeight;
    facts.minObjectHeight = ruler.minObjectHeight;
    facts.minObjectPixels = ruler.minObjectPixels;
    facts.depthBefore = depthBefore;
    facts.depthAfter = ruler.depthSmall;
    facts.smallCloud = ruler.pointCloudSmallCopy;
    facts.status = status;
    facts.surfacePoints = status == 0 ? countPoints(ruler.pointCloud) : 0;
    facts.result = ruler.result;
    facts.footprint = footprintOf(ruler);
    facts.detectionArea = ruler.effectiveRegion;
    facts.usableSize = ruler.depthSmall.size() * ruler.downScale;
    return facts;
}

}  // namespace

Quorvel makeRuler(const Camera& camera) {
    return {static_cast<float>(camera.fx),
            static_cast<float>(camera.fy),
            static_cast<float>(camera.cx),
            static_cast<float>(camera.cy),
            camera.width,
            camera.height,
            false,
            ""};
}

void selectMode(Quorvel& ruler, const MeasurementSettings& settings) {
    const LibraryOutputToStderr redirected;
    requireOrdinaryFile(ruler.calFilePath);
    ruler.setDebugMode(settings.debug);
    if (settings.mode == GROUND_GROWING) {
        const cv::Rect ownDefault = ruler.effectiveRegion;
        ruler.setProductType(KIOSK);
        ruler.effectiveRegion = ownDefault;
    }
    ruler.setProductType(settings.mode);
}

void applySettings(Quorvel& ruler, const MeasurementSettings& settings) {
    if (settings.area) {
        if (const auto* rect = std::get_if<cv::Rect>(&*settings.area)) {
            ruler.setEffectiveRegionInArea(*rect);
        } else {
            cv::Rect chosen;
            ruler.setEffectiveRegionInArea(std::get<float>(*settings.area), chosen);
        }
    }
    if (settings.filterWeight) {
        ruler.setFilterWeight(*settings.filterWeight);
    }
    if (settings.sideBand) {
        ruler.setCameraType(true, *settings.sideBand);
    }
    if (settings.minHeight) {
        ruler.minObjectHeight = *settings.minHeight;
    }
}

void usePlaneOf(const Quorvel& ruler, Quorvel& other) {
    other.refPlaneNormal = ruler.refPlaneNormal;
    other.refPlaneOffset = ruler.refPlaneOffset;
    other.minObjectPixels = ruler.minObjectPixels;
}

Measurement describe(const Quorvel& ruler) {
    Measurement measurement;
    measurement.plane = planeOf(ruler);
    measurement.detectionArea = ruler.effectiveRegion;
    measurement.filterWeight = ruler.filterWeight;
    measurement.minObjectHeight = ruler.minObjectHeight;
    measurement.minObjectPixels = ruler.minObjectPixels;
    return measurement;
}

Measurement measureFrame(Quorvel& ruler, const FramePair& frame, const MeasurementSettings& settings) {
    const LibraryOutputToStderr redirected;
    applySettings(ruler, settings);
    const Stopwatch watch;
    ruler.getCameraFrame(frame.color, frame.depth);
    const double milliseconds = watch.milliseconds();
    if (!isUsable(planeOf(ruler))) {
        return measurementWithoutFittedPlane(ruler);
    }
    Measurement measurement = measureHeldFrame(ruler, frame);
    measurement.frameMilliseconds = milliseconds;
    return measurement;
}

Measurement measureHeldFrame(Quorvel& ruler, const FramePair& frame) {
    const cv::Mat depthBefore = ruler.depthSmall.clone();
    const Stopwatch watch;
    const int status = ruler.measureOnce();
    const double milliseconds = watch.milliseconds();

    Measurement measurement = describe(ruler);
    measurement.measureMilliseconds = milliseconds;
    measurement.result = ruler.result;
    measurement.facts = factsOf(ruler, depthBefore, status);
    if (status == 0) {
        measurement.surfaceCloud = ruler.pointCloud;
        if (ruler.result.corners.empty()) {
            measurement.facts.cornersAnywhere = cornersAnywhere(ruler, frame);
        }
    }
    const HeightSurvey survey = surveyHeights(measurement.facts);
    measurement.diagnosis = diagnose(measurement.facts, survey);
    const std::string warning = groundCutWarning(measurement.facts, survey, measurement.diagnosis.reason);
    if (!warning.empty()) {
        measurement.notes.push_back(warning);
    }
    return measurement;
}

Measurement measurementWithoutFittedPlane(const Quorvel& ruler) {
    const int measured = cv::countNonZero(ruler.depthSmall);
    Measurement measurement = describe(ruler);
    measurement.diagnosis =
        noPlane("no plane could be fitted to the frame: " + std::to_string(measured) +
                    " pixels of the small picture have a depth, and ground-tracking needs more than 4000 that face "
                    "one way; let more of the surface be seen, or calibrate and measure with --mode kiosk",
                {{"measured_pixels", measured}, {"needed_pixels", 4000}});
    return measurement;
}

Measurement measurementWithoutPlane(const Quorvel& ruler, const std::string& message) {
    Measurement measurement = describe(ruler);
    measurement.diagnosis = noPlane(message, {});
    return measurement;
}

}  // namespace quorvel::command
