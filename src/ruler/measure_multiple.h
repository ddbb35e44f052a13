// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>

#include <quorvel/quorvel.h>

#include "measure/batch_account.h"

namespace quorvel::internal {

/// What a batch account holds besides what the ruler needs.
struct BatchDetail {
    AccountDetail frame;      ///< of every frame
    bool everyFrame = false;  ///< measure the frames behind one without an object too; the verdict stays the same
};

/// Measures the batch that a ruler holds, keeps the mean in `result` and drops the batch: Quorvel::measureMultiple with
/// an account in place of a status.
/// \param tolerances largest differences allowed between any two frames, mm
/// \param lines where the lines of the measurement go; nothing is printed when it is null
BatchAccount measureBatch(Quorvel& ruler, const Sizes& tolerances, const BatchDetail& detail, std::ostream* lines);

}  // namespace quorvel::internal
