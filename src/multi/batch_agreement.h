// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vector>

#include <quorvel/quorvel.h>

namespace quorvel::internal {

/// Largest difference between any two frames of a batch that still counts as agreement, mm.
struct BatchTolerances {
    float length = 0.0F;
    float width = 0.0F;
    float height = 0.0F;
};

/// \param records one a frame
/// \return whether every record is in view and has corners, and no two of them differ in a size by more than its
///         tolerance
bool recordsAgree(const std::vector<MeasureResult>& records, const BatchTolerances& tolerances);

/// \param records one a frame, at least one
/// \return the last record with the mean length, width and height of all, summed in float and in their order
MeasureResult meanRecord(const std::vector<MeasureResult>& records);

}  // namespace quorvel::internal
