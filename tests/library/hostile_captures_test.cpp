// SPDX-License-Identifier: Apache-2.0
// Stored captures that were damaged or forged: the constructor must return for any content.
#include <climits>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "library/hostile_draws.h"
#include "support/captured_output.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

using Bytes = std::vector<uchar>;

/// The checksum of a PNG chunk: Portable Network Graphics, ISO/IEC 15948, annex D.
std::uint32_t checksum(const uchar* bytes, std::size_t count) {
    std::uint32_t sum = 0xFFFFFFFFU;
    for (std::size_t i = 0; i < count; ++i) {
        sum ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit) {
            sum = (sum >> 1) ^ ((sum & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return ~sum;
}

void putBigEndian(Bytes& bytes, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[at + i] = static_cast<uchar>(value >> (24 - 8 * i));
    }
}

/// A PNG that claims another size than it has. Its header chunk follows the eight bytes of the signature: length and
/// name, then width, height and five bytes more, then the checksum of name and content.
Bytes claimingPng(const cv::Mat& image, std::uint32_t width, std::uint32_t height) {
    Bytes bytes;
    cv::imencode(".png", image, bytes);
    putBigEndian(bytes, 16, width);
    putBigEndian(bytes, 20, height);
    putBigEndian(bytes, 29, checksum(bytes.data() + 12, 17));
    return bytes;
}

std::uint32_t littleEndian(const Bytes& bytes, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
        value |= static_cast<std::uint32_t>(bytes.at(at + i)) << (8 * i);
    }
    return value;
}

/// A TIFF that claims another size than it has: the entries 256 (width) and 257 (height) of its directory, twelve bytes
/// each, are written as long numbers (type 4).
Bytes claimingTiff(const cv::Mat& image, std::uint32_t width, std::uint32_t height) {
    Bytes bytes;
    cv::imencode(".tif", image, bytes);
    const std::size_t directory = littleEndian(bytes, 4, 4);
    const std::size_t entries = littleEndian(bytes, directory, 2);
    for (std::size_t i = 0; i < entries; ++i) {
        const std::size_t entry = directory + 2 + 12 * i;
        const std::uint32_t tag = littleEndian(bytes, entry, 2);
        if (tag != 256 && tag != 257) {
            continue;
        }
        const std::uint32_t value = tag == 256 ? width : height;
        bytes[entry + 2] = 4;
        for (std::size_t k = 0; k < 4; ++k) {
            bytes[entry + 8 + k] = static_cast<uchar>(value >> (8 * k));
        }
    }
    return bytes;
}

class HostileCaptures : public ::testing::Test {
protected:
    /// The values of a para.txt, line by line: the down-scale factor first, width and height last.
    static std::vector<std::string> parameters() {
        return {"4",        "7.250000", "32.000000", "24.000000", "60.000000",   "61.000000", "0.016667",
                "0.016393", "0.000000", "0.000000",  "1.000000",  "1000.000000", "64",        "48"};
    }

    static void writeParameters(const std::vector<std::string>& lines) {
        std::ofstream file("capture/para.txt");
        for (const std::string& line : lines) {
            file << line << "\n";
        }
    }

    static void writeBytes(const std::string& name, const Bytes& bytes) {
        std::ofstream file("capture/" + name, std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    void writeCapture() const {
        writeParameters(parameters());
        cv::imwrite("capture/color.png", color_);
        cv::imwrite("capture/depth.tif", depth_);
    }

    /// Starts on the capture and uses the ruler further; checks that no frame is taken in.
    static void expectNoFrame() {
        Quorvel ruler(1, 2, 3, 4, 640, 480, true, "capture");
        EXPECT_TRUE(ruler.pointCloud.empty());
        EXPECT_TRUE(isEmptyResult(ruler.result));
        EXPECT_FALSE(ruler.getCameraFrame(cv::Mat(), cv::Mat()));
        EXPECT_EQ(ruler.measureOnce(), 1);
        float t = 0;
        EXPECT_EQ(ruler.calibRef(t, 0), 0);
        EXPECT_EQ(ruler.ransacCalibRef(), 0);
    }

    cv::Mat color_ = cv::Mat(48, 64, CV_8UC3, cv::Scalar(10, 20, 30));
    cv::Mat depth_;

private:
    void SetUp() override {
        std::filesystem::create_directory("capture");
        Draws draws(1);
        depth_ = blockScene(200).depth(draws);
    }

    const WorkingDirectory directory_;
    const CapturedOutput output_;
};

TEST_F(HostileCaptures, MayClaimAnyDownScale) {
    for (const int downScale : kOddInts) {
        writeCapture();
        std::vector<std::string> lines = parameters();
        lines[0] = std::to_string(downScale);
        writeParameters(lines);
        if (downScale != 1) {
            expectNoFrame();
        }
        EXPECT_EQ(Quorvel(1, 2, 3, 4, 640, 480, true, "capture").downScale, downScale);
    }
}

TEST_F(HostileCaptures, MayClaimAnySize) {
    writeCapture();
    for (const int width : kOddInts) {
        for (const int height : kOddInts) {
            std::vector<std::string> lines = parameters();
            lines[12] = std::to_string(width);
            lines[13] = std::to_string(height);
            writeParameters(lines);
            expectNoFrame();
            ASSERT_FALSE(HasFailure()) << width << " x " << height;
        }
    }
}

TEST_F(HostileCaptures, MayHoldAnyNumbers) {
    const std::vector<std::string> odd{"nan", "inf", "-inf", "0", "-0", "1e-45", "1e-38", "3e38", "-3e38", "-1"};
    for (std::size_t line = 1; line < 12; ++line) {
        for (const std::string& number : odd) {
            writeCapture();
            std::vector<std::string> lines = parameters();
            lines[line] = number;
            writeParameters(lines);
            Quorvel ruler(1, 2, 3, 4, 640, 480, true, "capture");
            EXPECT_EQ(ruler.imageWidth, 64);
            ruler.setEffectiveRegionInArea(cv::Rect(0, 0, 64, 48));
            EXPECT_TRUE(ruler.getCameraFrame(cv::Mat(), cv::Mat()));
            measureAnything(ruler);
            ASSERT_FALSE(HasFailure()) << "line " << line + 1 << ": " << number;
        }
    }
}

TEST_F(HostileCaptures, WithNumbersThatNoTypeHoldsStartNormally) {
    for (const std::size_t line : {0U, 5U, 12U}) {
        writeCapture();
        std::vector<std::string> lines = parameters();
        lines[line] = line == 5U ? "1e400" : "99999999999";
        writeParameters(lines);
        const Quorvel ruler(1, 2, 3, 4, 640, 480, true, "capture");
        EXPECT_EQ(ruler.imageWidth, 640) << "line " << line + 1;
        EXPECT_FALSE(ruler.calibStatus) << "line " << line + 1;
    }
}

struct Claim {
    std::uint32_t width;
    std::uint32_t height;
};

const std::vector<Claim>& claims() {
    static const std::vector<Claim> all{{0, 0},           {0, 48},          {64, 0x7FFFFFFF}, {0x7FFFFFFF, 0x7FFFFFFF},
                                        {1U << 20, 1000}, {1U << 20, 2000}, {0xFFFFFFFF, 1},  {20000, 20000},
                                        {64, 49},         {65, 48}};
    return all;
}

TEST_F(HostileCaptures, MayHaveAPictureThatClaimsAnySize) {
    for (const Claim& claim : claims()) {
        writeCapture();
        writeBytes("color.png", claimingPng(color_, claim.width, claim.height));
        expectNoFrame();
        ASSERT_FALSE(HasFailure()) << claim.width << " x " << claim.height;
    }
}

TEST_F(HostileCaptures, MayHaveADepthImageThatClaimsAnySize) {
    for (const Claim& claim : claims()) {
        writeCapture();
        writeBytes("depth.tif", claimingTiff(depth_, claim.width, claim.height));
        expectNoFrame();
        ASSERT_FALSE(HasFailure()) << claim.width << " x " << claim.height;
    }
}

TEST_F(HostileCaptures, MayEndAnywhere) {
    for (const std::string name : {"color.png", "depth.tif", "para.txt"}) {
        writeCapture();
        const std::uintmax_t size = std::filesystem::file_size("capture/" + name);
        for (std::uintmax_t end = 0; end < size; end += 1 + size / 40) {
            writeCapture();
            std::filesystem::resize_file("capture/" + name, end);
            Quorvel ruler(1, 2, 3, 4, 640, 480, true, "capture");
            measureAnything(ruler);
            ASSERT_FALSE(HasFailure()) << name << " of " << end << " bytes";
        }
    }
}

TEST_F(HostileCaptures, MayBeDamagedAnywhere) {
    Draws draws(2);
    for (int i = 0; i < 300; ++i) {
        for (const bool isColor : {true, false}) {
            writeCapture();
            Bytes bytes;
            cv::imencode(isColor ? ".png" : ".tif", isColor ? color_ : depth_, bytes);
            for (int k = draws.between(1, 6); k > 0; --k) {
                draws.oneOf(bytes) = static_cast<uchar>(draws.below(256));
            }
            writeBytes(isColor ? "color.png" : "depth.tif", bytes);
            Quorvel ruler(1, 2, 3, 4, 640, 480, true, "capture");
            ruler.getCameraFrame(cv::Mat(), cv::Mat());
            measureAnything(ruler);
            ASSERT_FALSE(HasFailure()) << "damage " << i;
        }
    }
}

}  // namespace

}  // namespace quorvel::test
