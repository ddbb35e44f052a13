// SPDX-License-Identifier: Apache-2.0
// Peak resident size of this process for one work at one picture size, as a JSON object.
//   quorvel_peak_memory measure|calibrate|batch-of-four WIDTH HEIGHT
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include <opencv2/core.hpp>

#include "bench_scene.h"
#include "support/working_directory.h"

namespace quorvel::bench {

namespace {

constexpr int kFrames = 5;
constexpr float kTolerance = 20.0F;

[[noreturn]] void fail(const std::string& message) {
    std::cerr << "quorvel_peak_memory: " << message << '\n';
    std::_Exit(2);
}

/// Renders in a child process, so that the renderer's memory does not count.
/// \param scene without objects for the empty surface
Frame frameFromChild(const sim::Scene& scene, unsigned index) {
    const cv::Size size(scene.camera.width, scene.camera.height);
    const std::size_t bytes = static_cast<std::size_t>(size.area()) * sizeof(ushort);
    void* const shared = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) {
        fail("no memory to share with the renderer");
    }
    const pid_t child = fork();
    if (child == 0) {
        const cv::Mat depth = occupiedFrame(scene, index).depth;
        std::memcpy(shared, depth.data, bytes);
        std::_Exit(0);
    }
    int status = -1;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
        fail("the renderer failed");
    }
    const cv::Mat depth = cv::Mat(size, CV_16UC1, shared).clone();
    munmap(shared, bytes);
    return {cv::Mat(size, CV_8UC3, cv::Scalar::all(128)), depth};
}

/// A line of the process' state, kB.
double stateKiB(const std::string& key) {
    std::ifstream state("/proc/self/status");
    std::string word;
    while (state >> word) {
        if (word == key) {
            double value = 0.0;
            state >> value;
            return value;
        }
    }
    fail(key + " is not in the process' state");
}

/// The plane is given rather than fitted, so that measuring alone counts.
void giveTruePlane(Quorvel& ruler) {
    constexpr float kDistance = 1000.0F;       // mm
    const float edge = 0.05F * ruler.fxSmall;  // of a square of 50 mm at that distance, pixels
    ruler.refPlaneNormal = {0.0F, 0.0F, 1.0F};
    ruler.refPlaneOffset = kDistance;
    ruler.cameraHeight = kDistance;
    ruler.minObjectPixels = static_cast<int>(edge * edge);
    ruler.calibStatus = true;
}

bool measure(Quorvel& ruler, const std::vector<Frame>& frames) {
    giveTruePlane(ruler);
    for (int i = 0; i < kFrames; ++i) {
        ruler.getCameraFrame(frames[0].color, frames[0].depth);
        if (ruler.measureOnce() != 0 || !ruler.result.inView) {
            return false;
        }
    }
    return true;
}

bool calibrate(Quorvel& ruler, const std::vector<Frame>& frames) {
    const test::WorkingDirectory files;
    float t = 0.0F;
    ruler.getCameraFrame(frames[0].color, frames[0].depth);
    ruler.calibRef(t, 0.0F);
    return t > 0.0F;
}

bool measureBatch(Quorvel& ruler, const std::vector<Frame>& frames) {
    giveTruePlane(ruler);
    std::vector<cv::Mat> colors;
    std::vector<cv::Mat> depths;
    for (const Frame& frame : frames) {
        colors.push_back(frame.color);
        depths.push_back(frame.depth);
    }
    for (int i = 0; i < kFrames; ++i) {
        ruler.getCameraMultipleFrame(colors, depths);
        if (ruler.measureMultiple(kTolerance, kTolerance, kTolerance) != 0) {
            return false;
        }
    }
    return true;
}

int report(const std::string& work, const cv::Size& size) {
    sim::Scene scene = parcelScene(size);
    if (work == "calibrate") {
        scene.boxes.clear();
    }
    std::vector<Frame> frames;
    for (unsigned i = 0; i < (work == "batch-of-four" ? 4U : 1U); ++i) {
        frames.push_back(frameFromChild(scene, i));
    }
    Quorvel ruler = makeRuler(scene.camera, KIOSK);
    const double before = stateKiB("VmHWM:");
    bool done = false;
    if (work == "measure") {
        done = measure(ruler, frames);
    } else if (work == "calibrate") {
        done = calibrate(ruler, frames);
    } else if (work == "batch-of-four") {
        done = measureBatch(ruler, frames);
    }
    if (!done) {
        fail(work + " at " + sizeName(size) + ": nothing was measured");
    }
    std::cout << R"({"work": ")" << work << R"(", "size": ")" << sizeName(size) << R"(", "before_kib": )" << before
              << R"(, "peak_kib": )" << stateKiB("VmHWM:") << "}\n";
    return 0;
}

}  // namespace

}  // namespace quorvel::bench

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "usage: quorvel_peak_memory measure|calibrate|batch-of-four WIDTH HEIGHT\n";
        return 2;
    }
    cv::setNumThreads(1);
    return quorvel::bench::report(argv[1], {std::atoi(argv[2]), std::atoi(argv[3])});
}
