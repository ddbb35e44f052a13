// SPDX-License-Identifier: Apache-2.0
#include "library/depth_scene.h"

#include <algorithm>
#include <cmath>

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
    scene.size = {draws.between(24, 100), draws.between(20, 76)};
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
        const cv::Point corner(draws.between(0, scene.size.width * 2 / 3), draws.between(0, scene.size.height * 2 / 3));
        const cv::Size extent(draws.between(8, scene.size.width * 2 / 3), draws.between(8, scene.size.height * 2 / 3));
        scene.blocks.push_back({{corner, extent}, draws.real(4, 300)});
    }
    return scene;
}

void setPlane(Quorvel& ruler, const cv::Vec3f& normal, float offset, int minPixels) {
    ruler.refPlaneNormal = normal;
    ruler.refPlaneOffset = offset;
    ruler.cameraHeight = offset;
    ruler.calibStatus = true;
    ruler.minObjectPixels = minPixels;
}

Quorvel detachedCopy(const Quorvel& ruler) {
    Quorvel copy(ruler);
    for (cv::Mat* image : {&copy.colorImage, &copy.depthImage, &copy.auxImage, &copy.colorSmall, &copy.depthSmall,
                           &copy.pointCloud, &copy.pointCloudSmall, &copy.pointCloudSmallCopy}) {
        *image = image->clone();
    }
    for (std::vector<cv::Mat>* buffer :
         {&copy.colorFrameBuffer, &copy.depthFrameBuffer, &copy.pointCloudBuffer, &copy.pointCloudSmallBuffer,
          &copy.colorSmallBuffer, &copy.depthSmallBuffer, &copy.pointCloudSmallCopyBuffer}) {
        for (cv::Mat& image : *buffer) {
            image = image.clone();
        }
    }
    return copy;
}

}  // namespace quorvel::test
