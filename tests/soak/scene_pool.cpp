// SPDX-License-Identifier: Apache-2.0
#include "soak/scene_pool.h"

#include <cstddef>
#include <cstdint>

#include "sim/render.h"

namespace quorvel::soak {

namespace {

constexpr int kNoiseMargin = 64;  // pixels: some 4000 different noises
constexpr int kLargestNoise = 2;  // mm

sim::Camera cameraOf(const cv::Size& size) {
    sim::Camera camera;
    camera.width = size.width;
    camera.height = size.height;
    camera.fx = camera.fy = size.width * 15.0 / 16.0;
    camera.cx = size.width / 2.0;
    camera.cy = size.height / 2.0;
    return camera;
}

sim::Box drawBox(test::Draws& draws, double reach) {
    sim::Box box;
    box.x = draws.uniform(-reach, reach);
    box.y = draws.uniform(-reach, reach);
    box.yawDeg = draws.uniform(0, 180);
    box.length = draws.uniform(60, 320);
    box.width = draws.uniform(60, 220);
    box.height = draws.uniform(15, 300);
    return box;
}

/// One object near the middle, none now and then, up to three others around it.
sim::Scene drawScene(test::Draws& draws, const sim::Camera& camera, int number) {
    sim::Scene scene;
    scene.camera = camera;
    scene.seed = static_cast<std::uint32_t>(number + 1);
    scene.effects.flyingPixels = 0.3;
    scene.effects.dropout = 0.002;
    scene.effects.axialNoise = 0.5;
    if (draws.chance(95)) {
        scene.boxes.push_back(drawBox(draws, 60));
    }
    for (int others = draws.below(4); others > 0; --others) {
        scene.boxes.push_back(drawBox(draws, 400));
    }
    if (draws.chance(30)) {
        scene.cylinders.push_back({draws.uniform(-300, 300), draws.uniform(-300, 300), 120, draws.uniform(20, 200)});
    }
    return scene;
}

}  // namespace

ScenePool::ScenePool(const cv::Size& size, int scenes) : camera_(cameraOf(size)) {
    test::Draws draws(static_cast<unsigned>(size.width));
    const auto rendered = [](const sim::Scene& scene) {
        const sim::Frame frame = sim::render(scene);
        return Rendered{{frame.color, frame.depth}, frame.depth != 0};
    };
    for (int i = 0; i < scenes; ++i) {
        scenes_.push_back(rendered(drawScene(draws, camera_, i)));
    }
    sim::Scene surface;
    surface.camera = camera_;
    surface.effects.axialNoise = 0.5;
    empty_ = rendered(surface);
    noise_.create(size.height + kNoiseMargin, size.width + kNoiseMargin, CV_16UC1);
    for (int row = 0; row < noise_.rows; ++row) {
        for (int column = 0; column < noise_.cols; ++column) {
            noise_.ptr<ushort>(row)[column] = static_cast<ushort>(draws.between(0, kLargestNoise));
        }
    }
}

const Frame& ScenePool::scene(std::size_t index, test::Draws& draws) {
    return withNoise(scenes_[index], draws);
}

const Frame& ScenePool::draw(test::Draws& draws) {
    return scene(static_cast<std::size_t>(draws.below(static_cast<int>(scenes_.size()))), draws);
}

const Frame& ScenePool::drawEmpty(test::Draws& draws) {
    return withNoise(empty_, draws);
}

const Frame& ScenePool::withNoise(const Rendered& rendered, test::Draws& draws) {
    const cv::Mat& depth = rendered.frame.depth;
    const int left = draws.below(kNoiseMargin);
    const int top = draws.below(kNoiseMargin);
    const cv::Rect part({left, top}, depth.size());
    current_.color = rendered.frame.color;
    current_.depth.create(depth.size(), CV_16UC1);
    current_.depth.setTo(0);
    cv::add(depth, noise_(part), current_.depth, rendered.present);
    return current_;
}

}  // namespace quorvel::soak
