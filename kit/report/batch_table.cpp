// SPDX-License-Identifier: Apache-2.0
#include "kit/account/text_format.h"
#include "kit/input/mode_name.h"
#include "kit/report/batch_report.h"
#include "kit/report/report_rows.h"

namespace quorvel::kit {

namespace {

/// Widths of the columns with sizes; the widest heading, "length mm", needs 9.
constexpr std::size_t kSizeColumn = 11;

std::string sizeCells(const Sizes& sizes, int decimals) {
    std::string text;
    for (const float size : {sizes.length, sizes.width, sizes.height}) {
        text += rightAligned(fixed(static_cast<double>(size), decimals), kSizeColumn);
    }
    return text;
}

Sizes sizesOf(const MeasureResult& result) {
    return {result.length, result.width, result.height};
}

/// Sizes, "in view", and the reason's code when there are no sizes. The code instead of the message keeps the table
/// narrow; the verdict has the message of the frame that makes the batch fail.
std::string frameCells(const Measurement& frame) {
    if (frame.diagnosis.reason == Reason::None) {
        return sizeCells(sizesOf(frame.result), 1) + "   yes";
    }
    const std::string none = rightAligned("-", kSizeColumn);
    const std::string inView = frame.result.corners.empty() ? "-  " : "no ";
    return none + none + none + "   " + inView + "       " + reasonCode(frame.diagnosis.reason);
}

Rows frameRows(const BatchReport& report) {
    Rows rows{{"frame", rightAligned("length mm", kSizeColumn) + rightAligned("width mm", kSizeColumn) +
                            rightAligned("height mm", kSizeColumn) + "   in view"}};
    for (std::size_t i = 0; i < report.batch.frames.size(); ++i) {
        rows.emplace_back(report.files[i].depth, frameCells(report.batch.frames[i]));
    }
    if (report.whole.measurement.diagnosis.reason == Reason::None) {
        rows.emplace_back("mean", sizeCells(sizesOf(report.whole.measurement.result), 1));
    }
    // Three decimals: a difference just beyond its tolerance must not look equal to it.
    if (report.batch.spread) {
        rows.emplace_back("largest difference", sizeCells(*report.batch.spread, 3));
    }
    rows.emplace_back("tolerance", sizeCells(report.tolerance, 3));
    return rows;
}

std::string frameCount(std::size_t count) {
    return std::to_string(count) + (count == 1 ? " frame" : " frames");
}

/// "300.1 x 200.2 x 150.0 mm"
std::string sizesText(const Sizes& sizes, int decimals) {
    return fixed(static_cast<double>(sizes.length), decimals) + " x " +
           fixed(static_cast<double>(sizes.width), decimals) + " x " +
           fixed(static_cast<double>(sizes.height), decimals) + " mm";
}

std::string verdict(const BatchReport& report) {
    const Measurement& whole = report.whole.measurement;
    const std::string mode = " (" + modeName(report.whole.mode) + "): ";
    if (whole.diagnosis.reason != Reason::None) {
        return "Refused" + mode + whole.diagnosis.message + "\n\n";
    }
    return "Agreed" + mode + "mean " + sizesText(sizesOf(whole.result), 1) + " of " +
           frameCount(report.batch.frames.size()) + ", largest differences " +
           sizesText(report.batch.spread.value_or(Sizes{}), 1) + "\n\n";
}

}  // namespace

std::string batchTable(const BatchReport& report) {
    Rows conditions;
    addConditions(report.whole, conditions);
    const std::string frames = report.batch.frames.empty() ? "" : tableText(frameRows(report)) + "\n";
    return verdict(report) + frames + tableText(conditions) + notesText(report.whole.measurement.notes);
}

}  // namespace quorvel::kit
