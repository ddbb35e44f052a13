// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <vector>

#include <quorvel/quorvel.h>

#include "plane.h"

namespace quorvel::command {

/// Why a measurement gave no sizes.
enum class Reason {
    /// There are sizes.
    None,
    /// There is no reference plane.
    NoPlane,
    /// No pixel stands high enough above the plane.
    NothingHighEnough,
    /// Pixels stand high enough, but all of them were dropped as ground because of their depth.
    RemovedAsGround,
    /// Every raised region is too small.
    RegionTooSmall,
    /// The surface filter left too few points.
    TooFewSurfacePoints,
    /// The top face of the box lies outside the detection area.
    MissesArea,
    /// A corner of the box leaves the usable picture.
    OutOfView,
    /// Two frames of a batch differ by more than a tolerance.
    FramesDisagree
};

/// \return the reason's name in the JSON output, such as "region_too_small"
std::string reasonCode(Reason reason);

/// What the command saw of one measurement, as plain values.
struct MeasurementFacts {
    Plane plane;
    float filterWeight = 0.0F;
    /// mm; a candidate stands at least this high above the plane.
    float minObjectHeight = 0.0F;
    /// A region needs more small-image pixels than this.
    int minObjectPixels = 0;
    /// CV_16UC1, small, mm, as the frame was taken in.
    cv::Mat depthBefore;
    /// CV_16UC1, small, mm, after the measurement: non-zero at the candidates only.
    cv::Mat depthAfter;
    /// CV_32FC3, small, mm.
    cv::Mat smallCloud;
    /// Return value of the measurement.
    int status = 0;
    /// Points that the surface filter left; counts only when `status` is 0.
    int surfacePoints = 0;
    MeasureResult result;
    /// Sides of the box on the plane, longer first, mm; 0 without corners.
    cv::Size2d footprint;
    /// Detection area, full-size pixels.
    cv::Rect detectionArea;
    /// Size of the picture that the corners must stay in, full-size pixels.
    cv::Size usableSize;
    /// Corners of the box when the whole picture is the detection area; empty when there is none.
    std::vector<cv::Point2f> cornersAnywhere;
};

/// Numbers of small-image pixels at the stations of a measurement.
struct HeightSurvey {
    /// With a depth.
    int measured = 0;
    /// Dropped as ground: deeper than (1 - filter weight) times the plane's distance.
    int removedAsGround = 0;
    /// Dropped as ground although they stand high enough above the plane.
    int raisedButRemoved = 0;
    /// Candidates: high enough and not dropped.
    int candidates = 0;
    /// Of the largest 4-connected region of candidates.
    int largestRegion = 0;
    /// Greatest height of a pixel with a depth, mm; 0 when there is none. Negative when all lie beyond the plane.
    double highest = 0.0;
};

/// Why there are no sizes, for people and for programs.
struct Diagnosis {
    Reason reason = Reason::None;
    /// One sentence with the numbers and what to do; empty when there are sizes.
    std::string message;
    /// The numbers behind the message by name, lower case with underscores, units in the names.
    std::vector<std::pair<std::string, double>> numbers;
};

/// \pre the plane is usable and the images have one size
HeightSurvey surveyHeights(const MeasurementFacts& facts);

/// Finds out why a measurement gave no sizes.
/// \pre the plane is usable; without one noPlane() is the diagnosis
Diagnosis diagnose(const MeasurementFacts& facts, const HeightSurvey& survey);

/// \param message says why there is no plane and what to do
/// \param numbers the numbers behind it
Diagnosis noPlane(std::string message, std::vector<std::pair<std::string, double>> numbers);

/// \return a warning that an object may have been missed or cut short, because raised pixels enough for an object of
///         their own were dropped as ground; empty otherwise, and when the diagnosis says so already
std::string groundCutWarning(const MeasurementFacts& facts, const HeightSurvey& survey, Reason reason);

}  // namespace quorvel::command
