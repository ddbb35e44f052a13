// SPDX-License-Identifier: Apache-2.0
#include "kit/replay/replay_output.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

#include <nlohmann/json.hpp>

#include "kit/account/text_format.h"
#include "kit/report/json_number.h"

namespace quorvel::kit {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kStatusWidth = 12;
constexpr int kSizesWidth = 24;
constexpr int kChangeWidth = 12;

template <typename Reading>
std::string sizesText(const Reading& reading) {
    std::string text;
    for (const float size : {reading.length, reading.width, reading.height}) {
        text += (text.empty() ? "" : " x ") + fixed(static_cast<double>(size), 1);
    }
    return text;
}

bool isCompared(const ReplayOutcome& outcome) {
    return outcome.isRecorded() && outcome.isReplayed();
}

std::string tableLine(const std::string& status, const std::string& recorded, const std::string& replayed,
                      const std::string& change, const std::string& capture) {
    std::ostringstream line;
    line << std::left << std::setw(kStatusWidth) << status << std::setw(kSizesWidth) << recorded
         << std::setw(kSizesWidth) << replayed << std::setw(kChangeWidth) << change << capture << '\n';
    return line.str();
}

std::string tableRow(const ReplayOutcome& outcome) {
    return tableLine(statusName(outcome.status), outcome.isRecorded() ? sizesText(outcome.recorded) : "-",
                     outcome.isReplayed() ? sizesText(outcome.replayed) : "-",
                     isCompared(outcome) ? fixed(outcome.change, 3) : "-",
                     outcome.folder + (outcome.note.empty() ? "" : " (" + outcome.note + ")"));
}

/// A field according to RFC 4180: quoted when it holds a comma, a quote or a line break, quotes doubled.
std::string csvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
    }
    return quoted + '"';
}

template <typename Reading>
std::string csvSizes(const Reading& reading, bool present) {
    std::string text;
    for (const float size : {reading.length, reading.width, reading.height}) {
        text += "," + (present ? shortestText(size) : std::string());
    }
    return text;
}

std::string csvRow(const ReplayOutcome& outcome) {
    constexpr int kDecimals = 6;
    const bool compared = isCompared(outcome);
    return csvField(outcome.folder) + "," + statusName(outcome.status) +
           csvSizes(outcome.recorded, outcome.isRecorded()) + csvSizes(outcome.replayed, outcome.isReplayed()) + "," +
           (compared ? fixed(outcome.change, kDecimals) : "") + "," +
           (compared ? fixed(outcome.shift, kDecimals) : "") + "," + csvField(outcome.note) + "\n";
}

template <typename Reading>
Json sizesObject(const Reading& reading, bool present) {
    if (!present) {
        return nullptr;
    }
    return {{"length_mm", jsonNumber(reading.length)},
            {"width_mm", jsonNumber(reading.width)},
            {"height_mm", jsonNumber(reading.height)}};
}

std::string jsonRow(const ReplayOutcome& outcome) {
    const bool compared = isCompared(outcome);
    Json replayed = sizesObject(outcome.replayed, outcome.isReplayed());
    if (outcome.isReplayed()) {
        replayed["in_view"] = outcome.replayed.inView;
    }
    const Json row{{"capture", outcome.folder},
                   {"status", statusName(outcome.status)},
                   {"recorded", sizesObject(outcome.recorded, outcome.isRecorded())},
                   {"replayed", replayed},
                   {"change_mm", compared ? Json(outcome.change) : Json()},
                   {"shift_px", compared ? Json(outcome.shift) : Json()},
                   {"note", outcome.note.empty() ? Json() : Json(outcome.note)}};
    // A folder's name may have any bytes. Bytes that are not UTF-8 are replaced, so that they do not end the run.
    return row.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

std::string replayHeader(ReplayFormat format) {
    switch (format) {
        case ReplayFormat::Table:
            return tableLine("status", "recorded, mm", "replayed, mm", "change, mm", "capture");
        case ReplayFormat::Csv:
            return "capture,status,recorded_length_mm,recorded_width_mm,recorded_height_mm,replayed_length_mm,"
                   "replayed_width_mm,replayed_height_mm,change_mm,shift_px,note\n";
        default:
            return {};
    }
}

std::string replayRow(ReplayFormat format, const ReplayOutcome& outcome) {
    switch (format) {
        case ReplayFormat::Table:
            return tableRow(outcome);
        case ReplayFormat::Csv:
            return csvRow(outcome);
        default:
            return jsonRow(outcome);
    }
}

void ReplaySummary::add(const ReplayOutcome& outcome) {
    switch (outcome.status) {
        case ReplayStatus::Same:
            ++same;
            break;
        case ReplayStatus::Changed:
            ++changed;
            break;
        case ReplayStatus::Empty:
            ++empty;
            break;
        default:
            ++unreadable;
    }
    largestChange = std::max(largestChange, outcome.change);
}

std::string summaryText(const ReplaySummary& summary, double tolerance) {
    std::ostringstream text;
    text << summary.total() << (summary.total() == 1 ? " capture: " : " captures: ") << summary.same + summary.changed
         << " measured, " << summary.empty << " empty, " << summary.unreadable << " unreadable; " << summary.changed
         << " changed (by more than " << fixed(tolerance, 3) << " mm, found or lost), largest change "
         << fixed(summary.largestChange, 3) << " mm\n";
    return text.str();
}

}  // namespace quorvel::kit
