// SPDX-License-Identifier: Apache-2.0
#include <ctime>
#include <string>

#include <gtest/gtest.h>

#include "files/platform.h"
#include "files/time_text.h"
#include "support/time_zone.h"

namespace quorvel::test {

namespace {

using internal::localTime;
using internal::timeText;

constexpr std::time_t kMoment = 1794794971;  // 2026-11-16 02:09:31 UTC
const char* const kFormat = "%Y-%m-%d-%H-%M-%S";

std::string textIn(const char* zone, std::time_t time) {
    const TimeZone here(zone);
    return timeText(localTime(time), kFormat);
}

TEST(LocalTime, FollowsTheTimeZoneSetAtThisMoment) {
    if (!TimeZone::available()) {
        GTEST_SKIP() << "no time zones in the environment of this platform";
    }
    EXPECT_EQ(textIn("UTC0", kMoment), "2026-11-16-02-09-31");
    EXPECT_EQ(textIn("XYZ-14", kMoment), "2026-11-16-16-09-31");
    EXPECT_EQ(textIn("XYZ+12", kMoment), "2026-11-15-14-09-31");
    EXPECT_EQ(textIn("XYZ-05:30", kMoment), "2026-11-16-07-39-31");
    EXPECT_EQ(textIn("UTC0", kMoment), "2026-11-16-02-09-31") << "and back";
}

TEST(LocalTime, ChangesMonthAndYearWithTheZone) {
    if (!TimeZone::available()) {
        GTEST_SKIP() << "no time zones in the environment of this platform";
    }
    constexpr std::time_t kNewYear = 1798761600;  // 2027-01-01 00:00:00 UTC
    EXPECT_EQ(textIn("UTC0", kNewYear), "2027-01-01-00-00-00");
    EXPECT_EQ(textIn("UTC0", kNewYear - 1), "2026-12-31-23-59-59");
    EXPECT_EQ(textIn("XYZ+1", kNewYear), "2026-12-31-23-00-00");
}

TEST(LocalTime, KnowsSummerTime) {
    if (!TimeZone::available()) {
        GTEST_SKIP() << "no time zones in the environment of this platform";
    }
    // Summer time from the last Sunday of March to the last of October, as in central Europe.
    const char* const zone = "CET-1CEST,M3.5.0,M10.5.0/3";
    EXPECT_EQ(textIn(zone, kMoment), "2026-11-16-03-09-31");
    constexpr std::time_t kSummer = 1782864000;  // 2026-07-01 00:00:00 UTC
    EXPECT_EQ(textIn(zone, kSummer), "2026-07-01-02-00-00");
}

TEST(TimeText, FormatsAsAsked) {
    std::tm time{};
    time.tm_year = 126;
    time.tm_mon = 0;
    time.tm_mday = 2;
    time.tm_hour = 3;
    time.tm_min = 4;
    time.tm_sec = 5;
    EXPECT_EQ(timeText(time, kFormat), "2026-01-02-03-04-05") << "two digits each";
    EXPECT_EQ(timeText(time, "%Y-%m"), "2026-01");
    EXPECT_EQ(timeText(time, ""), "");
}

TEST(TimeText, IsEmptyWhenTheTextIsTooLong) {
    const std::string seventyNine(79, 'x');
    EXPECT_EQ(timeText({}, seventyNine.c_str()), seventyNine);
    EXPECT_EQ(timeText({}, (seventyNine + "x").c_str()), "");
}

}  // namespace

}  // namespace quorvel::test
