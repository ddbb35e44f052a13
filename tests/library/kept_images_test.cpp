// SPDX-License-Identifier: Apache-2.0
#include "image/kept_images.h"

#include <array>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "image/image_form.h"

namespace quorvel::test {

namespace {

using internal::KeptImages;

const cv::Size kSize(8, 6);
constexpr std::size_t kBytes = 8 * 6 * 2;

TEST(KeptImages, HandOutTheStorageThatWasGivenBack) {
    KeptImages kept;
    cv::Mat image(kSize, CV_16UC1);
    const uchar* const storage = image.data;
    kept.giveBack(std::move(image));
    EXPECT_TRUE(image.empty());
    EXPECT_EQ(kept.bytes(), kBytes);
    const cv::Mat again = kept.take(kSize, CV_16UC1);
    EXPECT_EQ(again.data, storage);
    EXPECT_TRUE(internal::isExclusive(again));
    EXPECT_EQ(kept.bytes(), 0U);
    EXPECT_NE(kept.take(kSize, CV_16UC1).data, storage) << "handed out twice";
}

TEST(KeptImages, HandOutOnlyWhatFits) {
    KeptImages kept;
    kept.giveBack(cv::Mat(kSize, CV_16UC1));
    kept.giveBack(cv::Mat(kSize, CV_8UC3));
    for (const auto& [size, type] :
         {std::pair{cv::Size(6, 8), CV_16UC1}, std::pair{kSize, CV_16SC1}, std::pair{cv::Size(8, 3), CV_32FC1}}) {
        const cv::Mat fresh = kept.take(size, type);
        EXPECT_EQ(fresh.size(), size);
        EXPECT_EQ(fresh.type(), type);
        EXPECT_EQ(kept.bytes(), kBytes + 8 * 6 * 3);
    }
    EXPECT_EQ(kept.take(kSize, CV_8UC3).type(), CV_8UC3);
    EXPECT_EQ(kept.take(kSize, CV_16UC1).type(), CV_16UC1);
    EXPECT_EQ(kept.bytes(), 0U) << "both sizes were kept side by side";
}

TEST(KeptImages, NeverKeepWhatSomebodyHolds) {
    KeptImages kept;
    cv::Mat image(kSize, CV_16UC1, cv::Scalar(7));
    const cv::Mat held = image;
    kept.giveBack(std::move(image));
    EXPECT_TRUE(image.empty());
    EXPECT_EQ(kept.bytes(), 0U);
    kept.take(kSize, CV_16UC1).setTo(1);
    EXPECT_EQ(cv::countNonZero(held != 7), 0);
}

/// Memory of a host that counts its holders in its own way, as those of other languages do.
class HostsAllocator : public cv::MatAllocator {
public:
    cv::UMatData* allocate(int dims, const int* sizes, int type, void* /*data*/, size_t* step, cv::AccessFlag flags,
                           cv::UMatUsageFlags usage) const override {
        cv::UMatData* data = cv::Mat::getStdAllocator()->allocate(dims, sizes, type, nullptr, step, flags, usage);
        data->prevAllocator = data->currAllocator = this;
        return data;
    }
    bool allocate(cv::UMatData* data, cv::AccessFlag /*flags*/, cv::UMatUsageFlags /*usage*/) const override {
        return data != nullptr;
    }
    void deallocate(cv::UMatData* data) const override {
        data->prevAllocator = data->currAllocator = cv::Mat::getStdAllocator();
        cv::Mat::getStdAllocator()->deallocate(data);
    }
};

TEST(KeptImages, NeverKeepTheHostsOwnMemory) {
    KeptImages kept;
    std::array<ushort, 48> memory{};
    kept.giveBack(cv::Mat(kSize, CV_16UC1, memory.data()));
    kept.giveBack(cv::Mat());
    EXPECT_EQ(kept.bytes(), 0U);
    const HostsAllocator allocator;
    cv::Mat image;
    image.allocator = const_cast<HostsAllocator*>(&allocator);
    image.create(kSize, CV_16UC1);
    EXPECT_FALSE(internal::isExclusive(image));
    kept.giveBack(std::move(image));
    EXPECT_EQ(kept.bytes(), 0U);
}

TEST(KeptImages, NeverKeepAPartOfALargerImage) {
    KeptImages kept;
    kept.giveBack(cv::Mat(20, 20, CV_16UC1)(cv::Rect(cv::Point(3, 3), kSize)));
    kept.giveBack(cv::Mat(20, 8, CV_16UC1).rowRange(0, 6));
    const std::array<int, 3> sizes{2, 3, 4};
    kept.giveBack(cv::Mat(3, sizes.data(), CV_16UC1));
    EXPECT_EQ(kept.bytes(), 0U);
}

TEST(KeptImages, StayWithinTheirBytes) {
    // Pages that nobody touches cost nothing.
    KeptImages kept;
    const cv::Size large(4096, 1024);  // 48 MiB of points
    std::vector<const uchar*> storage;
    for (int i = 0; i < 12; ++i) {
        cv::Mat image(large, CV_32FC3);
        storage.push_back(image.data);
        kept.giveBack(std::move(image));
        EXPECT_LE(kept.bytes(), KeptImages::kMostBytes);
    }
    EXPECT_EQ(kept.bytes(), 5 * static_cast<std::size_t>(large.area()) * sizeof(cv::Vec3f));
    bool newestKept = false;
    for (int i = 0; i < 5; ++i) {
        const cv::Mat image = kept.take(large, CV_32FC3);
        newestKept = newestKept || image.data == storage.back();
    }
    EXPECT_TRUE(newestKept) << "what is long gone has to make room, not what comes";
    EXPECT_EQ(kept.bytes(), 0U);
    kept.giveBack(cv::Mat(kSize, CV_16UC1));
    kept.giveBack(cv::Mat(8192, 4096, CV_32FC3));
    EXPECT_EQ(kept.bytes(), kBytes) << "an image beyond the bound drives nothing out";
}

TEST(KeptImages, StayWithinTheirNumber) {
    KeptImages kept;
    for (std::size_t i = 0; i < KeptImages::kMostImages + 10; ++i) {
        kept.giveBack(cv::Mat(kSize, CV_8UC1));
    }
    EXPECT_EQ(kept.bytes(), KeptImages::kMostImages * 48);
    kept.giveBack(cv::Mat(kSize, CV_16UC1));
    EXPECT_EQ(kept.bytes(), (KeptImages::kMostImages - 1) * 48 + kBytes);
}

TEST(KeptImages, AreNeverGivenToTwoThreads) {
    KeptImages kept;
    std::array<int, 4> mixed{};
    std::vector<std::thread> threads;
    for (std::size_t number = 0; number < mixed.size(); ++number) {
        threads.emplace_back([&kept, &mixed, number] {
            const auto mark = static_cast<uchar>(number + 1);
            for (int round = 0; round < 2000; ++round) {
                const cv::Size size(16 + round % 3, 16);
                cv::Mat image = kept.take(size, CV_8UC1);
                image.setTo(mark);
                cv::Mat other = kept.take(size, CV_8UC1);
                other.setTo(mark);
                mixed[number] += cv::countNonZero(image != mark) + cv::countNonZero(other != mark);
                kept.giveBack(std::move(image));
                kept.giveBack(std::move(other));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(mixed, (std::array<int, 4>{}));
    EXPECT_GT(kept.bytes(), 0U);
    EXPECT_LE(kept.bytes(), mixed.size() * 2 * 3 * 18 * 16);
}

}  // namespace

}  // namespace quorvel::test
