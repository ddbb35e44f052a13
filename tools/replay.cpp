// SPDX-License-Identifier: Apache-2.0
#include "replay.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <filesystem>
#include <limits>
#include <utility>

#include "input_error.h"
#include "text_format.h"

namespace quorvel::command {

namespace {

/// A capture keeps 1 / focal length with six decimals only, three or four digits. When they are those of the focal
/// length, which is kept whole, the full value is the one that was measured with.
float wholeReciprocal(float kept, double focalLength) {
    constexpr double kHalfDigit = 0.5e-6;
    constexpr double kFloatRounding = 1e-9;
    const double whole = 1.0 / focalLength;
    return std::abs(static_cast<double>(kept) - whole) <= kHalfDigit + kFloatRounding ? static_cast<float>(whole)
                                                                                      : kept;
}

/// The small-image intrinsics follow from the full-size ones. For the usual factor 4 these are the bits that a ruler
/// computes at its start.
void scaleIntrinsics(Quorvel& ruler) {
    const auto scale = static_cast<float>(ruler.downScale);
    ruler.fxSmall = ruler.fx / scale;
    ruler.fySmall = ruler.fy / scale;
    ruler.cxSmall = ruler.cx / scale;
    ruler.cySmall = ruler.cy / scale;
    ruler.invFxSmall = ruler.invFx * scale;
    ruler.invFySmall = ruler.invFy * scale;
}

/// Pixels of the small image that a square of 50 mm covers on the plane, in the library's order of operations; what no
/// int can hold becomes the smallest, as in the library.
int objectPixels(const Quorvel& ruler) {
    using Limits = std::numeric_limits<int>;
    const double edge = 50.0F / ruler.refPlaneOffset * ruler.fxSmall;
    const double pixels = edge * edge;
    return pixels < Limits::max() ? static_cast<int>(pixels) : Limits::min();
}

/// A ruler in the state that the capture and the settings describe, but in KIOSK: in this mode a frame is taken in
/// without another fit of the plane.
Quorvel rulerOf(const Capture& capture, const ReplaySettings& settings) {
    Quorvel ruler = makeRuler(capture.camera);
    if (settings.measurement.mode == KIOSK) {
        ruler.setProductType(KIOSK);
    }
    ruler.downScale = capture.downScale;
    ruler.minObjectHeight = capture.minObjectHeight;
    ruler.invFx = wholeReciprocal(capture.invFx, capture.camera.fx);
    ruler.invFy = wholeReciprocal(capture.invFy, capture.camera.fy);
    scaleIntrinsics(ruler);
    ruler.refPlaneNormal = capture.plane.normal;
    ruler.refPlaneOffset = capture.plane.offset;
    ruler.calibStatus = true;
    ruler.minObjectPixels = objectPixels(ruler);
    applySettings(ruler, settings.measurement);
    return ruler;
}

MeasureResult measureAgain(const Capture& capture, const ReplaySettings& settings) {
    Quorvel ruler = rulerOf(capture, settings);
    if (!ruler.getCameraFrame(capture.frame->color, capture.frame->depth)) {
        throw InputError("the library refuses the frame");
    }
    ruler.productType = settings.measurement.mode;
    // A failed measurement leaves a reset record, which is what a capture of it keeps.
    ruler.measureOnce();
    return ruler.result;
}

MeasureResult measureAsHost(const std::string& folder) {
    // The offline start puts "./" before the folder, which an absolute path does not survive.
    const std::filesystem::path relative = std::filesystem::proximate(folder);
    if (relative.is_absolute()) {
        throw InputError("is on another drive than the working folder, where no offline start reaches it");
    }
    return Quorvel(0.0F, 0.0F, 0.0F, 0.0F, 0, 0, true, relative.string()).result;
}

cv::Point2d middle(const std::vector<cv::Point2f>& corners) {
    cv::Point2d sum;
    for (const cv::Point2f& corner : corners) {
        sum += cv::Point2d(corner);
    }
    return sum / static_cast<double>(corners.size());
}

/// A difference that is no number counts as infinite, so that it is never within a tolerance.
double difference(float a, float b) {
    const double distance = std::abs(static_cast<double>(a) - static_cast<double>(b));
    return std::isnan(distance) ? std::numeric_limits<double>::infinity() : distance;
}

double largestDifference(const RecordedResult& recorded, const MeasureResult& replayed) {
    return std::max({difference(recorded.length, replayed.length), difference(recorded.width, replayed.width),
                     difference(recorded.height, replayed.height)});
}

void compare(ReplayOutcome& outcome, double tolerance) {
    if (!outcome.isRecorded() || !outcome.isReplayed()) {
        outcome.status = outcome.isRecorded() == outcome.isReplayed() ? ReplayStatus::Empty : ReplayStatus::Changed;
        if (outcome.status == ReplayStatus::Changed) {
            outcome.note = outcome.isRecorded() ? "nothing is measured now" : "nothing was recorded";
        }
        return;
    }
    outcome.change = largestDifference(outcome.recorded, outcome.replayed);
    outcome.shift = cv::norm(middle(outcome.recorded.corners) - middle(outcome.replayed.corners));
    outcome.status = outcome.change <= tolerance ? ReplayStatus::Same : ReplayStatus::Changed;
}

void replay(ReplayOutcome& outcome, const ReplaySettings& settings) {
    const Capture capture = readCapture(outcome.folder);
    outcome.recorded = capture.recorded;
    if (capture.frame) {
        outcome.replayed = settings.asHost ? measureAsHost(outcome.folder) : measureAgain(capture, settings);
    } else {
        outcome.note = "captured before any frame";
    }
    compare(outcome, settings.tolerance);
}

/// What went wrong, with the names of the capture's files alone: the folder stands beside it.
std::string problemText(const std::exception& error, const std::string& folder) {
    std::string text = oneLine(error.what());
    const std::string prefix = (std::filesystem::path(folder) / "").string();
    return text.rfind(prefix, 0) == 0 ? text.substr(prefix.size()) : text;
}

}  // namespace

std::string statusName(ReplayStatus status) {
    switch (status) {
        case ReplayStatus::Same:
            return "same";
        case ReplayStatus::Changed:
            return "changed";
        case ReplayStatus::Empty:
            return "empty";
        default:
            return "unreadable";
    }
}

ReplayOutcome replayCapture(const std::string& folder, const ReplaySettings& settings) {
    ReplayOutcome outcome;
    outcome.folder = folder;
    try {
        replay(outcome, settings);
    } catch (const std::exception& error) {
        outcome.status = ReplayStatus::Unreadable;
        outcome.note = problemText(error, folder);
    }
    return outcome;
}

}  // namespace quorvel::command
