// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "measure/account.h"
#include "measure/batch_agreement.h"

namespace quorvel::internal {

/// How the measurement of a batch ended.
enum class BatchOutcome {
    Agreed,             ///< every frame has sizes, and no two differ by more than the tolerances
    NoPlane,            ///< no calibration was loaded or made
    NoFrames,           ///< the batch is empty, or its mode measures no batches
    FrameNotMeasured,   ///< a frame ended before its box: see MeasureAccount::outcome of `spoiler`
    FrameWithoutSizes,  ///< the box of a frame misses the area, is out of view, or could not be made
    FramesDisagree      ///< two frames differ by more than a tolerance
};

/// What a batch found, frame by frame, and why it ended as it did.
struct BatchAccount {
    BatchOutcome outcome = BatchOutcome::NoFrames;
    Sizes tolerances;                    ///< largest differences allowed, mm
    std::vector<MeasureAccount> frames;  ///< those that were measured, in order
    std::size_t spoiler = 0;             ///< the frame that refused the batch: FrameNotMeasured, FrameWithoutSizes
    std::optional<Disagreement> disagreement;  ///< only with FramesDisagree
    std::optional<Sizes> spread;               ///< largest differences between any two frames; when all have sizes
    Sizes mean;                                ///< mean of all frames; only with Agreed
};

/// Judges a batch whose frames were measured one after the other, up to the first that ended before its box at least.
/// A frame that ended before its box comes before one without sizes, and that before a disagreement.
/// \param frames accounts in the order of the frames
BatchAccount judgeBatch(std::vector<MeasureAccount> frames, const Sizes& tolerances);

}  // namespace quorvel::internal
