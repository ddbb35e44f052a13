// SPDX-License-Identifier: Apache-2.0
#include "measure/surface_filter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "calib/plane_model.h"
#include "measure/points.h"

namespace quorvel::internal {

namespace {

constexpr auto kSteepCosine = static_cast<double>(0.8F);
constexpr int kLeastNeighbours = 4;
constexpr float kOutlierDeviations = 4.5F;
/// Below this mean height (mm) the outlier test is off: the sensor's noise is of the object's own size there.
constexpr float kLowObjectHeight = 10.0F;

const std::array<cv::Point, 8> kNeighbours{cv::Point(-1, -1), cv::Point(0, -1), cv::Point(1, -1), cv::Point(-1, 0),
                                           cv::Point(1, 0),   cv::Point(-1, 1), cv::Point(0, 1),  cv::Point(1, 1)};

/// What the first pass leaves for the second.
struct AcceptedPoints {
    cv::Mat cloud;
    std::vector<float> heights;  ///< of the accepted points, in scan order, mm
    float meanHeight = 0.0F;     ///< of all interior points, accepted or not, mm
};

cv::Vec3f normalized(const cv::Vec3f& normal) {
    const double x = normal[0];
    const double y = normal[1];
    const double z = normal[2];
    const double length = std::sqrt(x * x + y * y + z * z);
    return {static_cast<float>(x / length), static_cast<float>(y / length), static_cast<float>(z / length)};
}

/// Whether the point lies below its neighbour, in a direction within about 37 degrees of the normal.
bool isSteep(const cv::Vec3f& point, const cv::Vec3f& neighbour, const cv::Vec3f& normal) {
    const double dx = static_cast<double>(point[0]) - neighbour[0];
    const double dy = static_cast<double>(point[1]) - neighbour[1];
    const double dz = static_cast<double>(point[2]) - neighbour[2];
    const double length = std::sqrt(dx * dx + dy * dy + dz * dz);
    return dx / length * normal[0] + dy / length * normal[1] + dz / length * normal[2] > kSteepCosine;
}

/// Whether all eight neighbours are present and none of them makes the point steep.
bool isSurfacePoint(const cv::Mat& cloud, const cv::Point& pixel, const cv::Vec3f& normal) {
    const auto& point = cloud.at<cv::Vec3f>(pixel);
    return std::all_of(kNeighbours.begin(), kNeighbours.end(), [&](const cv::Point& step) {
        const auto& neighbour = cloud.at<cv::Vec3f>(pixel + step);
        return isPresent(neighbour) && !isSteep(point, neighbour, normal);
    });
}

AcceptedPoints acceptSurfacePoints(const cv::Mat& cloud, const cv::Vec3f& normal, float offset) {
    AcceptedPoints accepted;
    accepted.cloud = cv::Mat::zeros(cloud.size(), CV_32FC3);
    float heightSum = 0.0F;
    int count = 0;
    for (int row = 1; row < cloud.rows - 1; ++row) {
        const auto* points = cloud.ptr<cv::Vec3f>(row);
        auto* kept = accepted.cloud.ptr<cv::Vec3f>(row);
        for (int column = 1; column < cloud.cols - 1; ++column) {
            if (!isPresent(points[column])) {
                continue;
            }
            const float height = std::fabs(signedDistance(points[column], normal, offset));
            heightSum += height;
            ++count;
            if (isSurfacePoint(cloud, {column, row}, normal)) {
                kept[column] = points[column];
                accepted.heights.push_back(height);
            }
        }
    }
    accepted.meanHeight = heightSum / static_cast<float>(count);
    return accepted;
}

/// Largest distance from the mean height that an accepted point may have, mm; infinite for low objects.
float heightTolerance(const AcceptedPoints& accepted) {
    if (accepted.meanHeight < kLowObjectHeight) {
        return std::numeric_limits<float>::infinity();
    }
    float sum = 0.0F;
    for (const float height : accepted.heights) {
        sum += std::fabs(height - accepted.meanHeight);
    }
    return kOutlierDeviations * (sum / static_cast<float>(accepted.heights.size()));
}

int presentNeighbours(const cv::Mat& cloud, const cv::Point& pixel) {
    const cv::Rect image(0, 0, cloud.cols, cloud.rows);
    return static_cast<int>(std::count_if(kNeighbours.begin(), kNeighbours.end(), [&](const cv::Point& step) {
        const cv::Point next = pixel + step;
        return image.contains(next) && isPresent(cloud.at<cv::Vec3f>(next));
    }));
}

/// Clears outliers and lonely points in place, in scan order, and returns the mask of the points kept.
cv::Mat clearOutliers(AcceptedPoints& accepted, const cv::Size& maskSize) {
    const float tolerance = heightTolerance(accepted);
    cv::Mat mask = cv::Mat::zeros(maskSize, CV_8UC1);
    std::size_t index = 0;
    for (int row = 0; row < accepted.cloud.rows; ++row) {
        auto* points = accepted.cloud.ptr<cv::Vec3f>(row);
        for (int column = 0; column < accepted.cloud.cols; ++column) {
            if (!isPresent(points[column])) {
                continue;
            }
            const float height = accepted.heights[index++];
            if (std::fabs(height - accepted.meanHeight) <= tolerance &&
                presentNeighbours(accepted.cloud, {column, row}) >= kLeastNeighbours) {
                mask.at<uchar>(row, column) = 255;
            } else {
                points[column] = cv::Vec3f(0.0F, 0.0F, 0.0F);
            }
        }
    }
    return mask;
}

}  // namespace

void filterSurfacePoints(cv::Mat& cloud, const cv::Vec3f& normal, float offset, cv::Mat& mask) {
    AcceptedPoints accepted = acceptSurfacePoints(cloud, normalized(normal), offset);
    mask = clearOutliers(accepted, mask.size());
    cloud = accepted.cloud;
}

}  // namespace quorvel::internal
