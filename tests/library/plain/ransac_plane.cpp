// SPDX-License-Identifier: Apache-2.0
#include "library/plain/ransac_plane.h"

#include <cmath>
#include <cstdlib>
#include <vector>

#include "library/plain/least_squares.h"
#include "library/plain/select_kth.h"

namespace quorvel::test::plain {

namespace {

bool inOpenBand(const cv::Vec3f& colour, const float center[3]) {
    for (int k = 0; k < 3; ++k) {
        if (!(colour[k] > center[k] - 64.0F && colour[k] < center[k] + 64.0F)) {
            return false;
        }
    }
    return true;
}

struct Fit {
    cv::Mat cloud;
    cv::Mat map;
    float center[3];
    std::vector<cv::Point> list;
    float threshold = 0.0F;
    float previousError = 0.0F;
    float normal[3] = {0.0F, 0.0F, 0.0F};
    float t = 0.0F;
};

/// Candidates of the orientation and the unit vector of their mean colour.
std::vector<cv::Point> gate(const Fit& fit, float direction[3]) {
    std::vector<cv::Point> candidates;
    float sums[3] = {0.0F, 0.0F, 0.0F};
    for (int r = 0; r < fit.cloud.rows; ++r) {
        for (int c = 0; c < fit.cloud.cols; ++c) {
            const auto colour = fit.map.at<cv::Vec3f>(r, c);
            if (fit.cloud.at<cv::Vec3f>(r, c)[2] != 0.0F && inOpenBand(colour, fit.center)) {
                for (int k = 0; k < 3; ++k) {
                    sums[k] += colour[k] - 127.5F;
                }
                candidates.emplace_back(c, r);
            }
        }
    }
    double squared = 0.0;
    float mean[3];
    for (int k = 0; k < 3; ++k) {
        mean[k] = sums[k] / static_cast<float>(candidates.size());
        squared += static_cast<double>(mean[k]) * static_cast<double>(mean[k]);
    }
    for (int k = 0; k < 3; ++k) {
        direction[k] = static_cast<float>(static_cast<double>(mean[k]) / std::sqrt(squared));
    }
    return candidates;
}

/// Keeps the candidates near the far end of the distances along the mean direction.
void keepFarEnd(Fit& fit, const std::vector<cv::Point>& candidates, const float direction[3]) {
    std::vector<float> distances;
    for (const auto& pixel : candidates) {
        const auto p = fit.cloud.at<cv::Vec3f>(pixel);
        distances.push_back(p[0] * direction[0] + p[1] * direction[1] + p[2] * direction[2]);
    }
    const int count = static_cast<int>(candidates.size());
    const float reference = selectKth(distances, count, count - 2000);
    fit.threshold = reference / 10.0F;
    float sum = 0.0F;
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        const float residual = std::fabs(distances[i] - reference);
        if (residual < fit.threshold) {
            sum += residual;
            fit.list.push_back(candidates[i]);
        }
    }
    fit.previousError = sum / static_cast<float>(count);
}

/// Draws until 1000 points are accepted and fits them. False when the list runs dry.
bool sample(Fit& fit, RansacTrace& trace) {
    std::vector<cv::Vec3f> accepted;
    while (accepted.size() < 1000) {
        if (fit.list.empty()) {
            return false;
        }
        const auto number = static_cast<std::size_t>(std::rand() & 0x7fff);
        ++trace.draws;
        const std::size_t index = number % fit.list.size();
        const cv::Point pixel = fit.list[index];
        fit.list.erase(fit.list.begin() + static_cast<std::ptrdiff_t>(index));
        if (inOpenBand(fit.map.at<cv::Vec3f>(pixel), fit.center)) {
            accepted.push_back(fit.cloud.at<cv::Vec3f>(pixel));
        }
    }
    planeThroughPoints(accepted, fit.normal, fit.t);
    return true;
}

/// Selects the inliers of the fitted plane anew. True when the mean residual improved.
bool reselect(Fit& fit) {
    float newCenter[3];
    for (int k = 0; k < 3; ++k) {
        newCenter[k] = static_cast<float>(static_cast<double>(fit.normal[k]) * 127.5) + 127.5F;
    }
    fit.list.clear();
    float sumError = 0.0F;
    float sumZ = 0.0F;
    for (int r = 0; r < fit.cloud.rows; ++r) {
        for (int c = 0; c < fit.cloud.cols; ++c) {
            const auto p = fit.cloud.at<cv::Vec3f>(r, c);
            if (p[2] == 0.0F) {
                continue;
            }
            const float error = std::fabs(fit.normal[0] * p[0] + fit.normal[1] * p[1] + fit.normal[2] * p[2] - fit.t);
            if (error < fit.threshold && inOpenBand(fit.map.at<cv::Vec3f>(r, c), newCenter)) {
                sumError += error;
                sumZ += p[2];
                fit.list.emplace_back(c, r);
            }
        }
    }
    const auto n = static_cast<float>(fit.list.size());
    const float error = sumError / n;
    const float delta = fit.previousError - error;
    fit.previousError = error;
    fit.threshold = sumZ / n / 100.0F;
    if (!(static_cast<double>(delta) > 1e-6)) {
        return false;
    }
    for (int k = 0; k < 3; ++k) {
        fit.center[k] = newCenter[k];
    }
    return true;
}

}  // namespace

int ransacFitPlane(const cv::Mat& cloud, const cv::Mat& normalMap, const cv::Vec3f& bin, cv::Vec3f& normal, float& t,
                   RansacTrace* trace) {
    RansacTrace unused;
    RansacTrace& record = trace != nullptr ? *trace : unused;
    record = RansacTrace();
    Fit fit;
    fit.cloud = cloud;
    fit.map = normalMap;
    for (int k = 0; k < 3; ++k) {
        fit.center[k] = 64.0F * bin[k];
    }
    float direction[3];
    const std::vector<cv::Point> candidates = gate(fit, direction);
    record.candidates = static_cast<int>(candidates.size());
    if (candidates.size() <= 4000) {
        return 1;
    }
    keepFarEnd(fit, candidates, direction);
    record.firstList = static_cast<int>(fit.list.size());
    bool improved = true;
    while (improved && record.iterations < 100) {
        if (!sample(fit, record)) {
            return 1;
        }
        ++record.iterations;
        improved = reselect(fit);
    }
    normal = cv::Vec3f(fit.normal[0], fit.normal[1], fit.normal[2]);
    t = fit.t;
    return 0;
}

}  // namespace quorvel::test::plain
