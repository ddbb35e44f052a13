// SPDX-License-Identifier: Apache-2.0
#include "bench_scene.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <map>
#include <utility>

#include "sim/render.h"
#include "support/camera_ruler.h"

namespace quorvel::bench {

namespace {

constexpr int kDownScale = 4;

struct Plane {
    cv::Vec3f normal;
    float offset = 0.0F;
    int minPixels = 0;
};

using SizeKey = std::pair<int, int>;

SizeKey keyOf(const cv::Size& size) {
    return {size.width, size.height};
}

/// The area in the middle, 80 % of 640 x 480 in all pictures that are large enough. The sampling fit draws only from
/// the first 32768 pixels of an area; in a very large area these would be only a few rows.
cv::Rect calibrationArea(const cv::Size& picture) {
    const cv::Size area(std::min(512, picture.width), std::min(384, picture.height));
    return {cv::Point((picture.width - area.width) / 2, (picture.height - area.height) / 2), area};
}

Plane fitPlane(const sim::Camera& camera) {
    const cv::Size size(camera.width, camera.height);
    Quorvel ruler = makeRuler(camera, KIOSK);
    ruler.setCalibrationRoI(calibrationArea(size));
    const Frame& empty = parcelFrames(size).empty;
    float t = 0.0F;
    std::srand(1);
    ruler.getCameraFrame(empty.color, empty.depth);
    ruler.calibRef(t, 0.0F);
    return {ruler.refPlaneNormal, ruler.refPlaneOffset, ruler.minObjectPixels};
}

const Plane& planeOf(const sim::Camera& camera) {
    static std::map<SizeKey, Plane> planes;
    const SizeKey key = keyOf({camera.width, camera.height});
    auto found = planes.find(key);
    if (found == planes.end()) {
        found = planes.emplace(key, fitPlane(camera)).first;
    }
    return found->second;
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
    // The noise is proportional to the distance of neighbouring points. With more noise the points look like flanks,
    // and nothing is measured.
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
    // An index far from those of the occupied frames, so that the noise is different.
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
    Quorvel ruler = test::rulerOf(camera);
    cv::Rect region;
    ruler.productType = mode;
    ruler.setCalibrationRoI(0.8F, region);
    ruler.setEffectiveRegionInArea(0.6F, region);
    return ruler;
}

Quorvel calibratedRuler(const sim::Camera& camera, ProductType mode) {
    const Plane& plane = planeOf(camera);
    Quorvel ruler = makeRuler(camera, mode);
    ruler.refPlaneNormal = plane.normal;
    ruler.refPlaneOffset = plane.offset;
    ruler.cameraHeight = plane.offset;
    ruler.minObjectPixels = plane.minPixels;
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
