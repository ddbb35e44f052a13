// SPDX-License-Identifier: Apache-2.0
#include "bench_run.h"

#include <algorithm>
#include <string>
#include <vector>

#include "frame_reader.h"
#include "input_error.h"
#include "measurement.h"
#include "median.h"
#include "mode_option.h"
#include "scratch_folder.h"
#include "sim/render.h"
#include "stopwatch.h"
#include "stream_redirect.h"

namespace quorvel::command {

namespace {

constexpr int kWarmFrames = 3;
constexpr std::size_t kFewestFrames = 3;
constexpr float kLeastHeight = 100.0F;  // mm, of a parcel of 200

/// A parcel of 400 x 300 x 200 mm seen from 1 m. The picture shows the same part of the surface at every size of one
/// shape, and the noise follows the distance of neighbouring points.
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

/// The same number of pixels at every size: the sampling fit draws from the first 32768 of an area alone, and of a
/// large one these would be a few rows.
cv::Rect calibrationArea(const cv::Size& picture) {
    const cv::Size area(std::min(240, picture.width), std::min(180, picture.height));
    return {cv::Point((picture.width - area.width) / 2, (picture.height - area.height) / 2), area};
}

Quorvel calibratedRuler(const sim::Scene& scene, ProductType mode, const std::string& folder) {
    const sim::Camera& camera = scene.camera;
    Quorvel ruler = makeRuler({camera.fx, camera.fy, camera.cx, camera.cy, camera.width, camera.height});
    ruler.paramDir = folder;
    ruler.calFilePath = folder + "/cal.txt";
    ruler.setProductType(mode);
    // Half-way up the parcel: the growing fit of a large picture is off by some mm. KIOSK chooses its own.
    ruler.minObjectHeight = kLeastHeight;
    ruler.setCalibrationRoI(calibrationArea({camera.width, camera.height}));
    cv::Rect area;
    ruler.setEffectiveRegionInArea(0.6F, area);
    if (mode != GROUND_TRACKING) {
        const FramePair empty = emptyFrameOf(scene);
        float distance = 0.0F;
        ruler.getCameraFrame(empty.color, empty.depth);
        ruler.calibRef(distance, 0.0F);
    }
    return ruler;
}

/// \return whether the parcel was measured
bool measureFrameOnce(Quorvel& ruler, const FramePair& frame) {
    return ruler.getCameraFrame(frame.color, frame.depth) && ruler.measureOnce() == 0 && ruler.result.inView;
}

BenchRow timeFrames(Quorvel& ruler, const FramePair& frame, double seconds) {
    std::vector<double> intake;
    std::vector<double> measure;
    std::vector<double> both;
    const Stopwatch whole;
    while (both.size() < kFewestFrames || whole.milliseconds() < seconds * 1000.0) {
        const Stopwatch watch;
        ruler.getCameraFrame(frame.color, frame.depth);
        const double taken = watch.milliseconds();
        ruler.measureOnce();
        const double measured = watch.milliseconds();
        intake.push_back(taken);
        measure.push_back(measured - taken);
        both.push_back(measured);
    }
    return {frame.depth.size(), both.size(), median(intake), median(measure), median(both)};
}

}  // namespace

BenchRow runBench(const cv::Size& size, ProductType mode, double seconds) {
    const SilentLibrary silence;
    const ScratchFolder folder;
    const sim::Scene scene = parcelScene(size);
    Quorvel ruler = calibratedRuler(scene, mode, folder.path());
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
