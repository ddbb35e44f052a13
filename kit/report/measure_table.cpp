// SPDX-License-Identifier: Apache-2.0
#include "kit/account/text_format.h"
#include "kit/input/mode_name.h"
#include "kit/report/measure_report.h"
#include "kit/report/report_rows.h"

namespace quorvel::kit {

namespace {

std::string millimetres(float value) {
    // Right-aligned over lengths up to 99999.9 mm, so that the three sizes stand below one another.
    constexpr std::size_t kWidth = 7;
    return rightAligned(fixed(static_cast<double>(value), 1), kWidth) + " mm";
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
    addConditions(report, rows);
    text += tableText(rows);
    text += notesText(m.notes);
    return report.timing ? text + timingText(*report.timing) : text;
}

}  // namespace quorvel::kit
