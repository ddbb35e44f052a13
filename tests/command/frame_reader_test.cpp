// SPDX-License-Identifier: Apache-2.0
#include "kit/input/frame_reader.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "command_run.h"
#include "kit/input/input_error.h"
#include "kit/input/png_check.h"

namespace quorvel::command {

using namespace kit;
namespace {

class FrameReader : public ::testing::Test {
protected:
    std::string write(const std::string& name, const cv::Mat& image) const {
        EXPECT_TRUE(cv::imwrite(folder_.file(name), image)) << name;
        return folder_.file(name);
    }

    template <typename Read>
    static std::string complaint(Read read) {
        try {
            read();
        } catch (const InputError& error) {
            return error.what();
        }
        return "accepted";
    }

    TemporaryFolder folder_;
};

TEST_F(FrameReader, ReadsSixteenBitPngAndTiffAndFloatTiff) {
    const cv::Mat depth(6, 8, CV_16UC1, cv::Scalar(1234));
    for (const char* name : {"depth.png", "depth.tif"}) {
        EXPECT_EQ(cv::norm(readDepth(write(name, depth), 1.0), depth, cv::NORM_INF), 0.0) << name;
    }
    const cv::Mat metres(6, 8, CV_32FC1, cv::Scalar(1.234));
    EXPECT_EQ(cv::norm(readDepth(write("metres.tif", metres), 1000.0), depth, cv::NORM_INF), 0.0);
}

TEST_F(FrameReader, DepthOfAnotherKindIsRefused) {
    const std::string eight = write("eight.png", cv::Mat(6, 8, CV_8UC1, cv::Scalar(200)));
    EXPECT_NE(complaint([&] { readDepth(eight, 1.0); }).find("8-bit values in 1 channel"), std::string::npos);
    const std::string color = write("color.png", cv::Mat(6, 8, CV_16UC3, cv::Scalar(200, 1, 1)));
    EXPECT_NE(complaint([&] { readDepth(color, 1.0); }).find("16-bit values in 3 channels"), std::string::npos);
}

TEST_F(FrameReader, MetresWithoutScaleAreRefused) {
    const std::string path = write("metres.tif", cv::Mat(6, 8, CV_32FC1, cv::Scalar(1.2)));
    const std::string message = complaint([&] { readDepth(path, 1.0); });
    EXPECT_NE(message.find("--depth-scale"), std::string::npos) << message;
    EXPECT_NE(message.find("1.200 mm"), std::string::npos) << message;
}

TEST_F(FrameReader, FrameWithoutAnyDepthIsReadable) {
    const std::string path = write("blank.png", cv::Mat::zeros(6, 8, CV_16UC1));
    EXPECT_EQ(cv::countNonZero(readDepth(path, 1.0)), 0);
}

TEST_F(FrameReader, ColorIsConvertedToThreeEightBitChannels) {
    const cv::Mat grey(6, 8, CV_8UC1, cv::Scalar(90));
    const cv::Mat alpha(6, 8, CV_8UC4, cv::Scalar(10, 20, 30, 128));
    const cv::Mat deep(6, 8, CV_16UC3, cv::Scalar(257 * 10, 257 * 20, 257 * 30));
    EXPECT_EQ(readColor(write("grey.png", grey)).at<cv::Vec3b>(2, 3), cv::Vec3b(90, 90, 90));
    EXPECT_EQ(readColor(write("alpha.png", alpha)).at<cv::Vec3b>(2, 3), cv::Vec3b(10, 20, 30));
    EXPECT_EQ(readColor(write("deep.png", deep)).at<cv::Vec3b>(2, 3), cv::Vec3b(10, 20, 30));
}

TEST_F(FrameReader, GreyPictureStandsInForMissingColor) {
    const std::string depth = write("depth.png", cv::Mat(6, 8, CV_16UC1, cv::Scalar(900)));
    const FramePair frame = readFrame("", depth, 1.0);
    EXPECT_EQ(frame.color.type(), CV_8UC3);
    EXPECT_EQ(frame.color.size(), frame.depth.size());
}

TEST_F(FrameReader, SizesMustAgree) {
    const std::string depth = write("depth.png", cv::Mat(6, 8, CV_16UC1, cv::Scalar(900)));
    const std::string color = write("color.png", cv::Mat(12, 16, CV_8UC3, cv::Scalar(1, 2, 3)));
    const std::string message = complaint([&] { readFrame(color, depth, 1.0); });
    EXPECT_NE(message.find("is 16 x 12 pixels"), std::string::npos) << message;
    EXPECT_NE(message.find("is 8 x 6"), std::string::npos) << message;
    const FramePair frame = readFrame("", depth, 1.0);
    EXPECT_NE(complaint([&] { requireSize(frame, {640, 480}, depth); }).find("given as 640 x 480"), std::string::npos);
    EXPECT_EQ(complaint([&] { requireSize(frame, {8, 6}, depth); }), "accepted");
}

TEST_F(FrameReader, FilesThatAreNoPicturesAreRefused) {
    folder_.write("words.png", "these are words");
    folder_.write("empty.png", "");
    for (const char* name : {"words.png", "empty.png"}) {
        const std::string path = folder_.file(name);
        EXPECT_NE(complaint([&] { readColor(path); }).find("cannot be read as a picture"), std::string::npos) << name;
    }
    EXPECT_NE(complaint([&] { readColor(folder_.path().string()); }).find("is a folder"), std::string::npos);
    EXPECT_NE(complaint([&] { readColor(folder_.file("none.png")); }).find("no such readable file"), std::string::npos);
}

class PngDamage : public ::testing::Test {
protected:
    PngDamage() {
        cv::Mat noise(40, 50, CV_16UC1);
        cv::randu(noise, 500, 1500);
        cv::imencode(".png", noise, bytes_);
    }
    std::vector<unsigned char> bytes_;
};

TEST_F(PngDamage, SoundFileHasNone) {
    EXPECT_EQ(pngDamage(bytes_), "");
}

TEST_F(PngDamage, OtherFilesAreNotJudged) {
    EXPECT_EQ(pngDamage({'I', 'I', '*', 0}), "");
}

TEST_F(PngDamage, EveryShortenedFileEndsEarly) {
    for (std::size_t size = 8; size < bytes_.size(); ++size) {
        const std::vector<unsigned char> part(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(size));
        ASSERT_NE(pngDamage(part).find("ends early, at byte " + std::to_string(size)), std::string::npos) << size;
    }
}

TEST_F(PngDamage, EveryFlippedBitIsFound) {
    for (std::size_t at = 8; at < bytes_.size(); ++at) {
        bytes_[at] ^= 0x10U;
        ASSERT_NE(pngDamage(bytes_), "") << "byte " << at;
        bytes_[at] ^= 0x10U;
    }
}

}  // namespace
}  // namespace quorvel::command
