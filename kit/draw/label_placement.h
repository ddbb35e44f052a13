// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>
#include <vector>

#include <opencv2/core.hpp>

namespace quorvel::kit {

/// A label that may stand at one of several edges in the picture; the edge with the best place is taken.
struct LabelRequest {
    /// Ends of the edges, pixels, the preferred edge first; at least one edge with finite ends.
    std::vector<std::pair<cv::Point2d, cv::Point2d>> edges;
    /// Size of the label's plate, pixels.
    cv::Size size;
};

/// Where a label goes.
struct LabelPlace {
    /// The plate, inside the picture when the picture is large enough.
    cv::Rect plate;
    /// Middle of the chosen edge.
    cv::Point2d anchor;
};

/// Places labels beside their edges, outside the box, inside the picture and clear of one another, one after the
/// other in the order given.
/// \param center middle of the box in the picture, pixels; labels go to the other side of their edge
/// \param gap room between edge and plate, pixels
std::vector<LabelPlace> placeLabels(const std::vector<LabelRequest>& requests, cv::Point2d center, cv::Size picture,
                                    double gap);

}  // namespace quorvel::kit
