// SPDX-License-Identifier: Apache-2.0
#include "kit/draw/color_scale.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <opencv2/imgproc.hpp>

namespace quorvel::kit {

ColorScale::ColorScale(double low, double high) : low_(low), high_(high > low ? high : low + 1.0) {
    cv::Mat grey(1, 256, CV_8UC1);
    for (int i = 0; i < grey.cols; ++i) {
        grey.at<uchar>(0, i) = static_cast<uchar>(i);
    }
    cv::applyColorMap(grey, table_, cv::COLORMAP_TURBO);
}

cv::Vec3b ColorScale::colorAt(double share) const {
    // The very ends of the colour map are nearly black, as missing values are; they are left out.
    constexpr double kFirst = 18.0;
    constexpr double kLast = 243.0;
    const double index = kFirst + (kLast - kFirst) * std::clamp(share, 0.0, 1.0);
    return table_.at<cv::Vec3b>(0, cvRound(index));
}

std::vector<double> ColorScale::ticks() const {
    constexpr int kParts = 5;
    const double step = roundStep(high_ - low_, kParts);
    std::vector<double> values;
    for (auto k = static_cast<std::int64_t>(std::ceil(low_ / step)); static_cast<double>(k) * step <= high_; ++k) {
        values.push_back(static_cast<double>(k) * step);
    }
    return values;
}

double roundStep(double span, int parts) {
    const double widest = span / parts;
    const double power = std::pow(10.0, std::floor(std::log10(widest)));
    for (const double factor : {5.0, 2.0}) {
        if (factor * power <= widest) {
            return factor * power;
        }
    }
    return power;
}

double quantile(std::vector<float> values, double share) {
    const auto index = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + index, values.end());
    return static_cast<double>(values[static_cast<std::size_t>(index)]);
}

}  // namespace quorvel::kit
