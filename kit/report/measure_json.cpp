// SPDX-License-Identifier: Apache-2.0
#include "kit/input/mode_name.h"
#include "kit/report/measure_report.h"
#include "kit/report/report_json.h"

namespace quorvel::kit {

namespace {

/// Points that the sizes were taken from.
std::size_t surfacePoints(const Measurement& measurement) {
    const bool reached = measurement.account && internal::hasRecord(*measurement.account);
    return reached ? measurement.account->footprint.points : 0;
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
    Json document{{"version", report.version},
                  {"status", statusOf(m)},
                  {"reason", reasonJson(m.diagnosis)},
                  {"notes", m.notes},
                  {"mode", modeName(report.mode)}};
    document.update(resultJson(m, report.mode));
    document["surface_points"] = surfacePoints(m);
    document.update(conditionsJson(report));
    document["timing"] = timingJson(report.timing);
    return documentText(document);
}

}  // namespace quorvel::kit
