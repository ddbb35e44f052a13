// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <quorvel/quorvel.h>

#include "camera.h"
#include "diagnosis.h"
#include "frame_reader.h"
#include "region_option.h"

namespace quorvel::command {

/// What to set on the ruler before a measurement; what is absent keeps the library's default.
struct MeasurementSettings {
    ProductType mode = KIOSK;
    std::optional<Region> area;
    std::optional<float> filterWeight;
    /// Width of the band kept clear at the left and right edge, mm.
    std::optional<int> sideBand;
    std::optional<float> minHeight;
    /// The library's diagnostic lines, on standard error.
    bool debug = false;
};

/// One measurement and what it was made with.
struct Measurement {
    MeasureResult result;
    Diagnosis diagnosis;
    /// Warnings on the frame or the settings, one sentence each.
    std::vector<std::string> notes;
    Plane plane;
    cv::Rect detectionArea;
    float filterWeight = 0.0F;
    float minObjectHeight = 0.0F;
    int minObjectPixels = 0;
    /// What the library saw; images are empty when there was no plane.
    MeasurementFacts facts;
    /// CV_32FC3, full size, mm: the points that were measured; empty when the measurement ended before them.
    cv::Mat surfaceCloud;
    /// Duration of taking the frame in and of measuring it, ms.
    double frameMilliseconds = 0.0;
    double measureMilliseconds = 0.0;
};

/// \return a fresh ruler for the camera
Quorvel makeRuler(const Camera& camera);

/// Puts a fresh ruler into the mode. In GROUND_GROWING the stored plane is loaded as well; the mode itself loads
/// none, but keeps one that KIOSK has loaded. The detection area is then the mode's own default.
void selectMode(Quorvel& ruler, const MeasurementSettings& settings);

/// Hands the settings to the ruler, which is in its mode.
void applySettings(Quorvel& ruler, const MeasurementSettings& settings);

/// Gives another ruler for the same camera the reference plane of the first, with what follows from it.
void usePlaneOf(const Quorvel& ruler, Quorvel& other);

/// \return what the ruler measures with, without a result
Measurement describe(const Quorvel& ruler);

/// Pushes the frame, measures it and finds out why there are no sizes, if so.
/// \param ruler in its mode and, but for GROUND_TRACKING, with a usable plane; keeps the frame and the result
/// \param frame CV_8UC3 and CV_16UC1 of the ruler's size
Measurement measureFrame(Quorvel& ruler, const FramePair& frame, const MeasurementSettings& settings);

/// Measures the frame that the ruler holds, with the plane it has, and finds out why there are no sizes, if so.
/// \param frame what the ruler was given last
Measurement measureHeldFrame(Quorvel& ruler, const FramePair& frame);

/// The outcome when GROUND_TRACKING could fit no plane to the frame that the ruler was given last.
Measurement measurementWithoutFittedPlane(const Quorvel& ruler);

/// The outcome when there is no plane to measure with; the frame is not pushed.
/// \param message says why and what to do
Measurement measurementWithoutPlane(const Quorvel& ruler, const std::string& message);

}  // namespace quorvel::command
