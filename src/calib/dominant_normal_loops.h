// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "common/loop_variant.h"

namespace quorvel::internal {

/// Orientation bins: four a channel.
constexpr int kNormalBins = 64;
/// Counts of one bin, which neighbouring pixels take in turn: mostly they fall in the same bin, and a count that the
/// pixel before has just written is slow to read.
constexpr int kCountsPerBin = 4;

/// The loops of dominantNormalBin.
struct DominantNormalLoops {
    /// Adds one row of normal colours to the counts.
    /// \param colours `count` normal colours
    /// \param[in,out] counts kCountsPerBin times kNormalBins counts; those of bin b are b, kNormalBins + b, ...
    void (*countRow)(const float* colours, int count, std::int32_t* counts);
};

QUORVEL_DECLARE_LOOPS(DominantNormalLoops, dominantNormalLoops)

}  // namespace quorvel::internal
