// SPDX-License-Identifier: Apache-2.0
// Frames that no camera sends: of other types, sizes and strides, without pixels, of any content.
#include <array>
#include <cstddef>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "library/frame_draws.h"
#include "library/hostile_draws.h"
#include "library/same_ruler.h"
#include "support/captured_output.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

constexpr std::array<ProductType, 4> kModes{KIOSK, GROUND_TRACKING, GROUND_GROWING, KIOSK_LOW_OBJECT};

/// \return whether two images have one form and the same bytes
bool sameBytes(const cv::Mat& a, const cv::Mat& b) {
    if (a.type() != b.type() || a.size != b.size) {
        return false;
    }
    const cv::Mat left = a.clone();  // without gaps between the rows
    const cv::Mat right = b.clone();
    return std::memcmp(left.data, right.data, left.total() * left.elemSize()) == 0;
}

/// A ruler that has taken and measured a frame, so that a refused one has something to change.
class HostileFrames : public ::testing::Test {
protected:
    /// Checks that a frame is refused, alone and as a part of a batch, and that nothing changes.
    void expectRefused(const cv::Mat& color, const cv::Mat& depth) {
        EXPECT_FALSE(ruler_.getCameraFrame(color, depth));
        EXPECT_FALSE(ruler_.getCameraFrame(color, depth, color));
        EXPECT_FALSE(ruler_.getCameraMultipleFrame({color, color_}, {depth, depth_}));
        EXPECT_FALSE(ruler_.getCameraMultipleFrame({color_, color}, {depth_, depth}));
        EXPECT_TRUE(sameImages(ruler_, before_));
        EXPECT_TRUE(sameBuffers(ruler_, before_));
        EXPECT_TRUE(sameResult(ruler_.result, before_.result));
    }

    const DepthScene scene_ = blockScene(200);
    Quorvel ruler_ = scene_.ruler();
    Quorvel before_ = scene_.ruler();
    cv::Mat color_ = scene_.color();
    cv::Mat depth_;

private:
    void SetUp() override {
        Draws draws(1);
        depth_ = scene_.depth(draws);
        setPlane(ruler_, {0, 0, 1}, scene_.distance, 5);
        ruler_.effectiveRegion = cv::Rect(cv::Point(0, 0), scene_.size);
        ASSERT_TRUE(ruler_.getCameraMultipleFrame({color_, color_}, {depth_, depth_}));
        ASSERT_TRUE(ruler_.getCameraFrame(color_, depth_, color_));
        ASSERT_EQ(ruler_.measureOnce(), 0);
        before_ = detachedCopy(ruler_);
    }

    const CapturedOutput output_;
};

TEST_F(HostileFrames, AreRefusedInEveryOtherType) {
    Draws draws(2);
    for (int depthOfType = CV_8U; depthOfType <= CV_16F; ++depthOfType) {
        for (const int channels : {1, 2, 3, 4, 5, 33, CV_CN_MAX}) {
            const int type = CV_MAKETYPE(depthOfType, channels);
            cv::Mat image(48, 64, type);
            fillWithBytes(draws, image);
            if (type != CV_8UC3) {
                expectRefused(image, depth_);
            }
            if (type != CV_16UC1) {
                expectRefused(color_, image);
            }
            ASSERT_FALSE(HasFailure()) << cv::typeToString(type);
        }
    }
}

TEST_F(HostileFrames, AreRefusedInEveryOtherSize) {
    for (const cv::Size& size : {cv::Size(1, 1),
                                 {1, 48},
                                 {64, 1},
                                 {63, 48},
                                 {65, 48},
                                 {64, 47},
                                 {64, 49},
                                 {48, 64},
                                 {128, 96},
                                 {64, 0x8001},
                                 {3072, 1},
                                 {1, 3072}}) {
        expectRefused(cv::Mat(size, CV_8UC3, cv::Scalar::all(9)), depth_);
        expectRefused(color_, cv::Mat(size, CV_16UC1, cv::Scalar(900)));
        expectRefused(cv::Mat(size, CV_8UC3, cv::Scalar::all(9)), cv::Mat(size, CV_16UC1, cv::Scalar(900)));
        ASSERT_FALSE(HasFailure()) << size;
    }
}

