// SPDX-License-Identifier: Apache-2.0
#include "pipeline.h"

#include <cstdlib>
#include <memory>

#include "library/plain/batch.h"
#include "library/plain/calibration.h"
#include "library/plain/frame_intake.h"
#include "library/plain/object_chain.h"

namespace quorvel::bench {

namespace {

/// Tolerances for the batch, whose frames differ only in their noise, by a few mm at most.
constexpr float kTolerance = 20.0F;

std::shared_ptr<Quorvel> owned(const Quorvel& ruler) {
    return std::make_shared<Quorvel>(ruler);
}

double measured(const Quorvel& ruler) {
    return static_cast<double>(ruler.result.length) + static_cast<double>(ruler.result.height);
}

// The sampling fit draws from std::rand(). With the same numbers every call does the same work.
void seedDraws() {
    std::srand(1);
}

/// Bytes of the images of one pixel: colour 3, depth 2, cloud 12.
constexpr double kFrame = 3 + 2;
constexpr double kCloud = 12;
constexpr double kDepth = 2;

}  // namespace

const PipelineForm& fastPipeline() {
    static const PipelineForm form{
        [](Quorvel& ruler, const Frame& frame) { ruler.getCameraFrame(frame.color, frame.depth); },
        [](Quorvel& ruler) { ruler.measureOnce(); },
        [](Quorvel& ruler) {
            float t = 0.0F;
            ruler.calibRef(t, 0.0F);
        },
        [](Quorvel& ruler, const std::vector<cv::Mat>& colors, const std::vector<cv::Mat>& depths) {
            ruler.getCameraMultipleFrame(colors, depths);
        },
        [](Quorvel& ruler) { ruler.measureMultiple(kTolerance, kTolerance, kTolerance); }};
    return form;
}

const PipelineForm& plainPipeline() {
    static const PipelineForm form{
        [](Quorvel& ruler, const Frame& frame) { test::plain::takeFrame(ruler, frame.color, frame.depth); },
        [](Quorvel& ruler) { test::plain::measureOnce(ruler); },
        [](Quorvel& ruler) {
            float t = 0.0F;
            test::plain::calibRef(ruler, t, 0.0F);
        },
        [](Quorvel& ruler, const std::vector<cv::Mat>& colors, const std::vector<cv::Mat>& depths) {
            test::plain::takeBatch(ruler, colors, depths);
        },
        [](Quorvel& ruler) { test::plain::measureMultiple(ruler, kTolerance, kTolerance, kTolerance); }};
    return form;
}

Run intakeRun(const PipelineForm& form, const Quorvel& ruler, const Frame& frame) {
    const auto state = owned(ruler);
    return {seedDraws, [state, &form, frame] { form.take(*state, frame); },
            [state] { return cv::norm(state->pointCloud); }};
}

Run measureRun(const PipelineForm& form, const Quorvel& ruler, const Frame& frame) {
    const auto state = owned(ruler);
    return {[state, &form, frame] {
                seedDraws();
                form.take(*state, frame);
            },
            [state, &form] { form.measure(*state); }, [state] { return measured(*state); }};
}

Run frameRun(const PipelineForm& form, const Quorvel& ruler, const Frame& frame) {
    const auto state = owned(ruler);
    return {seedDraws,
            [state, &form, frame] {
                form.take(*state, frame);
                form.measure(*state);
            },
            [state] { return measured(*state); }};
}

Run calibrationRun(const PipelineForm& form, const Quorvel& ruler, const Frame& empty) {
    const auto state = owned(ruler);
    form.take(*state, empty);
    return {seedDraws, [state, &form] { form.calibrate(*state); },
            [state] { return static_cast<double>(state->refPlaneOffset); }};
}

Run batchRun(const PipelineForm& form, const Quorvel& ruler, const std::vector<Frame>& frames) {
    const auto state = owned(ruler);
    std::vector<cv::Mat> colors;
    std::vector<cv::Mat> depths;
    for (const Frame& frame : frames) {
        colors.push_back(frame.color);
        depths.push_back(frame.depth);
    }
    return {seedDraws,
            [state, &form, colors, depths] {
                form.takeBatch(*state, colors, depths);
                form.measureBatch(*state);
            },
            [state] { return measured(*state); }};
}

double intakeBytes(const cv::Size& size) {
    const PixelCounts n = pixelCounts(size);
    return kFrame * n.full + (kFrame + kCloud) * n.full + (kFrame + 2 * kCloud) * n.small;
}

double measureBytes(const cv::Size& size) {
    const PixelCounts n = pixelCounts(size);
    return 2 * kCloud * n.full + (2 * kDepth + kCloud) * n.small;
}

double trackingBytes(const cv::Size& size) {
    return intakeBytes(size) + kCloud * pixelCounts(size).small + measureBytes(size);
}

double calibrationBytes(const cv::Size& size) {
    return (kDepth + 2 * kCloud + kDepth) * pixelCounts(size).full;
}

double batchBytes(const cv::Size& size, std::size_t frames) {
    // The images of the current frame are written too. The colour and depth images of the batch belong to the host.
    const PixelCounts n = pixelCounts(size);
    const double each = (kFrame + kCloud) * n.full + (kFrame + 2 * kCloud) * n.small + measureBytes(size);
    return each * static_cast<double>(frames) + (kFrame + kCloud) * n.full + (kFrame + 2 * kCloud) * n.small;
}

}  // namespace quorvel::bench
