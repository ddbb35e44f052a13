// SPDX-License-Identifier: Apache-2.0
#include "library/plain/surface_filter.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace quorvel::test::plain {

namespace {

bool isPoint(const cv::Vec3f& p) {
    const bool zero = p[0] == 0.0F && p[1] == 0.0F && p[2] == 0.0F;
    return !zero;
}

cv::Vec3f normalised(const cv::Vec3f& n) {
    const double x = n[0];
    const double y = n[1];
    const double z = n[2];
    const double length = std::sqrt(x * x + y * y + z * z);
    return {static_cast<float>(x / length), static_cast<float>(y / length), static_cast<float>(z / length)};
}

bool isSteep(const cv::Vec3f& p, const cv::Vec3f& q, const cv::Vec3f& normal) {
    const double x = static_cast<double>(p[0]) - static_cast<double>(q[0]);
    const double y = static_cast<double>(p[1]) - static_cast<double>(q[1]);
    const double z = static_cast<double>(p[2]) - static_cast<double>(q[2]);
    const double length = std::sqrt(x * x + y * y + z * z);
    const double dot = x / length * static_cast<double>(normal[0]) + y / length * static_cast<double>(normal[1]) +
                       z / length * static_cast<double>(normal[2]);
    return dot > 0.800000011920929;
}

struct FirstPass {
    cv::Mat kept;
    std::vector<float> heights;
    float sum = 0.0F;
    int count = 0;
};

FirstPass dropFlanksAndEdges(const cv::Mat& cloud, const cv::Vec3f& normal, float offset) {
    FirstPass pass;
    pass.kept = cv::Mat(cloud.rows, cloud.cols, CV_32FC3, cv::Scalar::all(0));
    for (int row = 1; row <= cloud.rows - 2; ++row) {
        for (int column = 1; column <= cloud.cols - 2; ++column) {
            const auto& p = cloud.at<cv::Vec3f>(row, column);
            if (!isPoint(p)) {
                continue;
            }
            const float h = std::abs(normal[0] * p[0] + normal[1] * p[1] + normal[2] * p[2] - offset);
            pass.sum += h;
            ++pass.count;
            int neighbours = 0;
            int steep = 0;
            for (int dy = -1; dy <= 1; ++dy) {
                for (int dx = -1; dx <= 1; ++dx) {
                    const auto& q = cloud.at<cv::Vec3f>(row + dy, column + dx);
                    if ((dx == 0 && dy == 0) || !isPoint(q)) {
                        continue;
                    }
                    ++neighbours;
                    steep += isSteep(p, q, normal) ? 1 : 0;
                }
            }
            if (steep == 0 && neighbours >= 8) {
                pass.kept.at<cv::Vec3f>(row, column) = p;
                pass.heights.push_back(h);
            }
        }
    }
    return pass;
}

int pointsAround(const cv::Mat& cloud, int row, int column) {
    int count = 0;
    for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx) {
            const int r = row + dy;
            const int c = column + dx;
            const bool inside = r >= 0 && c >= 0 && r < cloud.rows && c < cloud.cols;
            if (inside && (dx != 0 || dy != 0) && isPoint(cloud.at<cv::Vec3f>(r, c))) {
                ++count;
            }
        }
    }
    return count;
}

}  // namespace

void filterSurfacePoints(cv::Mat& cloud, const cv::Vec3f& normal, float offset, cv::Mat& mask) {
    FirstPass pass = dropFlanksAndEdges(cloud, normalised(normal), offset);
    const float mean = pass.sum / static_cast<float>(pass.count);
    float deviation = 0.0F;
    for (const float height : pass.heights) {
        deviation += std::abs(height - mean);
    }
    deviation /= static_cast<float>(pass.heights.size());
    if (mean < 10.0F) {
        deviation = std::numeric_limits<float>::max();
    }
    cv::Mat marked(mask.rows, mask.cols, CV_8U, cv::Scalar(0));
    std::size_t index = 0;
    for (int row = 0; row < cloud.rows; ++row) {
        for (int column = 0; column < cloud.cols; ++column) {
            auto& point = pass.kept.at<cv::Vec3f>(row, column);
            if (!isPoint(point)) {
                continue;
            }
            const float stray = std::abs(pass.heights[index] - mean);
            ++index;
            if (stray <= 4.5F * deviation && pointsAround(pass.kept, row, column) >= 4) {
                marked.at<uchar>(row, column) = 255;
            } else {
                point = cv::Vec3f(0.0F, 0.0F, 0.0F);
            }
        }
    }
    cloud = pass.kept.clone();
    mask = marked.clone();
}

}  // namespace quorvel::test::plain
