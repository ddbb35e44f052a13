// SPDX-License-Identifier: Apache-2.0
#include "sim/render.h"

#include <vector>

#include "sim/cast.h"
#include "sim/effects.h"
#include "sim/shade.h"
#include "sim/view.h"

namespace quorvel::sim {

namespace {

cv::Mat exactDepth(const Camera& camera, const std::vector<Hit>& hits) {
    cv::Mat depth(camera.height, camera.width, CV_64FC1);
    auto hit = hits.begin();
    for (auto& z : cv::Mat_<double>(depth)) {
        z = hit->z;
        ++hit;
    }
    return depth;
}

cv::Mat sensorDepth(const Scene& scene, const std::vector<Hit>& hits, unsigned frameIndex) {
    return applyEffects(exactDepth(scene.camera, hits), scene.effects, scene.seed, frameIndex);
}

}  // namespace

Frame render(const Scene& scene, unsigned frameIndex) {
    const View view = makeView(scene);
    const std::vector<Hit> hits = castImage(view);
    return {shadeImage(view, hits), sensorDepth(scene, hits, frameIndex)};
}

Frame renderEmpty(const Scene& scene, unsigned frameIndex) {
    Scene empty = scene;
    empty.boxes.clear();
    empty.cylinders.clear();
    return render(empty, frameIndex);
}

cv::Mat renderDepth(const Scene& scene, unsigned frameIndex) {
    return sensorDepth(scene, castImage(makeView(scene)), frameIndex);
}

cv::Mat renderDepthExact(const Scene& scene) {
    return exactDepth(scene.camera, castImage(makeView(scene)));
}

}  // namespace quorvel::sim
