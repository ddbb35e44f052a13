// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include <opencv2/core.hpp>

namespace quorvel::kit {

/// Colours for a range of values, and the round values to name beside them.
class ColorScale {
public:
    /// \param low,high ends of the range; equal ends are moved apart by 1
    ColorScale(double low, double high);

    /// \return the value's colour; values outside the range have the colour of its nearer end
    cv::Vec3b color(double value) const { return colorAt(position(value)); }

    /// \param share position in the range, 0 at the low end, 1 at the high end
    cv::Vec3b colorAt(double share) const;

    /// \return round values inside the range, ascending, at steps of 1, 2 or 5 times a power of ten
    std::vector<double> ticks() const;

    /// \return 0 at the low end, 1 at the high end
    double position(double value) const { return (value - low_) / (high_ - low_); }

private:
    double low_;
    double high_;
    cv::Mat table_;
};

/// \return the largest of 1, 2, 5, 10, 20, 50, ... (and their tenths) that divides `span` into at least `parts` steps
double roundStep(double span, int parts);

/// The value below which the given share of the values lies.
/// \param values may be in any order, at least one
/// \param share 0 to 1
double quantile(std::vector<float> values, double share);

}  // namespace quorvel::kit
