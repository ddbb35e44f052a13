// SPDX-License-Identifier: Apache-2.0
#include "sim/test_scenes.h"

#include <cstring>
#include <stdexcept>

#include "sim/random.h"

namespace quorvel::sim {

Scene flatScene(double distance) {
    Scene scene;
    scene.surface.distance = distance;
    return scene;
}

Camera smallCamera() {
    return {60.0, 60.0, 32.0, 24.0, 64, 48};
}

Scene randomScene(std::uint32_t seed) {
    Random random({seed, 4711U});
    const auto between = [&random](double low, double high) { return low + (high - low) * random.uniform(); };
    Scene scene;
    scene.camera = smallCamera();
    scene.surface = {between(600.0, 1500.0), between(-25.0, 25.0), between(-25.0, 25.0), 0.0};
    for (int i = 0; i < 3; ++i) {
        scene.boxes.push_back({between(-400.0, 400.0), between(-300.0, 300.0), between(-180.0, 180.0),
                               between(40.0, 300.0), between(40.0, 300.0), between(20.0, 350.0), cv::Vec3b()});
    }
    for (int i = 0; i < 2; ++i) {
        scene.cylinders.push_back(
            {between(-400.0, 400.0), between(-300.0, 300.0), between(40.0, 250.0), between(20.0, 350.0), cv::Vec3b()});
    }
    return scene;
}

int countDifferent(const cv::Mat& a, const cv::Mat& b) {
    if (a.size() != b.size() || a.type() != b.type()) {
        throw std::invalid_argument("countDifferent: images of different size or type");
    }
    int different = 0;
    for (int row = 0; row < a.rows; ++row) {
        for (int col = 0; col < a.cols; ++col) {
            different += std::memcmp(a.ptr(row, col), b.ptr(row, col), a.elemSize()) != 0 ? 1 : 0;
        }
    }
    return different;
}

}  // namespace quorvel::sim
