// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include <quorvel/quorvel.h>

#include "kit/account/diagnosis.h"
#include "kit/account/plane.h"
#include "kit/input/camera.h"
#include "kit/input/frame_reader.h"
#include "kit/input/region.h"
#include "ruler/ruler.h"

namespace quorvel::kit {

using internal::Ruler;
using internal::Sizes;

/// What to set on the ruler before a measurement; what is absent keeps the library's default.
struct MeasurementSettings {
    ProductType mode = KIOSK;
    std::optional<Region> area;
    std::optional<float> filterWeight;
    /// Width of the band kept clear at the left and right edge, mm.
    std::optional<int> sideBand;
    std::optional<float> minHeight;
    /// The library's lines of the debug mode.
    bool debug = false;
};

/// One measurement and what it was made with.
struct Measurement {
    /// What the ruler measured with, after the measurement.
    internal::RulerState state;
    /// Absent when the frame was not measured for want of a plane.
    std::optional<internal::MeasureAccount> account;
    MeasureResult result;
    Diagnosis diagnosis;
    /// Warnings on the frame or the settings, one sentence each.
    std::vector<std::string> notes;
    /// CV_32FC3, small, mm: the frame as it was taken in; empty when it was not measured.
    cv::Mat smallCloud;
    /// CV_8UC1, small: 255 at the candidates; empty when the frame was not measured.
    cv::Mat candidates;
    /// CV_32FC3, full size, mm: the points that were measured; empty when the measurement ended before them.
    cv::Mat surfaceCloud;
    /// Duration of taking the frame in and of measuring it, ms.
    double frameMilliseconds = 0.0;
    double measureMilliseconds = 0.0;

    /// \return the eight image positions of the box, pixels, also of one that misses the detection area but not the
    ///         picture; empty without a box
    std::vector<cv::Point2f> corners() const;
};

/// \return a fresh ruler for the camera
/// \param lines where the lines of the library go; null keeps it quiet
Ruler makeRuler(const Camera& camera, std::ostream* lines = nullptr);

/// Puts a fresh ruler into the mode, which loads the stored plane except in GROUND_TRACKING.
void selectMode(Ruler& ruler, const MeasurementSettings& settings);

/// Hands the settings to the ruler, which is in its mode.
void applySettings(Ruler& ruler, const MeasurementSettings& settings);

/// \return what the ruler measures with, without a result
Measurement describe(const Ruler& ruler);

/// Pushes the frame, measures it and finds out why there are no sizes, if so.
/// \param ruler in its mode and, but for GROUND_TRACKING, with a usable plane; keeps the frame and the result
/// \param frame CV_8UC3 and CV_16UC1 of the ruler's size
Measurement measureFrame(Ruler& ruler, const FramePair& frame, const MeasurementSettings& settings);

/// Puts an account into words: diagnosis and notes.
void explain(const internal::MeasureAccount& account, Measurement& measurement);

/// The outcome when GROUND_TRACKING could fit no plane to the frame that the ruler was given last.
Measurement measurementWithoutFittedPlane(const Ruler& ruler);

/// The outcome when there is no plane to measure with; the frame is not pushed.
/// \param message says why and what to do
Measurement measurementWithoutPlane(const Ruler& ruler, const std::string& message);

}  // namespace quorvel::kit
