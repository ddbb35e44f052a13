// SPDX-License-Identifier: Apache-2.0
#include "kit/report/report_json.h"

#include "kit/report/json_number.h"

namespace quorvel::kit {

namespace {

Json rectangle(const cv::Rect& rect) {
    return {{"x", rect.x}, {"y", rect.y}, {"width", rect.width}, {"height", rect.height}};
}

Json corners(const MeasureResult& result) {
    Json list = Json::array();
    for (const cv::Point2f& corner : result.corners) {
        list.push_back({{"x", jsonNumber(corner.x)}, {"y", jsonNumber(corner.y)}});
    }
    return list;
}

Json planeObject(const Plane& plane) {
    if (!isUsable(plane)) {
        return nullptr;
    }
    const Json normal =
        Json::array({jsonNumber(plane.normal[0]), jsonNumber(plane.normal[1]), jsonNumber(plane.normal[2])});
    return {{"normal", normal}, {"offset_mm", jsonNumber(plane.offset)}, {"tilt_deg", tiltDegrees(plane)}};
}

Json cameraObject(const MeasureReport& report) {
    const Camera& camera = report.camera;
    return {{"fx", camera.fx},
            {"fy", camera.fy},
            {"cx", camera.cx},
            {"cy", camera.cy},
            {"width", camera.width},
            {"height", camera.height},
            {"source", report.cameraSource}};
}

Json calibrationObject(const std::optional<CalibrationOutcome>& calibration) {
    if (!calibration) {
        return nullptr;
    }
    return {{"measured_pixels", calibration->measuredPixels},
            {"pixels_near_plane", calibration->pixelsNearPlane},
            {"plane_file", calibration->planeFile},
            {"depth_file", calibration->depthFile}};
}

}  // namespace

Json reasonJson(const Diagnosis& diagnosis) {
    if (diagnosis.reason == Reason::None) {
        return nullptr;
    }
    Json numbers = Json::object();
    for (const auto& [name, value] : diagnosis.numbers) {
        numbers[name] = value;
    }
    return {{"code", reasonCode(diagnosis.reason)}, {"message", diagnosis.message}, {"numbers", numbers}};
}

Json resultJson(const Measurement& measurement, ProductType mode) {
    const MeasureResult& result = measurement.result;
    const bool measured = measurement.diagnosis.reason == Reason::None;
    return {{"length_mm", measured ? jsonNumber(result.length) : Json()},
            {"width_mm", measured ? jsonNumber(result.width) : Json()},
            {"height_mm", measured ? jsonNumber(result.height) : Json()},
            {"in_view", result.inView},
            {"on_target", mode == GROUND_GROWING ? Json() : Json(result.onTarget)},
            {"side_margin_px", jsonNumber(result.sideMargin)},
            {"corners", corners(result)}};
}

Json conditionsJson(const MeasureReport& report) {
    const Measurement& m = report.measurement;
    Json areas{{"detection", rectangle(m.state.detectionArea)}, {"calibration", nullptr}};
    Json calibrationTime = nullptr;
    if (report.calibration) {
        areas["calibration"] = rectangle(report.calibration->area);
        calibrationTime = report.calibration->milliseconds;
    }
    return {{"plane", planeObject(m.state.plane)},
            {"camera", cameraObject(report)},
            {"areas", areas},
            {"calibration", calibrationObject(report.calibration)},
            {"filter_weight", jsonNumber(m.state.filterWeight)},
            {"min_height_mm", jsonNumber(m.state.minHeight)},
            {"min_object_pixels", m.state.minPixels},
            {"timings_ms",
             {{"read", report.readMilliseconds},
              {"calibrate", calibrationTime},
              {"frame", m.frameMilliseconds},
              {"measure", m.measureMilliseconds}}}};
}

Json timingJson(const std::optional<MeasureTiming>& timing) {
    if (!timing) {
        return nullptr;
    }
    Json object{{"repetitions", timing->repetitions}};
    for (const TimedPart& part : timing->parts) {
        object[part.key] = part.milliseconds ? Json(*part.milliseconds) : Json();
    }
    return object;
}

std::string documentText(const Json& document) {
    // File names may have bytes that are not UTF-8; these are replaced, and the name is not refused.
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace quorvel::kit
