// SPDX-License-Identifier: Apache-2.0
#include "kit/input/mode_name.h"
#include "kit/report/batch_report.h"
#include "kit/report/json_number.h"
#include "kit/report/report_json.h"

namespace quorvel::kit {

namespace {

std::string batchStatus(const Measurement& whole) {
    switch (whole.diagnosis.reason) {
        case Reason::None:
            return "agreed";
        case Reason::NoPlane:
            return "no_plane";
        default:
            return "refused";
    }
}

Json batchReason(const BatchReport& report) {
    Json reason = reasonJson(report.whole.measurement.diagnosis);
    if (!reason.is_null()) {
        reason["dimension"] = report.batch.dimension.empty() ? Json() : Json(report.batch.dimension);
    }
    return reason;
}

Json sizesJson(const Sizes& sizes) {
    return {
        {"length", jsonNumber(sizes.length)}, {"width", jsonNumber(sizes.width)}, {"height", jsonNumber(sizes.height)}};
}

Json frameJson(const FrameFiles& files, const Measurement& frame, ProductType mode) {
    Json object{{"color", files.color.empty() ? Json() : Json(files.color)},
                {"depth", files.depth},
                {"status", statusOf(frame)},
                {"reason", reasonJson(frame.diagnosis)}};
    object.update(resultJson(frame, mode));
    return object;
}

Json framesJson(const BatchReport& report) {
    Json list = Json::array();
    for (std::size_t i = 0; i < report.batch.frames.size(); ++i) {
        list.push_back(frameJson(report.files[i], report.batch.frames[i], report.whole.mode));
    }
    return list;
}

}  // namespace

std::string batchJson(const BatchReport& report) {
    const MeasureReport& whole = report.whole;
    Json document{{"version", whole.version},
                  {"status", batchStatus(whole.measurement)},
                  {"reason", batchReason(report)},
                  {"notes", whole.measurement.notes},
                  {"mode", modeName(whole.mode)}};
    document.update(resultJson(whole.measurement, whole.mode));
    document["tolerance_mm"] = sizesJson(report.tolerance);
    document["spread_mm"] = report.batch.spread ? sizesJson(*report.batch.spread) : Json();
    document["frames"] = framesJson(report);
    document.update(conditionsJson(whole));
    return documentText(document);
}

}  // namespace quorvel::kit
