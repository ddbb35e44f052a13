// SPDX-License-Identifier: Apache-2.0
#include "kit/replay/replay_output.h"

#include <limits>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace quorvel::command {

using namespace kit;
namespace {

using Json = nlohmann::json;

ReplayOutcome measured(ReplayStatus status, double change) {
    ReplayOutcome outcome;
    outcome.folder = "log/2026-11/2026-11-16-02-31-32";
    outcome.status = status;
    outcome.recorded = {198.1F, 297.7F, 146.2F, std::vector<cv::Point2f>(8)};
    outcome.replayed.length = 297.75F;
    outcome.replayed.width = 198.1F;
    outcome.replayed.height = 146.2F;
    outcome.replayed.inView = true;
    outcome.replayed.corners.resize(8);
    outcome.change = change;
    outcome.shift = 0.25;
    return outcome;
}

ReplayOutcome unreadable(const std::string& folder, const std::string& note) {
    ReplayOutcome outcome;
    outcome.folder = folder;
    outcome.note = note;
    return outcome;
}

TEST(ReplayOutput, TableRowsStandUnderTheirHeads) {
    const std::string header = replayHeader(ReplayFormat::Table);
    const std::string row = replayRow(ReplayFormat::Table, measured(ReplayStatus::Same, 0.05));
    EXPECT_EQ(row,
              "same        297.7 x 198.1 x 146.2   297.8 x 198.1 x 146.2   0.050       "
              "log/2026-11/2026-11-16-02-31-32\n");
    EXPECT_EQ(header.find("recorded"), row.find("297.7"));
    EXPECT_EQ(header.find("replayed"), row.find("297.8"));
    EXPECT_EQ(header.find("change"), row.find("0.050"));
    EXPECT_EQ(header.find("capture"), row.find("log/"));
}

TEST(ReplayOutput, TableSaysWhyACaptureIsUnreadable) {
    EXPECT_EQ(replayRow(ReplayFormat::Table, unreadable("here", "para.txt is missing")),
              "unreadable  -                       -                       -           here (para.txt is missing)\n");
}

TEST(ReplayOutput, CsvHasOneFieldAColumn) {
    EXPECT_EQ(replayHeader(ReplayFormat::Csv),
              "capture,status,recorded_length_mm,recorded_width_mm,recorded_height_mm,replayed_length_mm,"
              "replayed_width_mm,replayed_height_mm,change_mm,shift_px,note\n");
    EXPECT_EQ(replayRow(ReplayFormat::Csv, measured(ReplayStatus::Changed, 0.05)),
              "log/2026-11/2026-11-16-02-31-32,changed,297.7,198.1,146.2,297.75,198.1,146.2,0.050000,0.250000,\n");
    EXPECT_EQ(replayRow(ReplayFormat::Csv, unreadable("a, b", "is \"cut\"")),
              "\"a, b\",unreadable,,,,,,,,,\"is \"\"cut\"\"\"\n");
}

TEST(ReplayOutput, JsonLineIsOneObject) {
    const std::string line = replayRow(ReplayFormat::JsonLines, measured(ReplayStatus::Changed, 0.05));
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    EXPECT_EQ(Json::parse(line), Json::parse(R"({"capture": "log/2026-11/2026-11-16-02-31-32", "status": "changed",
                  "recorded": {"length_mm": 297.7, "width_mm": 198.1, "height_mm": 146.2},
                  "replayed": {"length_mm": 297.75, "width_mm": 198.1, "height_mm": 146.2, "in_view": true},
                  "change_mm": 0.05, "shift_px": 0.25, "note": null})"));
    const Json broken = Json::parse(replayRow(ReplayFormat::JsonLines, unreadable("here", "why")));
    EXPECT_EQ(broken["status"], "unreadable");
    EXPECT_TRUE(broken["recorded"].is_null());
    EXPECT_TRUE(broken["replayed"].is_null());
    EXPECT_TRUE(broken["change_mm"].is_null());
    EXPECT_EQ(broken["note"], "why");
    EXPECT_EQ(replayHeader(ReplayFormat::JsonLines), "");
}

TEST(ReplayOutput, AFolderNameThatIsNoTextStillGivesJson) {
    const Json row = Json::parse(replayRow(ReplayFormat::JsonLines, unreadable("bad\xff name", "")), nullptr, false);
    EXPECT_FALSE(row.is_discarded());
}

TEST(ReplaySummaryText, CountsEveryStatus) {
    ReplaySummary summary;
    summary.add(measured(ReplayStatus::Same, 0.25));
    summary.add(measured(ReplayStatus::Same, 0.5));
    summary.add(measured(ReplayStatus::Changed, 2.0));
    ReplayOutcome empty;
    empty.status = ReplayStatus::Empty;
    summary.add(empty);
    summary.add(unreadable("x", "y"));
    summary.add(unreadable("x", "y"));
    EXPECT_EQ(summary.total(), 6U);
    EXPECT_EQ(
        summaryText(summary, 1.0),
        "6 captures: 3 measured, 1 empty, 2 unreadable; 1 changed (by more than 1.000 mm, found or lost), largest "
        "change 2.000 mm\n");
}

TEST(ReplaySummaryText, CountsOneInTheSingular) {
    ReplaySummary summary;
    summary.add(unreadable("x", "y"));
    EXPECT_EQ(summaryText(summary, 2.0).rfind("1 capture: 0 measured, 0 empty, 1 unreadable; 0 changed", 0), 0U)
        << summaryText(summary, 2.0);
}

}  // namespace
}  // namespace quorvel::command
