// SPDX-License-Identifier: Apache-2.0
#include "batch_measurement.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "calibration.h"
#include "stopwatch.h"
#include "stream_redirect.h"
#include "text_format.h"

namespace quorvel::command {

namespace {

struct Dimension {
    const char* name;
    float MeasureResult::*measured;
    float Sizes::*size;
};

/// In the order in which the library compares two frames.
constexpr std::array<Dimension, 3> kDimensions{{{"height", &MeasureResult::height, &Sizes::height},
                                                {"width", &MeasureResult::width, &Sizes::width},
                                                {"length", &MeasureResult::length, &Sizes::length}}};

bool takeBatch(Quorvel& ruler, const std::vector<FramePair>& frames) {
    std::vector<cv::Mat> colors;
    std::vector<cv::Mat> depths;
    for (const FramePair& frame : frames) {
        colors.push_back(frame.color);
        depths.push_back(frame.depth);
    }
    return ruler.getCameraMultipleFrame(colors, depths);
}

/// In GROUND_TRACKING every intake fits another plane; a batch is measured on that of its first frame.
void keepPlane(Quorvel& probe, const Quorvel& ruler) {
    probe.refPlaneNormal = ruler.refPlaneNormal;
    probe.refPlaneOffset = ruler.refPlaneOffset;
    probe.minObjectPixels = ruler.minObjectPixels;
}

/// Measures one frame as a batch of its own, which gives what the whole batch makes of it, bit for bit: a single shot
/// lowers the height in GROUND_TRACKING, and a batch does not.
MeasureResult readingOf(const Quorvel& ruler, const FramePair& frame) {
    constexpr float kAny = std::numeric_limits<float>::infinity();
    Quorvel probe = ruler;
    takeBatch(probe, {frame});
    keepPlane(probe, ruler);
    probe.measureMultiple(kAny, kAny, kAny);
    return probe.result;
}

/// Measures one frame of the batch alone.
/// \param ruler after the batch, with its plane and settings
Measurement measureAlone(const Quorvel& ruler, const FramePair& frame) {
    // The library has told of this frame already when it measured the batch.
    const SilentLibrary silence;
    Quorvel probe = ruler;
    probe.getCameraFrame(frame.color, frame.depth);
    keepPlane(probe, ruler);
    Measurement measurement = measureHeldFrame(probe, frame);
    if (measurement.diagnosis.reason == Reason::None) {
        measurement.result = readingOf(ruler, frame);
    }
    return measurement;
}

struct Disagreement {
    std::size_t first = 0;
    std::size_t second = 0;
    Dimension dimension{};
    float difference = 0.0F;
};

float differenceOf(const Dimension& dimension, const MeasureResult& a, const MeasureResult& b) {
    return std::fabs(a.*dimension.measured - b.*dimension.measured);
}

/// The first two frames that differ too much, in the order in which the library compares them.
/// \throws std::logic_error when all agree
Disagreement firstDisagreement(const std::vector<Measurement>& frames, const Sizes& tolerance) {
    for (std::size_t k = 0; k < frames.size(); ++k) {
        for (std::size_t j = k + 1; j < frames.size(); ++j) {
            for (const Dimension& dimension : kDimensions) {
                const float difference = differenceOf(dimension, frames[k].result, frames[j].result);
                if (difference > tolerance.*dimension.size) {
                    return {k, j, dimension, difference};
                }
            }
        }
    }
    throw std::logic_error("the ruler refused a batch whose frames agree when each is measured alone");
}

std::string mm(float value) {
    constexpr int kDecimals = 3;
    return fixed(static_cast<double>(value), kDecimals) + " mm";
}

Diagnosis disagreementText(const Disagreement& d, const Batch& batch) {
    const float tolerance = batch.tolerance.*d.dimension.size;
    const std::string name = d.dimension.name;
    return {Reason::FramesDisagree,
            batch.names[d.first] + " and " + batch.names[d.second] + " disagree: their " + name + "s differ by " +
                mm(d.difference) + ", and the tolerance is " + mm(tolerance) +
                "; measure an object at rest, or allow more with --tolerance",
            {{"first_frame", static_cast<double>(d.first)},
             {"second_frame", static_cast<double>(d.second)},
             {"difference_mm", static_cast<double>(d.difference)},
             {"tolerance_mm", static_cast<double>(tolerance)}}};
}

/// Says which frame spoils the batch.
Diagnosis unmeasuredFrame(std::size_t index, const Measurement& frame, const Batch& batch) {
    Diagnosis diagnosis = frame.diagnosis;
    diagnosis.message = "frame " + batch.names[index] + " was not measured: " + diagnosis.message;
    diagnosis.numbers.emplace_back("frame", static_cast<double>(index));
    return diagnosis;
}

bool isUnmeasured(const Measurement& frame) {
    return frame.diagnosis.reason != Reason::None;
}

/// A frame without an object ends the batch at once, so it comes before one whose box is out of view or outside the
/// detection area; sizes are compared only when all frames have some.
void explainRefusal(const Batch& batch, BatchMeasurement& outcome) {
    const auto& frames = outcome.frames;
    auto culprit =
        std::find_if(frames.begin(), frames.end(), [](const Measurement& frame) { return frame.facts.status != 0; });
    if (culprit == frames.end()) {
        culprit = std::find_if(frames.begin(), frames.end(), isUnmeasured);
    }
    if (culprit != frames.end()) {
        const auto index = static_cast<std::size_t>(culprit - frames.begin());
        outcome.combined.diagnosis = unmeasuredFrame(index, *culprit, batch);
        return;
    }
    const Disagreement disagreement = firstDisagreement(frames, batch.tolerance);
    outcome.dimension = disagreement.dimension.name;
    outcome.combined.diagnosis = disagreementText(disagreement, batch);
}

std::optional<Sizes> spreadOf(const std::vector<Measurement>& frames) {
    if (std::any_of(frames.begin(), frames.end(), isUnmeasured)) {
        return std::nullopt;
    }
    Sizes spread;
    for (const Dimension& dimension : kDimensions) {
        const auto smaller = [&dimension](const Measurement& a, const Measurement& b) {
            return a.result.*dimension.measured < b.result.*dimension.measured;
        };
        const auto [least, greatest] = std::minmax_element(frames.begin(), frames.end(), smaller);
        spread.*dimension.size = differenceOf(dimension, greatest->result, least->result);
    }
    return spread;
}

void addNotes(const Batch& batch, BatchMeasurement& outcome) {
    for (std::size_t i = 0; i < outcome.frames.size(); ++i) {
        for (const std::string& note : outcome.frames[i].notes) {
            outcome.combined.notes.push_back(batch.names[i] + ": " + note);
        }
    }
}

}  // namespace

BatchMeasurement measureBatch(Quorvel& ruler, const Batch& batch, const MeasurementSettings& settings) {
    BatchMeasurement outcome;
    const LibraryOutputToStderr redirected;
    applySettings(ruler, settings);
    const Stopwatch intakeWatch;
    if (!takeBatch(ruler, batch.frames)) {
        throw std::logic_error("the ruler refused to take in a batch of frames of its own size");
    }
    const double intakeMilliseconds = intakeWatch.milliseconds();
    if (!isUsable(planeOf(ruler))) {
        outcome.combined = measurementWithoutFittedPlane(ruler);
        return outcome;
    }
    const Stopwatch measureWatch;
    const Sizes& tolerance = batch.tolerance;
    const int status = ruler.measureMultiple(tolerance.length, tolerance.width, tolerance.height);
    outcome.combined = describe(ruler);
    outcome.combined.measureMilliseconds = measureWatch.milliseconds();
    outcome.combined.frameMilliseconds = intakeMilliseconds;
    outcome.combined.result = ruler.result;
    for (const FramePair& frame : batch.frames) {
        outcome.frames.push_back(measureAlone(ruler, frame));
    }
    outcome.spread = spreadOf(outcome.frames);
    addNotes(batch, outcome);
    if (status != 0) {
        explainRefusal(batch, outcome);
    }
    return outcome;
}

BatchMeasurement batchWithoutPlane(const Quorvel& ruler, const std::string& message) {
    BatchMeasurement outcome;
    outcome.combined = measurementWithoutPlane(ruler, message);
    return outcome;
}

}  // namespace quorvel::command
