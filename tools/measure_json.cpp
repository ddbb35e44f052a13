// SPDX-License-Identifier: Apache-2.0
#include "measure_report.h"
#include "mode_option.h"
#include "report_json.h"

namespace quorvel::command {

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
    document["surface_points"] = m.facts.surfacePoints;
    document.update(conditionsJson(report));
    document["timing"] = timingJson(report.timing);
    return documentText(document);
}

}  // namespace quorvel::command
