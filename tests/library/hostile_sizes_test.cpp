// SPDX-License-Identifier: Apache-2.0
// Cameras that do not exist: sizes that are too large or not positive, focal lengths of NaN.
#include <atomic>
#include <climits>
#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#ifdef __linux__
#include <sys/mman.h>
#endif

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "image/image_form.h"
#include "library/depth_scene.h"
#include "library/frame_draws.h"
#include "library/hostile_draws.h"
#include "library/same_ruler.h"
#include "support/captured_output.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

/// Counts the images that are allocated while it lives.
class AllocationCount : public cv::MatAllocator {
public:
    AllocationCount() : previous_(cv::Mat::getDefaultAllocator()) { cv::Mat::setDefaultAllocator(this); }
    ~AllocationCount() override { cv::Mat::setDefaultAllocator(previous_); }
    AllocationCount(const AllocationCount&) = delete;
    AllocationCount& operator=(const AllocationCount&) = delete;

    cv::UMatData* allocate(int dims, const int* sizes, int type, void* data, std::size_t* step, cv::AccessFlag flags,
                           cv::UMatUsageFlags usage) const override {
        ++count_;
        return previous_->allocate(dims, sizes, type, data, step, flags, usage);
    }
    bool allocate(cv::UMatData* data, cv::AccessFlag flags, cv::UMatUsageFlags usage) const override {
        ++count_;
        return previous_->allocate(data, flags, usage);
    }
    void deallocate(cv::UMatData* data) const override { previous_->deallocate(data); }

    int count() const { return count_; }

private:
    mutable std::atomic<int> count_{0};
    cv::MatAllocator* previous_;
};

/// Memory of which the system provides a page only when it is used: room for the largest images.
class EmptyPages {
public:
    explicit EmptyPages(std::size_t bytes) : bytes_(bytes) {
#ifdef __linux__
        void* const pages =
            mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        data_ = pages == MAP_FAILED ? nullptr : pages;
#endif
    }
    ~EmptyPages() {
#ifdef __linux__
        if (data_ != nullptr) {
            munmap(data_, bytes_);
        }
#endif
    }
    EmptyPages(const EmptyPages&) = delete;
    EmptyPages& operator=(const EmptyPages&) = delete;

    /// \return null where the system gives no memory of this kind
    void* data() const {
        return data_;
    }

private:
    std::size_t bytes_;
    void* data_ = nullptr;
};

TEST(FrameSize, IsBoundedASideAndInAll) {
    EXPECT_TRUE(internal::isFrameSize(1, 1));
    EXPECT_TRUE(internal::isFrameSize(8192, 8192)) << "2^26 pixels";
    EXPECT_TRUE(internal::isFrameSize(32768, 2048));
    EXPECT_TRUE(internal::isFrameSize(2048, 32768));
    EXPECT_FALSE(internal::isFrameSize(8193, 8192));
    EXPECT_FALSE(internal::isFrameSize(8192, 8193));
    EXPECT_FALSE(internal::isFrameSize(32769, 1));
    EXPECT_FALSE(internal::isFrameSize(1, 32769));
    EXPECT_FALSE(internal::isFrameSize(65536, 65536)) << "the product is 0 in 32 bits";
    EXPECT_FALSE(internal::isFrameSize(INT_MAX, INT_MAX));
    EXPECT_FALSE(internal::isFrameSize(INT_MIN, INT_MIN));
    EXPECT_FALSE(internal::isFrameSize(0, 48));
    EXPECT_FALSE(internal::isFrameSize(64, 0));
    EXPECT_FALSE(internal::isFrameSize(-64, -48));
}

/// Sizes just beyond the limits and far beyond them.
std::vector<cv::Size> hugeSizes() {
    return {{100000, 100000}, {32769, 4}, {4, 32769}, {8193, 8192}, {65536, 65536}, {32768, 32768}};
}