TEST_F(HostileFrames, AreRefusedWithRowsButWithoutColumns) {
    expectRefused(cv::Mat(48, 0, CV_8UC3), depth_);
    expectRefused(color_, cv::Mat(48, 0, CV_16UC1));
    expectRefused(cv::Mat(48, 0, CV_8UC3), cv::Mat(48, 0, CV_16UC1));
}

TEST_F(HostileFrames, AreRefusedInThreeDimensions) {
    expectRefused(cubeOf(48, 64, CV_8UC3), depth_);
    expectRefused(color_, cubeOf(48, 64, CV_16UC1));
    expectRefused(cubeOf(48, 64, CV_8UC3), cubeOf(48, 64, CV_16UC1));
}

TEST_F(HostileFrames, AreRefusedWithoutPixels) {
    expectRefused(withoutPixels(48, 64, CV_8UC3), depth_);
    expectRefused(color_, withoutPixels(48, 64, CV_16UC1));
    expectRefused(withoutPixels(48, 64, CV_8UC3), withoutPixels(48, 64, CV_16UC1));
}

TEST_F(HostileFrames, WithColumnsButWithoutRowsCountAsEmpty) {
    const cv::Mat noColor(0, 64, CV_8UC3);
    const cv::Mat noDepth(0, 64, CV_16UC1);
    for (const auto& [color, depth] : {std::make_pair(noColor, depth_), {color_, noDepth}, {noColor, noDepth}}) {
        EXPECT_FALSE(ruler_.getCameraFrame(color, depth));
        EXPECT_EQ(ruler_.colorImage.empty(), color.empty());
        EXPECT_EQ(ruler_.depthImage.empty(), depth.empty());
        EXPECT_TRUE(sameBits(ruler_.depthSmall, before_.depthSmall)) << "the derived images stay";
        EXPECT_FALSE(ruler_.getCameraMultipleFrame({color_, color}, {depth_, depth}));
        EXPECT_EQ(ruler_.colorFrameBuffer.size(), 2U);
        EXPECT_TRUE(ruler_.depthSmallBuffer.empty());
        measureAnyBatch(ruler_, 5);
    }
}

TEST_F(HostileFrames, AreTakenAsTheThirdImageWhateverTheyAre) {
    Draws draws(3);
    for (int i = 0; i < 300; ++i) {
        const cv::Mat aux = drawOddImage(draws);
        ASSERT_TRUE(ruler_.getCameraFrame(color_, depth_, aux));
        ASSERT_EQ(ruler_.auxImage.empty(), aux.empty());
        ASSERT_TRUE(aux.empty() || sameBytes(ruler_.auxImage, aux)) << cv::typeToString(aux.type());
        ASSERT_TRUE(aux.empty() || ruler_.auxImage.data != aux.data) << "a copy";
    }
}

TEST_F(HostileFrames, MayLieAnywhereInMemory) {
    Draws draws(4);
    for (int i = 0; i < 100; ++i) {
        // A window of a window, so that the rows are apart and start at any address.
        const cv::Point corner{draws.below(7), draws.below(7)};
        const cv::Rect window(corner + cv::Point(1, 2), cv::Size(64, 48));
        cv::Mat color = cv::Mat(60, 80, CV_8UC3, cv::Scalar::all(255))(cv::Rect(0, 1, 75, 58))(window);
        cv::Mat depth = cv::Mat(60, 80, CV_16UC1, cv::Scalar::all(65535))(cv::Rect(0, 1, 75, 58))(window);
        color_.copyTo(color);
        depth_.copyTo(depth);
        ASSERT_TRUE(i % 2 == 0 ? ruler_.getCameraFrame(color, depth, color_)
                               : ruler_.getCameraMultipleFrame({color}, {depth}));
        ASSERT_EQ(ruler_.measureOnce(), 0);
        ASSERT_TRUE(sameImages(ruler_, before_));
        ASSERT_TRUE(sameResult(ruler_.result, before_.result));
    }
}

