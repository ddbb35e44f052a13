// SPDX-License-Identifier: Apache-2.0
#include "kit/account/plane.h"

#include <algorithm>
#include <cmath>

namespace quorvel::kit {

double tiltDegrees(const Plane& plane) {
    const double cosine = static_cast<double>(plane.normal[2]) / cv::norm(plane.normal);
    return std::acos(std::clamp(cosine, -1.0, 1.0)) * 180.0 / CV_PI;
}

}  // namespace quorvel::kit
