// SPDX-License-Identifier: Apache-2.0
#include "kit/draw/label_placement.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace quorvel::kit {

namespace {

/// Unit vector across the edge that points away from the box's middle; along the way out when the edge is a point.
cv::Point2d outward(const std::pair<cv::Point2d, cv::Point2d>& edge, cv::Point2d center) {
    const cv::Point2d middle = (edge.first + edge.second) / 2.0;
    const cv::Point2d away = middle - center;
    const cv::Point2d along = edge.second - edge.first;
    cv::Point2d across(-along.y, along.x);
    if (across.dot(away) < 0.0) {
        across = -across;
    }
    // An edge that points at the middle has no outer side. An upright seen from above is such an edge.
    const double sideways = across.dot(away);
    const double length = cv::norm(across) * cv::norm(away);
    const cv::Point2d direction = length > 0.0 && sideways > 0.3 * length ? across : away;
    const double norm = cv::norm(direction);
    return norm > 0.0 ? direction / norm : cv::Point2d(0.0, -1.0);
}

cv::Rect plateBeside(cv::Point2d anchor, cv::Point2d direction, cv::Size size, double gap) {
    const double reach = gap + std::abs(direction.x) * size.width / 2.0 + std::abs(direction.y) * size.height / 2.0;
    const cv::Point2d middle = anchor + direction * reach;
    return {cvRound(middle.x - size.width / 2.0), cvRound(middle.y - size.height / 2.0), size.width, size.height};
}

cv::Rect movedInside(cv::Rect plate, cv::Size picture) {
    plate.x = std::max(0, std::min(plate.x, picture.width - plate.width));
    plate.y = std::max(0, std::min(plate.y, picture.height - plate.height));
    return plate;
}

/// Lower is better: overlap with other labels counts most, then the distance from the wished place.
double badness(const cv::Rect& plate, const cv::Rect& wished, const std::vector<LabelPlace>& placed) {
    constexpr double kOverlapWeight = 100.0;
    double overlap = 0.0;
    for (const LabelPlace& other : placed) {
        overlap += (plate & other.plate).area();
    }
    return kOverlapWeight * overlap + cv::norm(plate.tl() - wished.tl());
}

}  // namespace

std::vector<LabelPlace> placeLabels(const std::vector<LabelRequest>& requests, cv::Point2d center, cv::Size picture,
                                    double gap) {
    constexpr int kSteps = 8;          // ever farther out, half a label's height a step
    constexpr double kNextEdge = 4.0;  // pixels of distance that are accepted for an earlier edge
    std::vector<LabelPlace> placed;
    for (const LabelRequest& request : requests) {
        LabelPlace best;
        double least = std::numeric_limits<double>::infinity();
        double preference = 0.0;
        for (const auto& edge : request.edges) {
            const cv::Point2d anchor = (edge.first + edge.second) / 2.0;
            const cv::Point2d direction = outward(edge, center);
            const cv::Rect wished = plateBeside(anchor, direction, request.size, gap);
            for (int step = 0; step < kSteps; ++step) {
                const double farther = gap + step * request.size.height / 2.0;
                const cv::Rect plate = movedInside(plateBeside(anchor, direction, request.size, farther), picture);
                const double score = badness(plate, wished, placed) + preference;
                if (score < least) {
                    least = score;
                    best = {plate, anchor};
                }
            }
            preference += kNextEdge;
        }
        placed.push_back(best);
    }
    return placed;
}

}  // namespace quorvel::kit
