// SPDX-License-Identifier: Apache-2.0
#include "calib/region_growth.h"

#include <algorithm>
#include <array>
#include <vector>

#include "calib/plane_model.h"
#include "common/numbers.h"

namespace quorvel::internal {

namespace {

const std::array<cv::Point, 4> kNeighbours{cv::Point(1, 0), cv::Point(-1, 0), cv::Point(0, 1), cv::Point(0, -1)};

float roundedChannel(float value) {
    return static_cast<float>(std::clamp(roundToInt(value), 0, 255));
}

/// 255 where a pixel's rounded normal colour lies in the band of the normal.
cv::Mat orientationMask(const cv::Mat& normalMap, const cv::Vec3f& normal) {
    const NormalBand band({normalColour(normal[0]), normalColour(normal[1]), normalColour(normal[2])});
    cv::Mat mask(normalMap.rows, normalMap.cols, CV_8UC1);
    for (int row = 0; row < normalMap.rows; ++row) {
        const auto* colours = normalMap.ptr<cv::Vec3f>(row);
        auto* inside = mask.ptr<uchar>(row);
        for (int column = 0; column < normalMap.cols; ++column) {
            const cv::Vec3f& c = colours[column];
            inside[column] =
                band.contains({roundedChannel(c[0]), roundedChannel(c[1]), roundedChannel(c[2])}) ? 255 : 0;
        }
    }
    return mask;
}

/// 255 where the cloud's point is not (0, 0, 0).
cv::Mat presentMask(const cv::Mat& cloud) {
    cv::Mat mask(cloud.rows, cloud.cols, CV_8UC1);
    for (int row = 0; row < cloud.rows; ++row) {
        const auto* points = cloud.ptr<cv::Vec3f>(row);
        auto* present = mask.ptr<uchar>(row);
        for (int column = 0; column < cloud.cols; ++column) {
            const cv::Vec3f& p = points[column];
            present[column] = p[0] != 0.0F || p[1] != 0.0F || p[2] != 0.0F ? 255 : 0;
        }
    }
    return mask;
}

bool isInterior(const cv::Point& pixel, const cv::Mat& image) {
    return pixel.x > 0 && pixel.y > 0 && pixel.x < image.cols - 1 && pixel.y < image.rows - 1;
}

/// Marks the interior seeds in the region and returns the pixels next to them that the flood starts from.
std::vector<cv::Point> plantSeeds(const cv::Mat& seeds, const cv::Mat& oriented, cv::Mat& region) {
    std::vector<cv::Point> frontier;
    for (int row = 1; row < seeds.rows - 1; ++row) {
        for (int column = 1; column < seeds.cols - 1; ++column) {
            const cv::Point pixel(column, row);
            if (seeds.at<uchar>(pixel) == 0) {
                continue;
            }
            region.at<uchar>(pixel) = 255;
            for (const cv::Point& step : kNeighbours) {
                const cv::Point next = pixel + step;
                if (seeds.at<uchar>(next) == 0 && oriented.at<uchar>(next) != 0) {
                    frontier.push_back(next);
                }
            }
        }
    }
    return frontier;
}

/// Floods the region from the frontier. Which pixels end up in it does not depend on the order of the visits: each is
/// reached from some frontier or flooded pixel, or from none.
void flood(std::vector<cv::Point> frontier, const cv::Mat& oriented, cv::Mat& region) {
    while (!frontier.empty()) {
        const cv::Point pixel = frontier.back();
        frontier.pop_back();
        if (!isInterior(pixel, region)) {
            continue;
        }
        for (const cv::Point& step : kNeighbours) {
            const cv::Point next = pixel + step;
            if (region.at<uchar>(next) == 0 && oriented.at<uchar>(next) != 0) {
                region.at<uchar>(next) = 255;
                frontier.push_back(next);
            }
        }
    }
}

}  // namespace

int growPlaneRegion(const cv::Mat& fullCloud, const cv::Mat& normalMap, const cv::Vec3f& normal, cv::Mat& seedCloud) {
    const cv::Mat oriented = orientationMask(normalMap, normal);
    const cv::Mat seeds = presentMask(seedCloud);
    cv::Mat region = cv::Mat::zeros(seeds.size(), CV_8UC1);
    flood(plantSeeds(seeds, oriented, region), oriented, region);

    cv::Mat grown = cv::Mat::zeros(fullCloud.size(), CV_32FC3);
    fullCloud.copyTo(grown, region);
    seedCloud = grown;
    return 0;
}

}  // namespace quorvel::internal