TEST_F(HostileFrames, MayBeTheRulersOwn) {
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(ruler_.getCameraFrame(ruler_.colorImage, ruler_.depthImage, ruler_.auxImage));
        ASSERT_EQ(ruler_.measureOnce(), 0);
        ASSERT_TRUE(sameImages(ruler_, before_));
        ASSERT_TRUE(ruler_.getCameraMultipleFrame({ruler_.colorImage, color_}, {ruler_.depthImage, depth_}));
        ASSERT_TRUE(ruler_.getCameraMultipleFrame(ruler_.colorFrameBuffer, ruler_.depthFrameBuffer));
        ASSERT_EQ(ruler_.depthSmallBuffer.size(), 2U);
    }
}

/// Everything that a host does with a frame, in every mode.
void useFrame(const cv::Mat& color, const cv::Mat& depth, float focal) {
    const auto width = static_cast<float>(depth.cols);
    const auto height = static_cast<float>(depth.rows);
    for (const ProductType mode : kModes) {
        Quorvel ruler(focal, focal, width / 2, height / 2, depth.cols, depth.rows, false, "");
        ruler.setProductType(mode);
        cv::Rect area;
        ruler.setCalibrationRoI(1.0F, area);
        ruler.setEffectiveRegionInArea(1.0F, area);
        float t = 0;
        ASSERT_TRUE(ruler.getCameraFrame(color, depth));
        EXPECT_EQ(ruler.calibRef(t, 0), 0);
        EXPECT_EQ(ruler.ransacCalibRef(), 0);
        measureAnything(ruler);
        for (const float offset : {1000.0F, 65535.0F}) {
            setPlane(ruler, {0, 0, 1}, offset, 0);
            ASSERT_TRUE(ruler.getCameraFrame(color, depth));
            measureAnything(ruler);
            ASSERT_TRUE(ruler.getCameraMultipleFrame({color, color}, {depth, depth}));
            measureAnyBatch(ruler, 1e6F);
        }
    }
}

cv::Mat checkerboard(const cv::Size& size, int field, ushort light, ushort dark) {
    cv::Mat board(size, CV_16UC1);
    for (int row = 0; row < size.height; ++row) {
        for (int column = 0; column < size.width; ++column) {
            board.at<ushort>(row, column) = (row / field + column / field) % 2 == 0 ? light : dark;
        }
    }
    return board;
}

TEST(HostileContent, IsTakenInAndMeasured) {
    const WorkingDirectory directory;
    const CapturedOutput output;
    const cv::Size size(320, 240);
    Draws draws(5);
    std::vector<cv::Mat> depths;
    for (const int value : {0, 1, 999, 65535}) {
        depths.emplace_back(size, CV_16UC1, cv::Scalar(value));
    }
    for (const int field : {1, 2, 3, 4, 5, 16}) {
        depths.push_back(checkerboard(size, field, 0, 900));
        depths.push_back(checkerboard(size, field, 1000, 900));
        depths.push_back(checkerboard(size, field, 65535, 1));
    }
    depths.push_back(drawDepth(draws, size));
    for (std::size_t i = 0; i < depths.size(); ++i) {
        useFrame(drawColor(draws, size), depths[i], 300);
        ASSERT_FALSE(HasFailure()) << "depth image " << i;
    }
}

TEST(HostileContent, IsMeasuredInTheSmallestPictures) {
    const WorkingDirectory directory;
    const CapturedOutput output;
    Draws draws(6);
    for (const int width : {4, 5, 7, 8, 11, 12, 15, 260}) {
        for (const int height : {4, 6, 9, 13, 21}) {
            const cv::Size size(width, height);
            const cv::Mat color = drawColor(draws, size);
            useFrame(color, drawDepth(draws, size), 5);
            useFrame(color, cv::Mat(size, CV_16UC1, cv::Scalar(700)), 5);
            ASSERT_FALSE(HasFailure()) << size;
        }
    }
}

TEST(HostileContent, IsRefusedInPicturesThatLeaveNoSmallImage) {
    for (const cv::Size& size : {cv::Size(1, 1), {3, 3}, {1, 640}, {640, 3}}) {
        Quorvel ruler(600, 600, 0, 0, size.width, size.height, false, "");
        EXPECT_FALSE(ruler.getCameraFrame(cv::Mat(size, CV_8UC3), cv::Mat(size, CV_16UC1))) << size;
        EXPECT_EQ(ruler.measureOnce(), 1) << size;
    }
}

}  // namespace

}  // namespace quorvel::test
