// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

#include <quorvel/quorvel.h>

#include "sim/scene.h"

namespace quorvel::command {

/// How a scene is measured before it is captured.
struct CaptureSetup {
    ProductType mode = KIOSK;
    float area = 0.5F;
    float filterWeight = 0.0F;
    /// Puts a plane in place that a capture's six decimals keep whole, as one loaded from cal.txt is.
    bool roundPlane = true;
};

/// Calibrates a ruler on the empty scene and takes the occupied one in; not measured yet.
Quorvel readyRuler(const sim::Scene& scene, const CaptureSetup& setup);

/// Writes the ruler's capture with the library and moves it to a path of the test's choice.
void captureTo(Quorvel& ruler, const std::filesystem::path& folder);

/// Measures a scene once and captures it.
/// \return the ruler, which keeps the reading
Quorvel captureScene(const sim::Scene& scene, const CaptureSetup& setup, const std::filesystem::path& folder);

}  // namespace quorvel::command
