// SPDX-License-Identifier: Apache-2.0
#include "bench_scene.h"

#include <cstddef>
#include <map>
#include <utility>

#include "sim/render.h"

namespace quorvel::bench {

namespace {

constexpr int kDownScale = 4;

using SizeKey = std::pair<int, int>;

SizeKey keyOf(const cv::Size& size) {
    return {size.width, size.height};
}

Frame frameOf(const sim::Scene& scene, unsigned index) {
    cv::Mat depth = sim::renderDepth(scene, index);
    return {cv::Mat(depth.size(), CV_8UC3, cv::Scalar::all(128)), depth};
}

}  // namespace

sim::Scene parcelScene(const cv::Size& size) {
    sim::Scene scene;
    scene.name = "bench";
    const double scale = size.width / 640.0;
    const double focal = 600.0 * scale;
    scene.camera = {focal, focal, (size.width - 1) / 2.0, (size.height - 1) / 2.0, size.width, size.height};
    sim::Box box;
    box.length = 400.0;
    box.width = 300.0;
    box.height = 200.0;
    box.yawDeg = 12.0;
    scene.boxes = {box};
    // Follows the distance of neighbouring points, so that every size is measured: noise above it looks like flanks.
    scene.effects.axialNoise = 1.0 / scale;
    scene.effects.flyingPixels = 0.3;
    scene.effects.dropout = 0.002;
    return scene;
}

Frame occupiedFrame(const sim::Scene& scene, unsigned index) {
    return frameOf(scene, index);
}

Frame emptyFrame(const sim::Scene& scene) {
    sim::Scene empty = scene;
    empty.boxes.clear();
    empty.cylinders.clear();
    // Far from the occupied frames' indices, so that its noise is that of none of them.
    constexpr unsigned kEmptyIndex = 0x80000000U;
    return frameOf(empty, kEmptyIndex);
}

const ParcelFrames& parcelFrames(const cv::Size& size) {
    static std::map<SizeKey, ParcelFrames> rendered;
    auto found = rendered.find(keyOf(size));
    if (found == rendered.end()) {
        const sim::Scene scene = parcelScene(size);
        found = rendered.emplace(keyOf(size), ParcelFrames{emptyFrame(scene), occupiedFrame(scene, 0)}).first;
    }
    return found->second;
}

std::vector<Frame> parcelBatch(const cv::Size& size, std::size_t length) {
    static std::map<SizeKey, std::vector<Frame>> rendered;
    std::vector<Frame>& frames = rendered[keyOf(size)];
    while (frames.size() < length) {
        frames.push_back(occupiedFrame(parcelScene(size), static_cast<unsigned>(frames.size())));
    }
    return {frames.begin(), frames.begin() + static_cast<std::ptrdiff_t>(length)};
}

Quorvel makeRuler(const sim::Camera& camera, ProductType mode) {
    Quorvel ruler(static_cast<float>(camera.fx), static_cast<float>(camera.fy), static_cast<float>(camera.cx),
                  static_cast<float>(camera.cy), camera.width, camera.height, false, "");
    cv::Rect region;
    ruler.productType = mode;
    ruler.setCalibrationRoI(0.8F, region);
    ruler.setEffectiveRegionInArea(0.6F, region);
    return ruler;
}

Quorvel calibratedRuler(const sim::Camera& camera, ProductType mode) {
    constexpr float kDistance = 1000.0F;  // mm
    constexpr float kObjectEdge = 50.0F;  // mm
    const float edge = kObjectEdge / kDistance * static_cast<float>(camera.fx / kDownScale);
    Quorvel ruler = makeRuler(camera, mode);
    ruler.refPlaneNormal = {0.0F, 0.0F, 1.0F};
    ruler.refPlaneOffset = kDistance;
    ruler.cameraHeight = kDistance;
    ruler.minObjectPixels = static_cast<int>(edge * edge);
    ruler.calibStatus = true;
    return ruler;
}

std::string sizeName(const cv::Size& size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

PixelCounts pixelCounts(const cv::Size& size) {
    return {static_cast<double>(size.area()),
            static_cast<double>(size.width / kDownScale) * (size.height / kDownScale)};
}

}  // namespace quorvel::bench
