// SPDX-License-Identifier: Apache-2.0
#include "files/calibration_file.h"

#include <filesystem>
#include <fstream>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "files/text_file.h"
#include "library/comma_locale.h"
#include "support/random.h"
#include "support/same_bits.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

using internal::Plane;
using internal::readCalibrationFile;
using internal::readTextFile;
using internal::writeCalibrationFile;

const Plane kHeld{cv::Vec3f(-71.0F, -72.0F, -73.0F), -74.0F};

std::string written(const Plane& plane) {
    writeCalibrationFile("cal.txt", plane);
    return readTextFile("cal.txt").value_or("no file");
}

/// \return what a plane of -71, -72, -73 and -74 becomes when this text is read into it
cv::Vec4f readInto(const std::string& text) {
    std::ofstream("cal.txt", std::ios::binary) << text;
    Plane plane = kHeld;
    const std::optional<Plane> read = readCalibrationFile("cal.txt", plane);
    EXPECT_TRUE(read) << text;
    plane = read.value_or(plane);
    return {plane.normal[0], plane.normal[1], plane.normal[2], plane.offset};
}

TEST(WriteCalibrationFile, WritesOneLineOfFourNumbers) {
    const WorkingDirectory here;
    EXPECT_EQ(written({cv::Vec3f(0.0F, 0.0F, 1.0F), 1000.0F}), "0.000000 0.000000 1.000000 1000.000000\n");
    EXPECT_EQ(written({cv::Vec3f(-0.0F, -0.6F, 0.8F), 1234.5F}), "-0.000000 -0.600000 0.800000 1234.500000\n");
}

TEST(WriteCalibrationFile, ReplacesALongerFile) {
    const WorkingDirectory here;
    std::ofstream("cal.txt") << std::string(500, '9');
    EXPECT_EQ(written({}), "0.000000 0.000000 0.000000 0.000000\n");
}

TEST(WriteCalibrationFile, SkipsAFileThatCannotBeOpened) {
    const WorkingDirectory here;
    writeCalibrationFile("missing/cal.txt", kHeld);
    EXPECT_FALSE(std::filesystem::exists("missing"));
    std::filesystem::create_directory("cal.txt");
    writeCalibrationFile("cal.txt", kHeld);
    EXPECT_TRUE(std::filesystem::is_empty("cal.txt"));
}

TEST(ReadCalibrationFile, ReadsFourNumbers) {
    const WorkingDirectory here;
    EXPECT_EQ(readInto("0.250000 -0.500000 0.750000 1234.500000\n"), cv::Vec4f(0.25F, -0.5F, 0.75F, 1234.5F));
    EXPECT_EQ(readInto("  0.25\n-0.5\t0.75\r\n1234.5"), cv::Vec4f(0.25F, -0.5F, 0.75F, 1234.5F)) << "any white space";
    EXPECT_EQ(readInto("1 2 3 4 5 6\nmore"), cv::Vec4f(1, 2, 3, 4)) << "what follows is not looked at";
}

TEST(ReadCalibrationFile, FieldsThatAreMissingKeepTheirValues) {
    const WorkingDirectory here;
    EXPECT_EQ(readInto(""), cv::Vec4f(-71, -72, -73, -74));
    EXPECT_EQ(readInto("\n"), cv::Vec4f(-71, -72, -73, -74));
    EXPECT_EQ(readInto("0.5\n"), cv::Vec4f(0.5F, -72, -73, -74));
    EXPECT_EQ(readInto("0.5 0.25 0.125"), cv::Vec4f(0.5F, 0.25F, 0.125F, -74));
}

TEST(ReadCalibrationFile, ReadingStopsAtTheFirstFieldThatIsNoNumber) {
    const WorkingDirectory here;
    EXPECT_EQ(readInto("x 1 2 3"), cv::Vec4f(-71, -72, -73, -74));
    EXPECT_EQ(readInto("0.5 x 2 3"), cv::Vec4f(0.5F, -72, -73, -74));
    EXPECT_EQ(readInto("0,5 0,25 0,75 1000,5"), cv::Vec4f(0, -72, -73, -74)) << "a decimal comma ends the number";
}

TEST(ReadCalibrationFile, AFileThatCannotBeOpenedLeavesThePlane) {
    const WorkingDirectory here;
    Plane plane = kHeld;
    EXPECT_FALSE(readCalibrationFile("cal.txt", plane));
    std::filesystem::create_directory("cal.txt");
    EXPECT_FALSE(readCalibrationFile("cal.txt", plane)) << "a folder of that name";
    EXPECT_EQ(plane.normal, kHeld.normal);
    EXPECT_EQ(plane.offset, kHeld.offset);
}

TEST(ReadCalibrationFile, RestoresWhatWasWrittenToSixDecimals) {
    const WorkingDirectory here;
    Draws random(141);
    for (int i = 0; i < 100; ++i) {
        Plane plane;
        for (int k = 0; k < 3; ++k) {
            plane.normal[k] = random.real(-1.0F, 1.0F);
        }
        plane.offset = random.real(200.0F, 4000.0F);
        writeCalibrationFile("cal.txt", plane);
        Plane back;
        const std::optional<Plane> read = readCalibrationFile("cal.txt", back);
        ASSERT_TRUE(read);
        back = *read;
        for (int k = 0; k < 3; ++k) {
            EXPECT_NEAR(back.normal[k], plane.normal[k], 5.1e-7) << "component " << k;
        }
        EXPECT_EQ(back.offset, plane.offset) << "floats above 128 are farther apart than six decimals";
    }
}

void expectTheSameFileInThisLocale() {
    const Plane plane{cv::Vec3f(0.25F, -0.5F, 0.75F), 1234567.5F};
    EXPECT_EQ(written(plane), "0.250000 -0.500000 0.750000 1234567.500000\n");
    EXPECT_EQ(readInto("0.250000 -0.500000 0.750000 1234.500000\n"), cv::Vec4f(0.25F, -0.5F, 0.75F, 1234.5F));
}

TEST(CalibrationFile, DoesNotFollowTheGlobalStreamLocale) {
    const WorkingDirectory here;
    const CommaStreamLocale comma;
    expectTheSameFileInThisLocale();
}

TEST(CalibrationFile, DoesNotFollowTheCLocale) {
    const CommaCLocale comma;
    if (!comma.available()) {
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    const WorkingDirectory here;
    expectTheSameFileInThisLocale();
}

TEST(ReadCalibrationFile, RestoresAPlaneThatIsNoNumber) {
    const WorkingDirectory here;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    writeCalibrationFile("cal.txt", {cv::Vec3f(nan, nan, nan), std::numeric_limits<float>::infinity()});
    Plane back;
    const std::optional<Plane> read = readCalibrationFile("cal.txt", back);
    ASSERT_TRUE(read);
    back = *read;
    EXPECT_TRUE(sameBits(back.normal, cv::Vec3f(nan, nan, nan)));
    EXPECT_EQ(back.offset, std::numeric_limits<float>::infinity());
}

}  // namespace

}  // namespace quorvel::test
