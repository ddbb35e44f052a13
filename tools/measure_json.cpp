// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <charconv>
#include <cmath>

#include <nlohmann/json.hpp>

#include "measure_report.h"
#include "mode_option.h"

namespace quorvel::command {

namespace {

using Json = nlohmann::ordered_json;

/// The shortest decimal that reads back as the same float: 241.3 rather than 241.30000305175781.
Json number(float value) {
    if (!std::isfinite(value)) {
        return nullptr;
    }
    std::array<char, 64> text{};
    const auto written = std::to_chars(text.data(), text.data() + text.size(), value);
    double decimal = 0.0;
    std::from_chars(text.data(), written.ptr, decimal);
    return decimal;
}

Json rectangle(const cv::Rect& rect) {
    return {{"x", rect.x}, {"y", rect.y}, {"width", rect.width}, {"height", rect.height}};
}

Json reason(const Diagnosis& diagnosis) {
    if (diagnosis.reason == Reason::None) {
        return nullptr;
    }
    Json numbers = Json::object();
    for (const auto& [name, value] : diagnosis.numbers) {
        numbers[name] = value;
    }
    return {{"code", reasonCode(diagnosis.reason)}, {"message", diagnosis.message}, {"numbers", numbers}};
}

Json corners(const MeasureResult& result) {
    Json list = Json::array();
    for (const cv::Point2f& corner : result.corners) {
        list.push_back({{"x", number(corner.x)}, {"y", number(corner.y)}});
    }
    return list;
}

Json planeObject(const Plane& plane) {
    if (!isUsable(plane)) {
        return nullptr;
    }
    const Json normal = Json::array({number(plane.normal[0]), number(plane.normal[1]), number(plane.normal[2])});
    return {{"normal", normal}, {"offset_mm", number(plane.offset)}, {"tilt_deg", tiltDegrees(plane)}};
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

std::string statusOf(const Measurement& measurement) {
    switch (measurement.diagnosis.reason) {
        case Reason::None:
            return "measured";
        case Reason::NoPlane:
            return "no_plane";
        case Reason::OutOfView:
            return "out_of_view";
        default:
            return "empty";
    }
}

std::string reportJson(const MeasureReport& report) {
    const Measurement& m = report.measurement;
    const bool measured = m.diagnosis.reason == Reason::None;
    Json areas{{"detection", rectangle(m.detectionArea)}, {"calibration", nullptr}};
    Json calibrate = nullptr;
    if (report.calibration) {
        areas["calibration"] = rectangle(report.calibration->area);
        calibrate = report.calibration->milliseconds;
    }
    const Json document{{"version", report.version},
                        {"status", statusOf(m)},
                        {"reason", reason(m.diagnosis)},
                        {"notes", m.notes},
                        {"mode", modeName(report.mode)},
                        {"length_mm", measured ? number(m.result.length) : Json()},
                        {"width_mm", measured ? number(m.result.width) : Json()},
                        {"height_mm", measured ? number(m.result.height) : Json()},
                        {"in_view", m.result.inView},
                        {"on_target", report.mode == GROUND_GROWING ? Json() : Json(m.result.onTarget)},
                        {"side_margin_px", number(m.result.sideMargin)},
                        {"corners", corners(m.result)},
                        {"surface_points", m.facts.surfacePoints},
                        {"plane", planeObject(m.plane)},
                        {"camera", cameraObject(report)},
                        {"areas", areas},
                        {"calibration", calibrationObject(report.calibration)},
                        {"filter_weight", number(m.filterWeight)},
                        {"min_height_mm", number(m.minObjectHeight)},
                        {"min_object_pixels", m.minObjectPixels},
                        {"timings_ms",
                         {{"read", report.readMilliseconds},
                          {"calibrate", calibrate},
                          {"frame", m.frameMilliseconds},
                          {"measure", m.measureMilliseconds}}}};
    // File names may hold bytes that are no UTF-8; they are replaced rather than refused.
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace quorvel::command
