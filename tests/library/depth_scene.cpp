// SPDX-License-Identifier: Apache-2.0
#include "library/depth_scene.h"

#include <algorithm>
#include <cmath>

#include "support/members.h"

namespace quorvel::test {

cv::Mat DepthScene::depth(Draws& draws) const {
    cv::Mat image(size, CV_16UC1);
    const cv::Point middle(size.width / 2, size.height / 2);
    for (int row = 0; row < size.height; ++row) {
        for (int column = 0; column < size.width; ++column) {
            const cv::Point fromMiddle = cv::Point(column, row) - middle;
            float z = distance + slopeX * static_cast<float>(fromMiddle.x) + slopeY * static_cast<float>(fromMiddle.y);
            float height = 0.0F;
            for (const Block& block : blocks) {
                if (block.pixels.contains(cv::Point(column, row))) {
                    height = std::max(height, block.height);
                }
            }
            z -= height;
            if (noise > 0) {
                z += static_cast<float>(draws.between(-noise, noise));
            }
            const float millimetres = std::clamp(std::nearbyint(z), 0.0F, 65535.0F);
            image.at<ushort>(row, column) = draws.chance(holes) ? ushort{0} : static_cast<ushort>(millimetres);
        }
    }
    return image;
}

DepthScene blockScene(float height) {
    DepthScene scene;
    scene.blocks.push_back({{20, 16, 24, 16}, height});
    return scene;
}

DepthScene drawScene(Draws& draws) {
    DepthScene scene;
    scene.size.width = draws.between(24, 100);
    scene.size.height = draws.between(20, 76);
    scene.focal = draws.real(0.8F, 1.3F) * static_cast<float>(scene.size.width);
    scene.distance = draws.real(500, 1600);
    if (draws.chance(40)) {
        scene.slopeX = draws.real(-1, 1);
        scene.slopeY = draws.real(-1, 1);
    }
    scene.noise = draws.chance(40) ? 0 : draws.between(1, 4);
    scene.holes = draws.chance(60) ? 0 : draws.between(1, 4);
    const int blocks = draws.between(0, 3);
    for (int i = 0; i < blocks; ++i) {
        const int left = draws.between(0, scene.size.width * 2 / 3);
        const int top = draws.between(0, scene.size.height * 2 / 3);
        const int width = draws.between(8, scene.size.width * 2 / 3);
        const int height = draws.between(8, scene.size.height * 2 / 3);
        scene.blocks.push_back({{left, top, width, height}, draws.real(4, 300)});
    }
    return scene;
}

DepthScene largeScene(Draws& draws) {
    DepthScene scene;
    scene.size = {draws.between(400, 480), draws.between(320, 380)};
    scene.focal = draws.real(0.8F, 1.3F) * static_cast<float>(scene.size.width);
    scene.distance = draws.real(500, 1600);
    scene.slopeX = draws.real(-0.2F, 0.2F);
    scene.slopeY = draws.real(-0.2F, 0.2F);
    scene.noise = draws.between(0, 1);
    scene.holes = draws.between(0, 2);
    return scene;
}

DepthScene withBlock(DepthScene scene, Draws& draws) {
    const cv::Size block{scene.size.width / draws.between(3, 6), scene.size.height / draws.between(3, 6)};
    scene.blocks.push_back({{cv::Point(scene.size / 2) - cv::Point(block / 2), block}, draws.real(30, 200)});
    return scene;
}

void setPlane(Quorvel& ruler, const cv::Vec3f& normal, float offset, int minPixels) {
    ruler.refPlaneNormal = normal;
    ruler.refPlaneOffset = offset;
    ruler.cameraHeight = offset;
    ruler.calibStatus = true;
    ruler.minObjectPixels = minPixels;
}

void drawState(Draws& draws, const DepthScene& scene, Quorvel& ruler) {
    const cv::Vec3f normal{draws.real(-0.05F, 0.05F), draws.real(-0.05F, 0.05F), 1};
    const auto length = static_cast<float>(cv::norm(normal));
    const cv::Vec3f unit = draws.chance(30) ? cv::Vec3f(0, 0, 1) : normal * (1.0F / length);
    const float offset = draws.chance(50) ? scene.distance : scene.distance + draws.real(-10, 10);
    setPlane(ruler, unit, offset, draws.below(25));
    if (draws.chance(4)) {
        ruler.refPlaneNormal = {0, 0, 0};
    }
    ruler.calibStatus = !draws.chance(6);
    ruler.debugMode = draws.chance(50);
    ruler.minObjectHeight = draws.real(2, 20);
    ruler.filterWeight = draws.chance(40) ? 0.0F : draws.real(-0.05F, 0.05F);
    if (draws.chance(40)) {
        ruler.setCameraType(true, draws.between(-10, 80));
    }
    if (draws.chance(70)) {
        ruler.effectiveRegion = cv::Rect(cv::Point(0, 0), scene.size);
    } else {
        ruler.effectiveRegion = {draws.between(-5, scene.size.width), draws.between(-5, scene.size.height),
                                 draws.between(0, 40), draws.between(0, 40)};
    }
}

Quorvel detachedCopy(const Quorvel& ruler) {
    Quorvel copy(ruler);
    for (const auto& [name, image] : rulerImages()) {
        copy.*image = (copy.*image).clone();
    }
    for (const auto& [name, buffer] : rulerBuffers()) {
        for (cv::Mat& image : copy.*buffer) {
            image = image.clone();
        }
    }
    return copy;
}

}  // namespace quorvel::test
