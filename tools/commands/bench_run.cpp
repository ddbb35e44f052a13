// SPDX-License-Identifier: Apache-2.0
#include "commands/bench_run.h"

#include <algorithm>
#include <string>
#include <vector>

#include "kit/input/frame_reader.h"
#include "kit/input/input_error.h"
#include "kit/input/mode_name.h"
#include "kit/measure/measurement.h"
#include "kit/measure/median.h"
#include "kit/measure/stopwatch.h"
#include "sim/render.h"

namespace quorvel::command {

using namespace kit;

namespace {

constexpr int kWarmFrames = 3;
constexpr std::size_t kFewestFrames = 3;
constexpr float kLeastHeight = 100.0F;  // mm, of a parcel of 200

/// A parcel of 400 x 300 x 200 mm seen from 1 m. Pictures of the same aspect ratio show the same part of the surface,
/// and the noise is proportional to the distance of neighbouring points.
sim::Scene parcelScene(const cv::Size& size) {
    constexpr double kFocal = 600.0;   // pixels, of a picture of 640 x 480
    constexpr double kWidth = 640.0;   // pixels
    constexpr double kHeight = 480.0;  // pixels
    constexpr double kNoise = 1.0;     // mm at 640 x 480
    // The shorter side decides: the parcel fits into any picture.
    const double scale = std::min(size.width / kWidth, size.height / kHeight);
    sim::Scene scene;
    scene.camera = {kFocal * scale,          kFocal * scale, (size.width - 1) / 2.0,
                    (size.height - 1) / 2.0, size.width,     size.height};
    sim::Box box;
    box.length = 400.0;
    box.width = 300.0;
    box.height = 200.0;
    box.yawDeg = 12.0;
    scene.boxes = {box};
    scene.effects.axialNoise = kNoise / scale;
    scene.effects.flyingPixels = 0.3;
    scene.effects.dropout = 0.002;
    return scene;
}

FramePair frameOf(const sim::Scene& scene, unsigned index) {
    const cv::Mat depth = sim::renderDepth(scene, index);
    return {cv::Mat(depth.size(), CV_8UC3, cv::Scalar::all(128.0)), depth};
}

FramePair emptyFrameOf(sim::Scene scene) {
    scene.boxes.clear();
    return frameOf(scene, 1);
}

/// An area with the same number of pixels at every picture size. The sampling fit draws only from the first 32768
/// pixels of an area; in a large area these would be only a few rows.
cv::Rect calibrationArea(const cv::Size& picture) {
    const cv::Size area(std::min(240, picture.width), std::min(180, picture.height));
    return {cv::Point((picture.width - area.width) / 2, (picture.height - area.height) / 2), area};
}

Ruler calibratedRuler(const sim::Scene& scene, ProductType mode) {
    const sim::Camera& camera = scene.camera;
    Ruler ruler = makeRuler({camera.fx, camera.fy, camera.cx, camera.cy, camera.width, camera.height});
    ruler.selectMode(mode);
    ruler.forgetPlane();  // one that KIOSK has found in the working folder
    // Half-way up the parcel: the growing fit of a large picture is off by some mm. KIOSK chooses its own.
    ruler.setMinHeight(kLeastHeight);
    ruler.setCalibrationArea(calibrationArea({camera.width, camera.height}));
    ruler.setDetectionArea(0.6F);
    if (mode != GROUND_TRACKING) {
        const FramePair empty = emptyFrameOf(scene);
        ruler.takeFrame(empty.color, empty.depth);
        ruler.fitPlane(0.0F);
    }
    return ruler;
}

/// \return whether the parcel was measured
bool measureFrameOnce(Ruler& ruler, const FramePair& frame) {
    return ruler.takeFrame(frame.color, frame.depth) && ruler.measure() && ruler.result().inView;
}

BenchRow timeFrames(Ruler& ruler, const FramePair& frame, double seconds) {
    std::vector<double> intake;
    std::vector<double> measure;
    std::vector<double> both;
    const Stopwatch whole;
    while (both.size() < kFewestFrames || whole.milliseconds() < seconds * 1000.0) {
        const Stopwatch watch;
        ruler.takeFrame(frame.color, frame.depth);
        const double taken = watch.milliseconds();
        ruler.measure();
        const double measured = watch.milliseconds();
        intake.push_back(taken);
        measure.push_back(measured - taken);
        both.push_back(measured);
    }
    return {frame.depth.size(), both.size(), median(intake), median(measure), median(both)};
}

}  // namespace

BenchRow runBench(const cv::Size& size, ProductType mode, double seconds) {
    const sim::Scene scene = parcelScene(size);
    Ruler ruler = calibratedRuler(scene, mode);
    const FramePair frame = frameOf(scene, 0);
    for (int i = 0; i < kWarmFrames; ++i) {
        if (!measureFrameOnce(ruler, frame)) {
            throw InputError("--size " + std::to_string(size.width) + "x" + std::to_string(size.height) +
                             ": nothing is measured in a simulated picture of this size in " + modeName(mode) +
                             "; choose another, such as 640x480");
        }
    }
    return timeFrames(ruler, frame, seconds);
}

}  // namespace quorvel::command
