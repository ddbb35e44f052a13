// SPDX-License-Identifier: Apache-2.0
#include "ruler/scaled_down.h"

#include <opencv2/imgproc.hpp>

namespace quorvel::internal {

cv::Mat scaledDown(const cv::Mat& image, const cv::Size& size) {
    cv::Mat small;
    cv::resize(image, small, size, 0.0, 0.0, cv::INTER_NEAREST);
    return small;
}

}  // namespace quorvel::internal
