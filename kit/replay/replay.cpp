// SPDX-License-Identifier: Apache-2.0
#include "kit/replay/replay.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <filesystem>
#include <limits>
#include <utility>

#include "kit/account/text_format.h"
#include "kit/input/input_error.h"

namespace quorvel::kit {

namespace {

/// A ruler in the state that the capture and the settings describe.
Ruler rulerOf(const Capture& capture, const ReplaySettings& settings) {
    Ruler ruler = Ruler::fromCapture(capture.parameters, settings.measurement.mode);
    applySettings(ruler, settings.measurement);
    return ruler;
}

MeasureResult measureAgain(const Capture& capture, const ReplaySettings& settings) {
    Ruler ruler = rulerOf(capture, settings);
    if (!ruler.takeFrameOnPlane(capture.frame->color, capture.frame->depth)) {
        throw InputError("the library refuses the frame");
    }
    // A failed measurement leaves a reset record, which is what a capture of it keeps.
    ruler.measure();
    return ruler.result();
}

MeasureResult measureAsHost(const std::string& folder) {
    // The offline start puts "./" before the folder, which would spoil an absolute path.
    const std::filesystem::path relative = std::filesystem::proximate(folder);
    if (relative.is_absolute()) {
        throw InputError("is on another drive than the working folder, where no offline start reaches it");
    }
    return Ruler::replayOffline(relative.string());
}

cv::Point2d middle(const std::vector<cv::Point2f>& corners) {
    cv::Point2d sum;
    for (const cv::Point2f& corner : corners) {
        sum += cv::Point2d(corner);
    }
    return sum / static_cast<double>(corners.size());
}

/// The difference of two sizes; infinite instead of NaN, so that it is never within a tolerance.
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

/// What went wrong. Files are named without their folder, because the report names the folder beside the text.
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

}  // namespace quorvel::kit
