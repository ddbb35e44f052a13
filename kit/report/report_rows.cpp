// SPDX-License-Identifier: Apache-2.0
#include "kit/report/report_rows.h"

#include "kit/account/text_format.h"

namespace quorvel::kit {

namespace {

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
    rows.emplace_back("detection area", rectangleText(m.state.detectionArea) + chosen);
    rows.emplace_back("filter weight", fixed(static_cast<double>(m.state.filterWeight), 3));
    rows.emplace_back("minimum height", fixed(static_cast<double>(m.state.minHeight), 1) + " mm");
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

std::string partMilliseconds(double value) {
    constexpr int kDecimals = 3;       // microseconds: a stage of a small picture takes some ten of them
    constexpr std::size_t kWidth = 9;  // up to 99999.999 ms
    return rightAligned(fixed(value, kDecimals), kWidth) + " ms";
}

}  // namespace

void addConditions(const MeasureReport& report, Rows& rows) {
    addPlane(report.measurement.state.plane, rows);
    addSettings(report, rows);
}

std::string timingText(const MeasureTiming& timing) {
    Rows rows;
    bool refit = false;
    for (const TimedPart& part : timing.parts) {
        if (part.milliseconds) {
            rows.emplace_back(part.name, partMilliseconds(*part.milliseconds));
            refit = refit || part.key == "planeRefit";
        }
    }
    const std::string heading =
        "\n  Timing: medians of " + std::to_string(timing.repetitions) + " repetitions on this frame, after a warm-up";
    return heading + (refit ? "; the frame intake includes the plane re-fit\n\n" : "\n\n") + tableText(rows);
}

std::string notesText(const std::vector<std::string>& notes) {
    std::string text;
    for (const std::string& note : notes) {
        text += "\n  Note: " + note + "\n";
    }
    return text;
}

}  // namespace quorvel::kit
