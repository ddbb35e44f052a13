// SPDX-License-Identifier: Apache-2.0
// How the time of the whole measurement depends on the picture's size, clutter, the object's size, the calibration
// area and the batch.
#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <utility>

#include "pipeline.h"

namespace quorvel::bench {

namespace {

const cv::Size kSize(640, 480);

Work sweepPoint(const std::string& name, const std::string& point, double bytes,
                const std::function<Run(const PipelineForm&)>& make) {
    return {name, point, bytes, [make] { return make(plainPipeline()); }, [make] { return make(fastPipeline()); }};
}

Run singleShot(const PipelineForm& form, const Frame& frame) {
    const cv::Size size = frame.depth.size();
    return frameRun(form, calibratedRuler(parcelScene(size).camera, KIOSK), frame);
}

double singleShotBytes(const cv::Size& size) {
    return intakeBytes(size) + measureBytes(size);
}

Works overSizes() {
    Works works;
    for (const cv::Size& size : {cv::Size(320, 240), cv::Size(640, 480), cv::Size(848, 480), cv::Size(1280, 720),
                                 cv::Size(1920, 1080), cv::Size(2560, 1440), cv::Size(3840, 2160)}) {
        works.push_back(sweepPoint("size", sizeName(size), singleShotBytes(size), [size](const PipelineForm& form) {
            return singleShot(form, parcelFrames(size).occupied);
        }));
    }
    return works;
}

/// The cells of a grid of 16 x 16 pixels, those nearest the picture's border first.
std::vector<cv::Rect> cellsFromTheBorder() {
    constexpr int kCell = 16;
    std::vector<cv::Rect> cells;
    for (int y = 0; y < kSize.height; y += kCell) {
        for (int x = 0; x < kSize.width; x += kCell) {
            cells.emplace_back(x, y, kCell, kCell);
        }
    }
    const auto fromBorder = [](const cv::Rect& cell) {
        return std::min({cell.x, cell.y, kSize.width - cell.br().x, kSize.height - cell.br().y});
    };
    std::stable_sort(cells.begin(), cells.end(),
                     [&](const cv::Rect& a, const cv::Rect& b) { return fromBorder(a) < fromBorder(b); });
    return cells;
}

/// The parcel with blocks of 60 mm height around it. Each block has 2 x 2 small-image pixels and is two pixels from the
/// next: too small for an object, but a region that has to be examined.
Frame clutteredFrame(int blocks) {
    constexpr ushort kBlockHeight = 60;
    constexpr int kBlockSide = 8;
    Frame frame = parcelFrames(kSize).occupied;
    frame.depth = frame.depth.clone();
    const std::vector<cv::Rect> cells = cellsFromTheBorder();
    for (std::size_t i = 0; i < static_cast<std::size_t>(blocks); ++i) {
        cv::Mat block = frame.depth(cv::Rect(cells[i].tl(), cv::Size(kBlockSide, kBlockSide)));
        block -= cv::Scalar(kBlockHeight);
    }
    return frame;
}

Works overRegions() {
    Works works;
    for (const int blocks : {0, 1, 10, 50, 100, 200, 500}) {
        works.push_back(
            sweepPoint("regions", std::to_string(blocks), singleShotBytes(kSize),
                       [blocks](const PipelineForm& form) { return singleShot(form, clutteredFrame(blocks)); }));
    }
    return works;
}

/// A box straight under the camera whose top covers a share of the picture.
/// \param percent of the picture's area
const Frame& coveringFrame(int percent) {
    static std::map<int, Frame> rendered;
    auto found = rendered.find(percent);
    if (found == rendered.end()) {
        sim::Scene scene = parcelScene(kSize);
        sim::Box& box = scene.boxes[0];
        // The top's edge of L mm spans f L / (t - height) pixels.
        const double mmPerPixel = (scene.surface.distance - box.height) / scene.camera.fx;
        const double side = std::sqrt(percent / 100.0);
        box.yawDeg = 0.0;
        box.length = side * kSize.width * mmPerPixel;
        box.width = side * kSize.height * mmPerPixel;
        found = rendered.emplace(percent, occupiedFrame(scene, 0)).first;
    }
    return found->second;
}

Works overCoverage() {
    Works works;
    for (const int percent : {1, 5, 10, 20, 30, 40, 50, 60, 70, 80, 90}) {
        works.push_back(
            sweepPoint("coverage", std::to_string(percent), singleShotBytes(kSize),
                       [percent](const PipelineForm& form) { return singleShot(form, coveringFrame(percent)); }));
    }
    return works;
}

Works overCalibrationArea(const std::string& name, ProductType mode) {
    Works works;
    for (const int percent : {10, 20, 30, 40, 50, 60, 70, 80, 90, 100}) {
        works.push_back(sweepPoint(name, std::to_string(percent), calibrationBytes(kSize),
                                   [percent, mode](const PipelineForm& form) {
                                       Quorvel ruler = makeRuler(parcelScene(kSize).camera, mode);
                                       cv::Rect region;
                                       ruler.setCalibrationRoI(static_cast<float>(percent) / 100.0F, region);
                                       return calibrationRun(form, ruler, parcelFrames(kSize).empty);
                                   }));
    }
    return works;
}

Works overBatchLength() {
    Works works;
    for (const std::size_t frames : {1U, 2U, 4U, 8U, 15U, 30U}) {
        works.push_back(
            sweepPoint("batch", std::to_string(frames), batchBytes(kSize, frames), [frames](const PipelineForm& form) {
                return batchRun(form, calibratedRuler(parcelScene(kSize).camera, KIOSK), parcelBatch(kSize, frames));
            }));
    }
    return works;
}

}  // namespace

Works sweepWorks() {
    Works all;
    for (const Works& works : {overSizes(), overRegions(), overCoverage(), overCalibrationArea("area-sampling", KIOSK),
                               overCalibrationArea("area-growing", GROUND_GROWING), overBatchLength()}) {
        all.insert(all.end(), works.begin(), works.end());
    }
    return all;
}

}  // namespace quorvel::bench