TEST(HugeFrames, AreRefusedBeforeAnythingIsAllocated) {
    for (const cv::Size& size : hugeSizes()) {
        const EmptyPages pages(3 * static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height));
        if (pages.data() == nullptr) {
            GTEST_SKIP() << "no memory for an image that is never looked at";
        }
        Quorvel ruler(600, 600, 320, 240, size.width, size.height, false, "");
        ruler.setDebugMode(true);
        const cv::Mat color(size, CV_8UC3, pages.data());
        const cv::Mat depth(size, CV_16UC1, pages.data());
        const std::vector<cv::Mat> colors{color};
        const std::vector<cv::Mat> depths{depth};
        const CapturedOutput output;
        const AllocationCount allocations;
        EXPECT_FALSE(ruler.getCameraFrame(color, depth));
        EXPECT_EQ(output.text(), "Frame refused: a frame of " + std::to_string(size.width) + " x " +
                                     std::to_string(size.height) +
                                     " is too large, at most 32768 pixels a side and 67108864 in all are measured.\n");
        EXPECT_FALSE(ruler.getCameraFrame(color, depth, cv::Mat()));
        EXPECT_FALSE(ruler.getCameraMultipleFrame(colors, depths));
        EXPECT_EQ(ruler.measureOnce(), 1);
        EXPECT_EQ(ruler.measureMultiple(1, 1, 1), 1);
        EXPECT_EQ(allocations.count(), 0);
        EXPECT_TRUE(ruler.colorImage.empty());
        EXPECT_TRUE(ruler.colorFrameBuffer.empty());
    }
}

TEST(HugeFrames, AreRefusedWhenAHostPutsThemIn) {
    const WorkingDirectory directory;
    const CapturedOutput output;
    for (const cv::Size& size : hugeSizes()) {
        const EmptyPages pages(12 * static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height));
        if (pages.data() == nullptr) {
            GTEST_SKIP() << "no memory for an image that is never looked at";
        }
        Quorvel ruler(600, 600, 320, 240, size.width, size.height, false, "");
        setPlane(ruler, {0, 0, 1}, 1000, 5);
        ruler.depthImage = cv::Mat(size, CV_16UC1, pages.data());
        ruler.depthSmall = ruler.depthImage;
        ruler.pointCloud = cv::Mat(size, CV_32FC3, pages.data());
        ruler.pointCloudSmall = ruler.pointCloud;
        ruler.pointCloudSmallCopy = ruler.pointCloud;
        ruler.colorFrameBuffer = {ruler.colorImage};
        ruler.depthFrameBuffer = {ruler.depthImage};
        ruler.depthSmallBuffer = {ruler.depthSmall};
        ruler.pointCloudBuffer = {ruler.pointCloud};
        ruler.pointCloudSmallCopyBuffer = {ruler.pointCloud};
        const AllocationCount allocations;
        float t = 0;
        EXPECT_EQ(ruler.calibRef(t, 0), 0);
        EXPECT_EQ(ruler.ransacCalibRef(), 0);
        EXPECT_EQ(ruler.measureOnce(), 1);
        EXPECT_EQ(ruler.measureMultiple(1, 1, 1), 1);
        EXPECT_EQ(allocations.count(), 0);
        EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0, 0, 1));
        EXPECT_FALSE(std::filesystem::exists("param")) << "nothing was calibrated";
    }
}

TEST(HugeFrames, AreRefusedBehindSmallImagesToo) {
    // The detection area is drawn into a picture of the small image's size times a factor that the host may set.
    const WorkingDirectory directory;
    const CapturedOutput output;
    const DepthScene scene = blockScene(200);
    Draws draws(1);
    for (const int downScale : {4097, 65536, 1 << 26, 1 << 28, INT_MAX}) {
        Quorvel ruler = scene.ruler();
        setPlane(ruler, {0, 0, 1}, scene.distance, 5);
        ruler.setEffectiveRegionInArea(cv::Rect(0, 0, INT_MAX, INT_MAX));
        ASSERT_TRUE(ruler.getCameraFrame(scene.color(), scene.depth(draws)));
        ruler.fx = ruler.fy = 1e6F;  // corners far apart
        ruler.downScale = downScale;
        EXPECT_EQ(ruler.measureOnce(), 0);
        EXPECT_TRUE(isEmptyResult(ruler.result)) << downScale;
    }
}

