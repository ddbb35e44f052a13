// SPDX-License-Identifier: Apache-2.0
#include "kit/measure/measurement.h"

#include "calib/ransac_plane.h"
#include "kit/input/input_file.h"
#include "kit/measure/stopwatch.h"
#include "measure/detection_area.h"

namespace quorvel::kit {

namespace {

Measurement measureHeldFrame(Ruler& ruler) {
    internal::AccountDetail detail;
    detail.survey = true;
    const Stopwatch watch;
    const std::optional<internal::MeasureAccount> account = ruler.measure(detail);
    const double milliseconds = watch.milliseconds();

    Measurement measurement = describe(ruler);
    measurement.measureMilliseconds = milliseconds;
    measurement.result = ruler.result();
    if (account) {
        measurement.smallCloud = ruler.cloudSmall();
        measurement.candidates = ruler.depthSmall() > 0;
        if (internal::hasRecord(*account)) {
            measurement.surfaceCloud = ruler.cloud();
        }
        explain(*account, measurement);
    }
    return measurement;
}

}  // namespace

std::vector<cv::Point2f> Measurement::corners() const {
    if (!result.corners.empty() || !account || !account->footprint.box) {
        return result.corners;
    }
    const std::vector<cv::Point2f>& box = account->footprint.box->corners;
    const bool inPicture = internal::topFaceMeetsRegion({box[4], box[5], box[6], box[7]},
                                                        cv::Rect(cv::Point(), account->picture), account->picture);
    return inPicture ? box : std::vector<cv::Point2f>();
}

Ruler makeRuler(const Camera& camera, std::ostream* lines) {
    return {{static_cast<float>(camera.cx), static_cast<float>(camera.cy), static_cast<float>(camera.fx),
             static_cast<float>(camera.fy)},
            camera.size(),
            lines};
}

void selectMode(Ruler& ruler, const MeasurementSettings& settings) {
    requireOrdinaryFile(ruler.planeFile());
    ruler.setDebugMode(settings.debug);
    ruler.selectMode(settings.mode);
}

void applySettings(Ruler& ruler, const MeasurementSettings& settings) {
    if (settings.area) {
        std::visit([&ruler](const auto& area) { ruler.setDetectionArea(area); }, *settings.area);
    }
    if (settings.filterWeight) {
        ruler.setFilterWeight(*settings.filterWeight);
    }
    if (settings.sideBand) {
        ruler.setSideBand(*settings.sideBand);
    }
    if (settings.minHeight) {
        ruler.setMinHeight(*settings.minHeight);
    }
}

Measurement describe(const Ruler& ruler) {
    Measurement measurement;
    measurement.state = ruler.state();
    return measurement;
}

Measurement measureFrame(Ruler& ruler, const FramePair& frame, const MeasurementSettings& settings) {
    applySettings(ruler, settings);
    const Stopwatch watch;
    ruler.takeFrame(frame.color, frame.depth);
    const double milliseconds = watch.milliseconds();
    if (!isUsable(ruler.state().plane)) {
        return measurementWithoutFittedPlane(ruler);
    }
    Measurement measurement = measureHeldFrame(ruler);
    measurement.frameMilliseconds = milliseconds;
    return measurement;
}

void explain(const internal::MeasureAccount& account, Measurement& measurement) {
    measurement.account = account;
    measurement.diagnosis = diagnose(account);
    const std::string warning = groundCutWarning(account, measurement.diagnosis.reason);
    if (!warning.empty()) {
        measurement.notes.push_back(warning);
    }
}

Measurement measurementWithoutFittedPlane(const Ruler& ruler) {
    const int measured = cv::countNonZero(ruler.depthSmall());
    const std::string needed = std::to_string(internal::kLeastOriented);
    Measurement measurement = describe(ruler);
    measurement.diagnosis =
        noPlane("no plane could be fitted to the frame: " + std::to_string(measured) +
                    " pixels of the small picture have a depth, and ground-tracking needs more than " + needed +
                    " that face one way; let more of the surface be seen, or calibrate and measure with --mode kiosk",
                {{"measured_pixels", measured}, {"needed_pixels", static_cast<double>(internal::kLeastOriented)}});
    return measurement;
}

Measurement measurementWithoutPlane(const Ruler& ruler, const std::string& message) {
    Measurement measurement = describe(ruler);
    measurement.diagnosis = noPlane(message, {});
    return measurement;
}

}  // namespace quorvel::kit
