// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "measure/account.h"

namespace quorvel::kit {

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

/// Why there are no sizes, for people and for programs.
struct Diagnosis {
    Reason reason = Reason::None;
    /// One sentence with the numbers and what to do; empty when there are sizes.
    std::string message;
    /// The numbers behind the message by name, lower case with underscores, units in the names.
    std::vector<std::pair<std::string, double>> numbers;
};

/// Puts into words why a measurement gave no sizes.
/// \param account with its survey; of a frame that was searched
Diagnosis diagnose(const internal::MeasureAccount& account);

/// \param message says why there is no plane and what to do
/// \param numbers the numbers behind it
Diagnosis noPlane(std::string message, std::vector<std::pair<std::string, double>> numbers);

/// \return a warning that an object may have been missed or cut short, because raised pixels enough for an object of
///         their own were dropped as ground; empty otherwise, and when the diagnosis says so already
std::string groundCutWarning(const internal::MeasureAccount& account, Reason reason);

}  // namespace quorvel::kit
