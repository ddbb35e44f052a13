// SPDX-License-Identifier: Apache-2.0
#include "library/plain/region_growth.h"

#include <array>
#include <cmath>
#include <vector>

namespace quorvel::test::plain {

namespace {

const std::array<cv::Point, 4> kNeighbours = {cv::Point(1, 0), cv::Point(-1, 0), cv::Point(0, 1), cv::Point(0, -1)};

/// A channel rounded to the nearest int, ties to even, and clamped to 0 ... 255; 0 for NaN and beyond int.
float roundedColour(float value) {
    if (!(std::fabs(value) < 2147483648.0F)) {
        return 0.0F;
    }
    const float rounded = std::nearbyint(value);
    return rounded < 0.0F ? 0.0F : (rounded > 255.0F ? 255.0F : rounded);
}

struct Flood {
    cv::Mat map;
    cv::Vec3f center;
    cv::Mat seed;
    cv::Mat state;

    bool inBand(const cv::Point& pixel) const {
        const auto colour = map.at<cv::Vec3f>(pixel);
        for (int k = 0; k < 3; ++k) {
            const float value = roundedColour(colour[k]);
            if (!(value > center[k] - 64.0F) || !(value < center[k] + 64.0F)) {
                return false;
            }
        }
        return true;
    }
    bool interior(const cv::Point& pixel) const {
        return pixel.y > 0 && pixel.y < map.rows - 1 && pixel.x > 0 && pixel.x < map.cols - 1;
    }
};

Flood prepare(const cv::Mat& normalMap, const cv::Vec3f& normal, const cv::Mat& seedCloud) {
    Flood flood;
    flood.map = normalMap;
    for (int k = 0; k < 3; ++k) {
        flood.center[k] = static_cast<float>(static_cast<double>(normal[k]) * 127.5) + 127.5F;
    }
    flood.seed = cv::Mat::zeros(seedCloud.size(), CV_8UC1);
    flood.state = cv::Mat::zeros(normalMap.size(), CV_8UC1);
    for (int r = 0; r < seedCloud.rows; ++r) {
        for (int c = 0; c < seedCloud.cols; ++c) {
            const auto& point = seedCloud.at<cv::Vec3f>(r, c);
            const bool absent = point[0] == 0.0F && point[1] == 0.0F && point[2] == 0.0F;
            flood.seed.at<uchar>(r, c) = absent ? 0 : 1;
        }
    }
    return flood;
}

std::vector<cv::Point> markSeeds(Flood& flood) {
    std::vector<cv::Point> frontier;
    for (int r = 1; r <= flood.map.rows - 2; ++r) {
        for (int c = 1; c <= flood.map.cols - 2; ++c) {
            if (flood.seed.at<uchar>(r, c) != 1) {
                continue;
            }
            flood.state.at<uchar>(r, c) = 1;
            for (const auto& step : kNeighbours) {
                const cv::Point neighbour = cv::Point(c, r) + step;
                if (flood.seed.at<uchar>(neighbour) == 1) {
                    continue;
                }
                if (flood.inBand(neighbour)) {
                    frontier.push_back(neighbour);
                } else {
                    flood.state.at<uchar>(neighbour) = 3;
                }
            }
        }
    }
    return frontier;
}

std::vector<cv::Point> nextRing(Flood& flood, const std::vector<cv::Point>& frontier) {
    std::vector<cv::Point> next;
    for (const auto& pixel : frontier) {
        if (!flood.interior(pixel)) {
            continue;
        }
        for (const auto& step : kNeighbours) {
            const cv::Point neighbour = pixel + step;
            auto& state = flood.state.at<uchar>(neighbour);
            if (state != 0 && state != 3) {
                continue;
            }
            if (flood.inBand(neighbour)) {
                state = 2;
                next.push_back(neighbour);
            } else {
                state = 3;
            }
        }
    }
    return next;
}

}  // namespace

cv::Mat growPlaneRegion(const cv::Mat& fullCloud, const cv::Mat& normalMap, const cv::Vec3f& normal,
                        const cv::Mat& seedCloud) {
    Flood flood = prepare(normalMap, normal, seedCloud);
    std::vector<cv::Point> frontier = markSeeds(flood);
    while (!frontier.empty()) {
        frontier = nextRing(flood, frontier);
    }
    cv::Mat grown = fullCloud.clone();
    for (int r = 0; r < grown.rows; ++r) {
        for (int c = 0; c < grown.cols; ++c) {
            const uchar state = flood.state.at<uchar>(r, c);
            if (state == 0 || state == 3) {
                grown.at<cv::Vec3f>(r, c) = cv::Vec3f(0.0F, 0.0F, 0.0F);
            }
        }
    }
    return grown;
}

}  // namespace quorvel::test::plain
