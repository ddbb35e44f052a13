// SPDX-License-Identifier: Apache-2.0
// Large allocations a frame in steady state, as JSON: the parcel at 640 x 480, once the buffers are warm.
//   quorvel_allocations                 all works
//   quorvel_allocations --none kiosk    one work; exit code 1 when it allocates
#include <array>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

#include <opencv2/core.hpp>

#include "allocations.h"
#include "bench_scene.h"
#include "support/working_directory.h"

namespace quorvel::bench {

namespace {

const cv::Size kSize(640, 480);
constexpr int kWarmFrames = 5;
constexpr int kCountedFrames = 20;
constexpr float kTolerance = 20.0F;

[[noreturn]] void fail(const std::string& message) {
    std::cerr << "quorvel_allocations: " << message << '\n';
    std::exit(2);
}

/// Checks that allocations of images and vectors are counted; otherwise a count of 0 would mean nothing.
void requireThatBlocksAreCounted() {
    const unsigned long before = largeAllocations();
    const cv::Mat image(kSize, CV_16UC1);
    const std::vector<float> values(kLargeBlock);
    const std::vector<float> few(kLargeBlock / sizeof(float) / 2);
    if (image.empty() || values.empty() || few.empty() || largeAllocations() != before + 2) {
        fail("an image and a vector above 64 KiB count as " + std::to_string(largeAllocations() - before) + " blocks");
    }
}

/// The allocations of one frame, or of one frame of a batch, on average.
struct Count {
    double blocks = 0.0;
    double bytes = 0.0;
};

/// \param work takes and measures `frames` frames
Count countPerFrame(const std::function<void()>& work, int frames) {
    for (int i = 0; i < kWarmFrames; ++i) {
        work();
    }
    const unsigned long blocks = largeAllocations();
    const unsigned long bytes = largeAllocatedBytes();
    for (int i = 0; i < kCountedFrames; ++i) {
        work();
    }
    const double counted = kCountedFrames * frames;
    return {static_cast<double>(largeAllocations() - blocks) / counted,
            static_cast<double>(largeAllocatedBytes() - bytes) / counted};
}

void require(bool measured) {
    if (!measured) {
        fail("the frame was not measured: nothing to count");
    }
}

Count singleShot(ProductType mode) {
    const Frame& frame = parcelFrames(kSize).occupied;
    Quorvel ruler = calibratedRuler(parcelScene(kSize).camera, mode);
    return countPerFrame(
        [&] {
            ruler.getCameraFrame(frame.color, frame.depth);
            require(ruler.measureOnce() == 0 && ruler.result.inView);
        },
        1);
}

Count batch(ProductType mode) {
    std::vector<cv::Mat> colors;
    std::vector<cv::Mat> depths;
    for (const Frame& frame : parcelBatch(kSize, 4)) {
        colors.push_back(frame.color);
        depths.push_back(frame.depth);
    }
    Quorvel ruler = calibratedRuler(parcelScene(kSize).camera, mode);
    return countPerFrame(
        [&] {
            // The fit's draws decide how large the object's window is, to the pixel: warm is what has seen them.
            std::srand(1);
            ruler.getCameraMultipleFrame(colors, depths);
            require(ruler.measureMultiple(kTolerance, kTolerance, kTolerance) == 0);
        },
        static_cast<int>(colors.size()));
}

using NamedCount = std::pair<std::string, std::function<Count()>>;

const std::array<NamedCount, 5>& works() {
    static const std::array<NamedCount, 5> all{
        {{"kiosk", [] { return singleShot(KIOSK); }},
         {"ground-growing", [] { return singleShot(GROUND_GROWING); }},
         {"ground-tracking", [] { return singleShot(GROUND_TRACKING); }},
         {"batch-of-four-kiosk", [] { return batch(KIOSK); }},
         {"batch-of-four-ground-tracking", [] { return batch(GROUND_TRACKING); }}}};
    return all;
}

int printAll() {
    std::cout << "[";
    const char* separator = "\n";
    for (const auto& [name, measure] : works()) {
        const Count count = measure();
        std::cout << separator << R"(  {"work": ")" << name << R"(", "blocks": )" << count.blocks << R"(, "bytes": )"
                  << count.bytes << "}";
        separator = ",\n";
    }
    std::cout << "\n]\n";
    return 0;
}

int requireNone(const std::string& wanted) {
    for (const auto& [name, measure] : works()) {
        if (name == wanted) {
            const Count count = measure();
            std::cout << name << ": " << count.blocks << " blocks above 64 KiB a frame, " << count.bytes << " bytes\n";
            return count.blocks == 0.0 ? 0 : 1;
        }
    }
    fail(wanted + ": there is no such work");
}

}  // namespace

}  // namespace quorvel::bench

int main(int argc, char** argv) {
    cv::setNumThreads(1);
    quorvel::bench::requireThatBlocksAreCounted();
    const quorvel::test::WorkingDirectory files;  // of the calibration
    if (argc == 1) {
        return quorvel::bench::printAll();
    }
    if (argc == 3 && std::string(argv[1]) == "--none") {
        return quorvel::bench::requireNone(argv[2]);
    }
    std::cerr << "usage: quorvel_allocations [--none WORK]\n";
    return 2;
}
