// SPDX-License-Identifier: Apache-2.0
#include "numbers/exact_scene.h"

#include <algorithm>
#include <cmath>

namespace quorvel::test {

namespace {

constexpr double kFarthest = 65535.0;  ///< mm, what a depth pixel holds

// Written out: the products of OpenCV's vectors may be summed in another order or with another width.
double dot(const cv::Vec3d& a, const cv::Vec3d& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

cv::Vec3d unit(const cv::Vec3d& v) {
    const double length = std::sqrt(dot(v, v));
    return {v[0] / length, v[1] / length, v[2] / length};
}

cv::Vec3d across(const cv::Vec3d& a, const cv::Vec3d& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

int widthOf(std::uint32_t seed) {
    // The fit on every frame needs more than 4000 small-image pixels, which the smaller frames do not have.
    constexpr int kWidths[] = {320, 480, 160, 333, 400};
    return seed % 25 == 24 ? 640 : kWidths[seed % 5];
}

}  // namespace

ExactScene::ExactScene(std::uint32_t seed)
    : seed_(seed), width_(widthOf(seed)), height_(width_ * 3 / 4 + (width_ % 2) * 2) {
    Draws draw(seed);
    focalX_ = static_cast<float>(width_ * draw.between(800, 1200)) / 1000.0F;
    focalY_ = focalX_ * static_cast<float>(draw.between(990, 1010)) / 1000.0F;
    centreX_ = static_cast<float>(width_ * draw.between(450, 550)) / 1000.0F;
    centreY_ = static_cast<float>(height_ * draw.between(450, 550)) / 1000.0F;
    distance_ = draw.between(600, 1600);
    // One scene in four looks straight down: axis-parallel boxes and rays without rounding are cases of their own.
    const int tilt = draw.between(0, 3) == 0 ? 0 : 90;
    const double slopeX = draw.between(-tilt, tilt) / 1000.0;
    const double slopeY = draw.between(-tilt, tilt) / 1000.0;
    normal_ = unit({slopeX, slopeY, 1.0});
    first_ = unit(across({0.0, 1.0, 0.0}, normal_));
    second_ = across(normal_, first_);
    const int plates = draw.between(1, 4);
    for (int i = 0; i < plates; ++i) {
        plates_.push_back(makePlate(draw, i == 0 ? 80 : 450));
    }
    // Mostly so little noise that the plane can be fitted; now and then too much for a fit.
    constexpr int kNoises[] = {0, 0, 0, 1, 1, 1, 2, 4};
    noise_ = kNoises[draw.between(0, 7)];
    lostPerMil_ = draw.between(0, 3) == 0 ? draw.between(1, 15) : 0;
}

ExactScene::Plate ExactScene::makePlate(Draws& draw, int reach) const {
    Plate plate;
    plate.x = distance_ * draw.between(-reach, reach) / 1000.0;
    plate.y = distance_ * draw.between(-reach, reach) / 1000.0;
    plate.length = distance_ * draw.between(50, 170) / 1000.0;
    plate.width = distance_ * draw.between(30, 140) / 1000.0;
    plate.height = distance_ * draw.between(15, 350) / 1000.0;
    plate.round = draw.between(0, 4) == 0;
    // Cosine and sine of the turn whose half has the tangent m; no turn in one case of four.
    const double m = draw.between(0, 3) == 0 ? 0.0 : draw.between(-1000, 1000) / 1000.0;
    plate.cosine = (1.0 - m * m) / (1.0 + m * m);
    plate.sine = 2.0 * m / (1.0 + m * m);
    return plate;
}

double ExactScene::depthAt(int column, int row, const std::vector<Plate>& plates) const {
    const cv::Vec3d ray((column - static_cast<double>(centreX_)) / static_cast<double>(focalX_),
                        (row - static_cast<double>(centreY_)) / static_cast<double>(focalY_), 1.0);
    const double slope = dot(normal_, ray);
    double nearest = distance_ / slope;
    for (const Plate& plate : plates) {
        const double z = (distance_ - plate.height) / slope;
        const double x = dot(first_, ray) * z - plate.x;
        const double y = dot(second_, ray) * z - plate.y;
        const double along = x * plate.cosine + y * plate.sine;
        const double aside = y * plate.cosine - x * plate.sine;
        const bool hit = plate.round
                             ? x * x + y * y < plate.length * plate.length
                             : along * along < plate.length * plate.length && aside * aside < plate.width * plate.width;
        if (hit) {
            nearest = std::min(nearest, z);
        }
    }
    return nearest;
}

ExactFrame ExactScene::render(std::uint32_t index, const std::vector<Plate>& plates) const {
    Draws draw((static_cast<std::uint64_t>(index) << 32U) + seed_);
    ExactFrame frame{cv::Mat(height_, width_, CV_8UC3), cv::Mat(height_, width_, CV_16UC1)};
    for (int row = 0; row < height_; ++row) {
        for (int column = 0; column < width_; ++column) {
            const double z = depthAt(column, row, plates) + draw.between(-noise_, noise_);
            const bool lost = draw.between(0, 999) < lostPerMil_ || z > kFarthest;
            frame.depth.at<std::uint16_t>(row, column) =
                lost ? std::uint16_t{0} : static_cast<std::uint16_t>(std::floor(z + 0.5));
            const int grey = draw.between(0, 40) + (static_cast<int>(z) + column) % 200;
            frame.color.at<cv::Vec3b>(row, column) =
                cv::Vec3b(static_cast<std::uint8_t>(grey), static_cast<std::uint8_t>(255 - grey),
                          static_cast<std::uint8_t>((row + column) % 256));
        }
    }
    return frame;
}

ExactFrame ExactScene::empty(std::uint32_t index) const {
    return render(index, {});
}

ExactFrame ExactScene::occupied(std::uint32_t index) const {
    return render(index, plates_);
}

}  // namespace quorvel::test
