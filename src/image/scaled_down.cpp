// SPDX-License-Identifier: Apache-2.0
#include "image/scaled_down.h"

#include <opencv2/imgproc.hpp>

#include "image/image_form.h"

namespace quorvel::internal {

void scaleDown(const cv::Mat& image, const cv::Size& size, cv::Mat& small) {
    createExclusive(small, size, image.type());
    cv::resize(image, small, size, 0.0, 0.0, cv::INTER_NEAREST);
}

}  // namespace quorvel::internal
