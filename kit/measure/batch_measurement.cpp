// SPDX-License-Identifier: Apache-2.0
#include "kit/measure/batch_measurement.h"

#include <cstddef>
#include <stdexcept>

#include "kit/account/text_format.h"
#include "kit/measure/stopwatch.h"
#include "ruler/measure_once.h"

namespace quorvel::kit {

namespace {

using internal::BatchAccount;
using internal::BatchOutcome;

bool takeBatch(Ruler& ruler, const std::vector<FramePair>& frames) {
    std::vector<cv::Mat> colors;
    std::vector<cv::Mat> depths;
    for (const FramePair& frame : frames) {
        colors.push_back(frame.color);
        depths.push_back(frame.depth);
    }
    return ruler.takeBatch(colors, depths);
}

const char* nameOf(internal::Dimension dimension) {
    switch (dimension) {
        case internal::Dimension::Height:
            return "height";
        case internal::Dimension::Width:
            return "width";
        default:
            return "length";
    }
}

std::string mm(float value) {
    constexpr int kDecimals = 3;
    return fixed(static_cast<double>(value), kDecimals) + " mm";
}

Diagnosis disagreementText(const internal::Disagreement& d, const Batch& batch) {
    return {Reason::FramesDisagree,
            batch.names[d.first] + " and " + batch.names[d.second] + " disagree: their " + nameOf(d.dimension) +
                "s differ by " + mm(d.difference) + ", and the tolerance is " + mm(d.tolerance) +
                "; measure an object at rest, or allow more with --tolerance",
            {{"first_frame", static_cast<double>(d.first)},
             {"second_frame", static_cast<double>(d.second)},
             {"difference_mm", static_cast<double>(d.difference)},
             {"tolerance_mm", static_cast<double>(d.tolerance)}}};
}

/// Says which frame spoils the batch.
Diagnosis unmeasuredFrame(std::size_t index, const Measurement& frame, const Batch& batch) {
    Diagnosis diagnosis = frame.diagnosis;
    diagnosis.message = "frame " + batch.names[index] + " was not measured: " + diagnosis.message;
    diagnosis.numbers.emplace_back("frame", static_cast<double>(index));
    return diagnosis;
}

Measurement frameMeasurement(const Ruler& ruler, const internal::MeasureAccount& account) {
    Measurement frame = describe(ruler);
    if (internal::hasRecord(account)) {
        internal::storeRecord(account, frame.result);
    }
    explain(account, frame);
    return frame;
}

void explainVerdict(const BatchAccount& account, const Batch& batch, BatchMeasurement& outcome) {
    switch (account.outcome) {
        case BatchOutcome::FrameNotMeasured:
        case BatchOutcome::FrameWithoutSizes:
            outcome.combined.diagnosis = unmeasuredFrame(account.spoiler, outcome.frames[account.spoiler], batch);
            break;
        case BatchOutcome::FramesDisagree:
            outcome.dimension = nameOf(account.disagreement->dimension);
            outcome.combined.diagnosis = disagreementText(*account.disagreement, batch);
            break;
        default:
            break;
    }
}

void addNotes(const Batch& batch, BatchMeasurement& outcome) {
    for (std::size_t i = 0; i < outcome.frames.size(); ++i) {
        for (const std::string& note : outcome.frames[i].notes) {
            outcome.combined.notes.push_back(batch.names[i] + ": " + note);
        }
    }
}

}  // namespace

BatchMeasurement measureBatch(Ruler& ruler, const Batch& batch, const MeasurementSettings& settings) {
    BatchMeasurement outcome;
    applySettings(ruler, settings);
    const Stopwatch intakeWatch;
    if (!takeBatch(ruler, batch.frames)) {
        throw std::logic_error("the ruler refused to take in a batch of frames of its own size");
    }
    const double intakeMilliseconds = intakeWatch.milliseconds();
    if (!isUsable(ruler.state().plane)) {
        outcome.combined = measurementWithoutFittedPlane(ruler);
        return outcome;
    }
    internal::BatchDetail detail;
    detail.frame.survey = true;
    detail.everyFrame = true;
    const Stopwatch measureWatch;
    const BatchAccount account = ruler.measureBatch(batch.tolerance, detail);
    outcome.combined = describe(ruler);
    outcome.combined.measureMilliseconds = measureWatch.milliseconds();
    outcome.combined.frameMilliseconds = intakeMilliseconds;
    outcome.combined.result = ruler.result();
    for (const internal::MeasureAccount& frame : account.frames) {
        outcome.frames.push_back(frameMeasurement(ruler, frame));
    }
    outcome.spread = account.spread;
    addNotes(batch, outcome);
    explainVerdict(account, batch, outcome);
    return outcome;
}

BatchMeasurement batchWithoutPlane(const Ruler& ruler, const std::string& message) {
    BatchMeasurement outcome;
    outcome.combined = measurementWithoutPlane(ruler, message);
    return outcome;
}

}  // namespace quorvel::kit