TEST(OddSizes, AreRefused) {
    const WorkingDirectory directory;
    const CapturedOutput output;
    const DepthScene scene = blockScene(200);
    Draws draws(2);
    const cv::Mat color = scene.color();
    const cv::Mat depth = scene.depth(draws);
    for (const int width : kOddInts) {
        for (const int height : kOddInts) {
            Quorvel ruler(60, 60, 32, 24, width, height, false, "");
            EXPECT_EQ(ruler.imageWidth, width);
            EXPECT_EQ(ruler.imageHeight, height);
            setPlane(ruler, {0, 0, 1}, 1000, 5);
            EXPECT_FALSE(ruler.getCameraFrame(color, depth));
            EXPECT_FALSE(ruler.getCameraMultipleFrame({color}, {depth}));
            EXPECT_FALSE(ruler.getCameraFrame(cv::Mat(), cv::Mat()));
            for (const ProductType mode : {KIOSK, GROUND_TRACKING, GROUND_GROWING}) {
                EXPECT_EQ(ruler.setProductType(mode), 0);
                float t = 0;
                EXPECT_EQ(ruler.calibRef(t, 0), 0);
                EXPECT_EQ(ruler.ransacCalibRef(), 0);
                EXPECT_EQ(ruler.measureOnce(), 1);
                EXPECT_EQ(ruler.measureMultiple(1, 1, 1), 1);
            }
            EXPECT_EQ(ruler.saveOfflineData(), 0);
            ASSERT_FALSE(HasFailure()) << width << " x " << height;
        }
    }
    EXPECT_FALSE(std::filesystem::exists("param")) << "nothing was calibrated";
}

TEST(OddSizes, OfNothingCalibrateNothing) {
    // An image of no pixels has the size of a ruler of no pixels.
    const WorkingDirectory directory;
    Quorvel ruler(60, 60, 32, 24, 0, 0, false, "");
    ruler.depthImage = cv::Mat(0, 0, CV_16UC1);
    ruler.refPlaneOffset = 900;
    float t = 0;
    EXPECT_EQ(ruler.calibRef(t, 5), 0);
    EXPECT_EQ(t, 900);
    EXPECT_FALSE(ruler.calibStatus);
    EXPECT_FALSE(std::filesystem::exists("param"));
}

TEST(OddIntrinsics, NeverBringTheRulerDown) {
    const WorkingDirectory directory;
    const CapturedOutput output;
    // More small pixels than the plane fit needs.
    DepthScene scene;
    scene.size = {320, 240};
    scene.blocks.push_back({{120, 90, 80, 60}, 200});
    Draws draws(3);
    const cv::Mat color = scene.color();
    const cv::Mat depth = scene.depth(draws);
    for (int i = 0; i < 120; ++i) {
        // Each number in its turn, then all of them at random.
        float camera[4] = {300, 300, 160, 120};
        if (i < 4 * static_cast<int>(kOddFloats.size())) {
            camera[i % 4] = kOddFloats.at(static_cast<std::size_t>(i / 4));
        } else {
            for (float& value : camera) {
                value = draws.chance(50) ? drawOddFloat(draws) : value;
            }
        }
        for (const ProductType mode : {KIOSK, GROUND_TRACKING, GROUND_GROWING}) {
            Quorvel ruler(camera[0], camera[1], camera[2], camera[3], scene.size.width, scene.size.height, false, "");
            ruler.setProductType(mode);
            cv::Rect area;
            ruler.setCalibrationRoI(1.0F, area);
            ruler.setEffectiveRegionInArea(1.0F, area);
            ruler.setCameraType(true, 5);
            float t = 0;
            ASSERT_TRUE(ruler.getCameraFrame(color, depth));
            EXPECT_EQ(ruler.calibRef(t, 0), 0);
            measureAnything(ruler);
            setPlane(ruler, {0, 0, 1}, scene.distance, 5);
            ASSERT_TRUE(ruler.getCameraMultipleFrame({color, color}, {depth, depth}));
            measureAnyBatch(ruler, 5);
        }
        ASSERT_FALSE(HasFailure()) << camera[0] << " " << camera[1] << " " << camera[2] << " " << camera[3];
    }
}

}  // namespace

}  // namespace quorvel::test
