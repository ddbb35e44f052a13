// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "measure/box_geometry.h"

namespace quorvel::internal {

/// One of the three sizes.
enum class Dimension { Height, Width, Length };

/// Two frames of a batch whose sizes differ by more than the tolerance.
struct Disagreement {
    std::size_t first = 0;
    std::size_t second = 0;
    Dimension dimension = Dimension::Height;
    float difference = 0.0F;  ///< mm
    float tolerance = 0.0F;   ///< mm
};

/// Compares every frame with those behind it, height before width before length. A difference equal to its tolerance
/// passes, and so does one that is NaN.
/// \param frames sizes of every frame, mm
/// \param tolerances largest difference between any two frames that still counts as agreement, mm
/// \return the first two frames that differ too much; nothing when all agree
std::optional<Disagreement> firstDisagreement(const std::vector<Sizes>& frames, const Sizes& tolerances);

/// \param frames at least one
/// \return the mean sizes, summed in float and in the order of the frames, mm
Sizes meanSizes(const std::vector<Sizes>& frames);

/// \param frames at least one
/// \return the largest difference between any two frames, for each size, mm
Sizes spreadOf(const std::vector<Sizes>& frames);

}  // namespace quorvel::internal
