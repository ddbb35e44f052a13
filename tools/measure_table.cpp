// SPDX-License-Identifier: Apache-2.0
#include "measure_report.h"
#include "mode_option.h"
#include "text_format.h"

namespace quorvel::command {

namespace {

using Rows = std::vector<std::pair<std::string, std::string>>;

std::string millimetres(float value) {
    // Right-aligned over lengths up to 99999.9 mm, so that the three sizes stand below one another.
    constexpr std::size_t kWidth = 7;
    const std::string text = fixed(static_cast<double>(value), 1);
    return std::string(text.size() < kWidth ? kWidth - text.size() : 0, ' ') + text + " mm";
}

void addSizes(const MeasureResult& result, Rows& rows) {
    rows.emplace_back("length", millimetres(result.length));
    rows.emplace_back("width", millimetres(result.width));
    rows.emplace_back("height", millimetres(result.height));
    rows.emplace_back();
}

void addFlags(const MeasureReport& report, Rows& rows) {
    const MeasureResult& result = report.measurement.result;
    if (result.corners.empty()) {
        return;
    }
    const auto yesNo = [](bool value) { return value ? "yes" : "no"; };
    rows.emplace_back("in view", yesNo(result.inView));
    rows.emplace_back("on target", report.mode == GROUND_GROWING ? "not told in this mode" : yesNo(result.onTarget));
    rows.emplace_back("side margin", fixed(static_cast<double>(result.sideMargin), 1) + " px");
    rows.emplace_back();
}

void addPlane(const Plane& plane, Rows& rows) {
    if (!isUsable(plane)) {
        rows.emplace_back("plane", "none");
        return;
    }
    rows.emplace_back("plane normal", vectorText(plane.normal));
    rows.emplace_back("plane distance", fixed(static_cast<double>(plane.offset), 1) + " mm");
    rows.emplace_back("tilt", fixed(tiltDegrees(plane), 1) + " deg");
}

void addSettings(const MeasureReport& report, Rows& rows) {
    const Measurement& m = report.measurement;
    const std::string chosen = report.areaGiven ? "" : "  (default of the mode)";
    rows.emplace_back("detection area", rectangleText(m.detectionArea) + chosen);
    rows.emplace_back("filter weight", fixed(static_cast<double>(m.filterWeight), 3));
    rows.emplace_back("minimum height", fixed(static_cast<double>(m.minObjectHeight), 1) + " mm");
    rows.emplace_back(
        "time", fixed(m.frameMilliseconds, 1) + " ms frame, " + fixed(m.measureMilliseconds, 1) + " ms measurement");
    if (report.calibration && report.calibration->problem.empty()) {
        rows.emplace_back("calibration", report.calibration->planeFile);
    }
    if (!report.overlay.empty()) {
        rows.emplace_back("overlay", report.overlay);
    }
    if (!report.stages.empty()) {
        rows.emplace_back("stages", report.stages);
    }
}

}  // namespace

std::string reportTable(const MeasureReport& report) {
    const Measurement& m = report.measurement;
    const bool measured = m.diagnosis.reason == Reason::None;
    std::string text = (measured ? "Measured (" : "Nothing measured (") + modeName(report.mode) + ")\n\n";
    if (!measured) {
        text += "  Reason: " + m.diagnosis.message + "\n\n";
    }
    Rows rows;
    if (measured) {
        addSizes(m.result, rows);
    }
    addFlags(report, rows);
    addPlane(m.plane, rows);
    addSettings(report, rows);
    text += tableText(rows);
    for (const std::string& note : m.notes) {
        text += "\n  Note: " + note + "\n";
    }
    return text;
}

}  // namespace quorvel::command
