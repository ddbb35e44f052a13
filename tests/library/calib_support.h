// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cmath>
#include <limits>

#include <opencv2/core.hpp>

#include "support/random.h"

namespace quorvel::test::calib {

/// How the values of a random cloud are drawn.
enum class CloudKind { kFloats, kSmallIntegers, kWithNonFinite };

/// \return one coordinate: a float within +-1000 mm, a whole number within +-3 (ties, zero cross products), or a
///         float that is infinite or NaN in one case of ten
inline float randomCoordinate(Draws& random, CloudKind kind) {
    switch (kind) {
        case CloudKind::kSmallIntegers:
            return static_cast<float>(random.between(-3, 3));
        case CloudKind::kWithNonFinite:
            if (random.chance(10)) {
                const float infinity = std::numeric_limits<float>::infinity();
                const int choice = random.below(3);
                return choice == 0 ? std::numeric_limits<float>::quiet_NaN() : (choice == 1 ? infinity : -infinity);
            }
            [[fallthrough]];
        default:
            return random.real(-1000.0F, 1000.0F);
    }
}

/// \param absent share of points that are (0, 0, 0), percent
/// \return CV_32FC3 of random points
inline cv::Mat randomCloud(Draws& random, int rows, int columns, CloudKind kind, int absent) {
    cv::Mat cloud(rows, columns, CV_32FC3, cv::Scalar::all(0.0));
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            if (random.chance(absent)) {
                continue;
            }
            auto& point = cloud.at<cv::Vec3f>(row, column);
            for (int k = 0; k < 3; ++k) {
                point[k] = randomCoordinate(random, kind);
            }
        }
    }
    return cloud;
}

/// \return the same values as `image` inside a wider matrix, so that the rows do not follow one another in memory
inline cv::Mat asSubMatrix(const cv::Mat& image) {
    cv::Mat frame(image.rows + 4, image.cols + 5, image.type(), cv::Scalar::all(77.0));
    cv::Mat inner = frame(cv::Rect(3, 2, image.cols, image.rows));
    image.copyTo(inner);
    return inner;
}

/// A camera that looks at a tilted floor: z = slopeX * x + slopeY * y + distance.
struct FloorView {
    int width = 72;
    int height = 72;
    float focal = 60.0F;
    float slopeX = 0.0F;
    float slopeY = 0.0F;
    float distance = 1000.0F;
    float noise = 0.0F;    ///< half width of the uniform depth noise, mm
    int absent = 0;        ///< pixels without depth, percent
    bool wholeMm = false;  ///< depths rounded to whole mm, as a depth image has them
};

/// \return depth in mm that a pixel of the floor has, before noise
inline float floorDepth(const FloorView& view, int column, int row) {
    const float rayX = (static_cast<float>(column) - static_cast<float>(view.width) * 0.5F) / view.focal;
    const float rayY = (static_cast<float>(row) - static_cast<float>(view.height) * 0.5F) / view.focal;
    return view.distance / (1.0F - view.slopeX * rayX - view.slopeY * rayY);
}

/// \return CV_32FC3 cloud of the floor, absent pixels (0, 0, 0)
inline cv::Mat floorCloud(const FloorView& view, Draws& random) {
    cv::Mat cloud(view.height, view.width, CV_32FC3, cv::Scalar::all(0.0));
    for (int row = 0; row < view.height; ++row) {
        for (int column = 0; column < view.width; ++column) {
            float z = floorDepth(view, column, row) + random.real(-view.noise, view.noise);
            if (random.chance(view.absent)) {
                continue;
            }
            z = view.wholeMm ? std::nearbyint(z) : z;
            const float x = (static_cast<float>(column) - static_cast<float>(view.width) * 0.5F) / view.focal * z;
            const float y = (static_cast<float>(row) - static_cast<float>(view.height) * 0.5F) / view.focal * z;
            cloud.at<cv::Vec3f>(row, column) = cv::Vec3f(x, y, z);
        }
    }
    return cloud;
}

/// \return CV_16UC1 depth image of the floor, mm, absent pixels 0
inline cv::Mat floorDepthImage(const FloorView& view, Draws& random) {
    cv::Mat depth;
    cv::extractChannel(floorCloud(view, random), depth, 2);
    depth.convertTo(depth, CV_16U);
    return depth;
}

}  // namespace quorvel::test::calib
