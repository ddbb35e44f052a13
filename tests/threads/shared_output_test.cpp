// SPDX-License-Identifier: Apache-2.0
// The diagnostic lines of all rulers go to the one std::cout.
#include <algorithm>
#include <iostream>
#include <mutex>
#include <streambuf>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "library/depth_scene.h"
#include "threads/at_once.h"

namespace quorvel::test {

namespace {

/// Takes what is written to std::cout while it lives, from any thread, as the standard output of the process does.
class LockedOutput : public std::streambuf {
public:
    LockedOutput() : previous_(std::cout.rdbuf(this)) {}
    ~LockedOutput() override { std::cout.rdbuf(previous_); }
    LockedOutput(const LockedOutput&) = delete;
    LockedOutput& operator=(const LockedOutput&) = delete;

    std::string text() {
        const std::lock_guard<std::mutex> lock(mutex_);
        return text_;
    }

protected:
    int_type overflow(int_type character) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        text_ += traits_type::to_char_type(character);
        return character;
    }
    std::streamsize xsputn(const char* characters, std::streamsize count) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        text_.append(characters, static_cast<std::size_t>(count));
        return count;
    }

private:
    std::streambuf* previous_;
    std::mutex mutex_;
    std::string text_;
};

/// Has every diagnostic line printed that needs no file.
void talk() {
    const DepthScene scene = blockScene(200);
    Draws draws(1);
    Quorvel ruler = scene.ruler();
    ruler.setDebugMode(true);
    ruler.calFilePath = "there is no such file";
    ruler.setProductType(KIOSK);
    ruler.measureOnce();
    ruler.getCameraFrame(cv::Mat(), cv::Mat());
    ruler.getCameraFrame(scene.color(), cv::Mat(3, 4, CV_8UC1));
    ruler.getCameraMultipleFrame({scene.color()}, {});
    setPlane(ruler, {0, 0, 1}, scene.distance, 5);
    ruler.measureMultiple(1.0F, 1.0F, 1.0F);
    ruler.getCameraFrame(scene.color(), cv::Mat(scene.size, CV_16UC1, cv::Scalar(1000)));
    ruler.measureOnce();
    ruler.setFilterWeight(0.125F);
    cv::Rect region;
    ruler.setEffectiveRegionInArea(0.5F, region);
    ruler.ransacCalibRef();
}

std::string sorted(std::string text) {
    std::sort(text.begin(), text.end());
    return text;
}

// Lines of several threads may be mixed, no character is lost or printed twice.
TEST(SharedOutput, CarriesAllThatEveryRulerPrints) {
    LockedOutput output;
    talk();
    const std::string alone = output.text();
    ASSERT_GT(std::count(alone.begin(), alone.end(), '\n'), 8);
    atOnce(4, [](std::size_t) { talk(); });
    EXPECT_EQ(sorted(output.text()), sorted(alone + alone + alone + alone + alone));
}

}  // namespace

}  // namespace quorvel::test
