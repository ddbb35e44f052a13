// SPDX-License-Identifier: Apache-2.0
#include "files/capture_reader.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "support/working_directory.h"

namespace quorvel::test {

namespace {

using internal::CaptureParameters;
using internal::readCaptureParameters;

const std::string kFourteen =
    "4\n10.500000\n319.250000\n239.750000\n610.500000\n611.500000\n0.001638\n0.001635\n"
    "0.010000\n-0.020000\n0.999750\n712.345673\n640\n480\n";

bool read(const std::string& text, CaptureParameters& capture) {
    const WorkingDirectory directory;
    std::ofstream("para.txt", std::ios::binary) << text;
    const std::optional<CaptureParameters> read = readCaptureParameters("para.txt");
    capture = read.value_or(capture);
    return read.has_value();
}

void expectFourteen(const CaptureParameters& capture) {
    EXPECT_EQ(capture.downScale, 4);
    EXPECT_EQ(capture.minObjectHeight, 10.5F);
    EXPECT_EQ(capture.cx, 319.25F);
    EXPECT_EQ(capture.cy, 239.75F);
    EXPECT_EQ(capture.fx, 610.5F);
    EXPECT_EQ(capture.fy, 611.5F);
    EXPECT_EQ(capture.invFx, 0.001638F);
    EXPECT_EQ(capture.invFy, 0.001635F);
    EXPECT_EQ(capture.plane.normal, cv::Vec3f(0.01F, -0.02F, 0.99975F));
    EXPECT_EQ(capture.plane.offset, 712.345673F);
    EXPECT_EQ(capture.imageWidth, 640);
    EXPECT_EQ(capture.imageHeight, 480);
}

TEST(CaptureReader, ReadsEveryValueInItsPlace) {
    CaptureParameters capture;
    EXPECT_TRUE(read(kFourteen, capture));
    expectFourteen(capture);
}

TEST(CaptureReader, AcceptsAnyWhiteSpaceBetweenTheValues) {
    std::string oneLine = kFourteen;
    std::string windows;
    for (char& character : oneLine) {
        windows += character == '\n' ? std::string("\r\n\n") : std::string(1, character);
        character = character == '\n' ? '\t' : character;
    }
    CaptureParameters capture;
    EXPECT_TRUE(read("  " + oneLine, capture));
    expectFourteen(capture);
    CaptureParameters other;
    EXPECT_TRUE(read(windows, other));
    expectFourteen(other);
    CaptureParameters unended;
    EXPECT_TRUE(read(kFourteen.substr(0, kFourteen.size() - 1), unended)) << "no end of line after the last value";
    expectFourteen(unended);
}

TEST(CaptureReader, IgnoresWhatFollows) {
    CaptureParameters capture;
    EXPECT_TRUE(read(kFourteen + "99\nrest\n", capture));
    expectFourteen(capture);
}

TEST(CaptureReader, RefusesAFileThatIsShort) {
    for (std::size_t end = kFourteen.size(); (end = kFourteen.rfind('\n', end - 1)) != std::string::npos && end > 0;) {
        CaptureParameters capture;
        const std::string text = kFourteen.substr(0, end);
        const bool complete = end == kFourteen.size() - 1;
        EXPECT_EQ(read(text, capture), complete) << text;
    }
    CaptureParameters capture;
    EXPECT_FALSE(read("", capture));
    EXPECT_FALSE(read("\n\n", capture));
}

TEST(CaptureReader, RefusesAValueThatIsNoNumber) {
    std::size_t start = 0;
    for (int line = 0; line < 14; ++line) {
        const std::size_t end = kFourteen.find('\n', start);
        const std::string text = kFourteen.substr(0, start) + "none" + kFourteen.substr(end);
        CaptureParameters capture;
        EXPECT_FALSE(read(text, capture)) << "line " << line + 1;
        start = end + 1;
    }
}

TEST(CaptureReader, RefusesAWholeNumberThatIntDoesNotHold) {
    CaptureParameters capture;
    EXPECT_FALSE(read("99999999999\n" + kFourteen.substr(2), capture));
}

TEST(CaptureReader, GoesOnRightBehindANumber) {
    // A fraction where a whole number is expected becomes the next value, as with formatted scanning.
    CaptureParameters capture;
    EXPECT_TRUE(read("4.5\n" + kFourteen.substr(kFourteen.find('\n', 2) + 1), capture));
    EXPECT_EQ(capture.downScale, 4);
    EXPECT_EQ(capture.minObjectHeight, 0.5F);
    EXPECT_EQ(capture.imageHeight, 480);
}

TEST(CaptureReader, RefusesAFileThatCannotBeOpened) {
    const WorkingDirectory directory;
    CaptureParameters capture;
    EXPECT_FALSE(readCaptureParameters("missing.txt"));
    std::filesystem::create_directory("para.txt");
    EXPECT_FALSE(readCaptureParameters("para.txt")) << "a folder of that name";
}

}  // namespace

}  // namespace quorvel::test
