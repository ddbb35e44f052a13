// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kit/measure/measurement.h"

namespace quorvel::kit {

/// Frames of one object in quick succession.
struct Batch {
    std::vector<FramePair> frames;
    /// What the frames are called in messages; one each.
    std::vector<std::string> names;
    /// Largest difference between any two frames that still counts as agreement.
    Sizes tolerance;
};

/// What became of a batch.
struct BatchMeasurement {
    /// The batch as a whole: mean sizes, with corners and flags of the last frame; the verdict as the diagnosis, and
    /// what was measured with.
    Measurement combined;
    /// Each frame as it was measured within the batch. Empty when there was no plane.
    std::vector<Measurement> frames;
    /// Largest difference between any two frames; only when every frame was measured.
    std::optional<Sizes> spread;
    /// What disagreed: "height", "width" or "length"; empty otherwise.
    std::string dimension;
};

/// Measures a batch with the library and finds out why it was refused, if so.
/// \param ruler in its mode and, but for GROUND_TRACKING, with a usable plane
/// \param batch at least one frame, all of the ruler's size
BatchMeasurement measureBatch(Ruler& ruler, const Batch& batch, const MeasurementSettings& settings);

/// The outcome when there is no plane to measure with.
/// \param message says why and what to do
BatchMeasurement batchWithoutPlane(const Ruler& ruler, const std::string& message);

}  // namespace quorvel::kit
