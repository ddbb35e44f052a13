// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "sim/render.h"

namespace quorvel::test {

/// What one camera shows: the empty surface, then an object. Every station has another distance and another object.
struct Station {
    std::size_t number = 0;
    sim::Camera camera;
    sim::Frame empty;
    std::vector<sim::Frame> occupied;

    /// \return a ruler for this camera with areas of its own, which keeps its plane in `./param<number>`
    Quorvel ruler() const;
    std::vector<cv::Mat> colors() const;
    std::vector<cv::Mat> depths() const;
};

constexpr std::size_t kStations = 4;

/// The stations, rendered at the first call; to be called before threads are started.
const std::vector<Station>& stations();

/// All that a ruler has to tell after a piece of work.
struct Outcome {
    Quorvel ruler{0, 0, 0, 0, 0, 0, false, ""};
    std::vector<MeasureResult> readings;
    std::vector<int> returned;
};

/// A host's day in one mode: start, calibration, measurements, a batch, settings saved and loaded again. Random numbers
/// are those of the station, so that the same day gives the same outcome.
Outcome dayOfWork(const Station& station, ProductType mode);

/// Compares all members, readings and returned values bit for bit.
::testing::AssertionResult sameOutcome(const Outcome& a, const Outcome& b);

}  // namespace quorvel::test
