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

/// What one frame, or one frame of a batch, asks for on average.
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
        std::cerr << "the frame was not measured: nothing to count\n";
        std::exit(2);
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
    std::cerr << wanted << ": there is no such work\n";
    return 2;
}

}  // namespace

}  // namespace quorvel::bench

int main(int argc, char** argv) {
    cv::setNumThreads(1);
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
