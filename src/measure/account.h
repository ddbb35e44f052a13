// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include <opencv2/core.hpp>

#include "geometry/plane_model.h"
#include "measure/footprint.h"
#include "measure/height_cut.h"
#include "measure/object_component.h"

namespace quorvel::internal {

/// How long each stage of a measurement took, ms.
struct StageTimes {
    double groundRemoval = 0.0;
    double heightCut = 0.0;
    double component = 0.0;
    double window = 0.0;  ///< the mask scaled up and the cloud cleared outside it
    double surfaceFilter = 0.0;
    double footprint = 0.0;
};

/// How the measurement of a frame ended.
enum class Outcome {
    Measured,           ///< a box with sizes
    NoPlane,            ///< there is no reference plane: its normal is (0, 0, 0), or no calibration was loaded or made
    PlaneUnusable,      ///< there is a plane, but it cannot be measured from: see planeProblem()
    NoFrame,            ///< no frame, or images whose sizes or types do not fit together
    NothingHighEnough,  ///< no pixel stands high enough above the plane
    RemovedAsGround,    ///< pixels stand high enough, but the ground cut removed all of them because of their depth
    RegionTooSmall,     ///< no region of candidates is large enough
    TooFewSurfacePoints,  ///< the surface filter left too few points for a rectangle
    MissesArea,           ///< the box's top face has no pixel in the detection area
    OutOfView             ///< a corner of the box leaves the usable picture
};

/// What an account holds besides what every measurement knows anyway. Each of these costs time.
struct AccountDetail {
    bool survey = false;   ///< fill MeasureAccount::survey
    bool regions = false;  ///< fill ComponentChoice::sizes
    bool times = false;    ///< fill MeasureAccount::times
};

/// What a measurement found, stage by stage, and why it ended as it did.
///
/// The numbers are those of the stages that ran: `component` without a chosen region means that the later stages did
/// not run, and `footprint` is then as it was initialised.
struct MeasureAccount {
    Outcome outcome = Outcome::NoFrame;

    // What it was measured with
    Plane plane;
    float groundDepth = 0.0F;   ///< depths beyond this were removed as ground: (1 - filter weight) * plane distance, mm
    float filterWeight = 0.0F;  ///< of the ground cut: fraction of the plane distance
    float minHeight = 0.0F;     ///< a candidate stands at least this high above the plane, mm
    int minPixels = 0;          ///< a region needs more small-image pixels than this
    cv::Rect detectionArea;     ///< full-size pixels
    cv::Size picture;           ///< full size, pixels

    // What the stages found
    bool searched = false;        ///< whether the stages ran: there was a frame, and a plane was not ruled out before
    int raisedPixels = 0;         ///< small-image pixels that stand high enough, removed as ground or not
    ComponentChoice component;    ///< the regions of candidates
    Footprint footprint;          ///< the box
    float heightLowering = 0.0F;  ///< GROUND_TRACKING single shots: taken off the corrected height, mm
    std::optional<HeightSurvey> survey;
    std::optional<StageTimes> times;

    /// \return small-image pixels that stand high enough and were removed as ground all the same
    int raisedButRemoved() const { return raisedPixels - component.candidates; }
};

/// \return whether the account ends with a record: the frame was measured to the end, though perhaps without sizes
inline bool hasRecord(const MeasureAccount& account) {
    switch (account.outcome) {
        case Outcome::Measured:
        case Outcome::TooFewSurfacePoints:
        case Outcome::MissesArea:
        case Outcome::OutOfView:
            return true;
        default:
            return false;
    }
}

}  // namespace quorvel::internal
