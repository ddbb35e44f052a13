// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <vector>

#include "bench_scene.h"
#include "work.h"

namespace quorvel::bench {

/// The public operations in one form: the library's, or the plain one.
struct PipelineForm {
    std::function<void(Quorvel&, const Frame&)> take;
    std::function<void(Quorvel&)> measure;
    std::function<void(Quorvel&)> calibrate;
    std::function<void(Quorvel&, const std::vector<cv::Mat>&, const std::vector<cv::Mat>&)> takeBatch;
    std::function<void(Quorvel&)> measureBatch;
};

const PipelineForm& fastPipeline();
const PipelineForm& plainPipeline();

/// Runs of the whole measurement. Each run has its own ruler, which lives as long as the run. The outcome is the
/// measured length plus the height, or the distance of the fitted plane, mm.
Run intakeRun(const PipelineForm& form, const Quorvel& ruler, const Frame& frame);
Run measureRun(const PipelineForm& form, const Quorvel& ruler, const Frame& frame);
/// Intake and measurement; in GROUND_TRACKING the fit is part of the intake.
Run frameRun(const PipelineForm& form, const Quorvel& ruler, const Frame& frame);
Run calibrationRun(const PipelineForm& form, const Quorvel& ruler, const Frame& empty);
Run batchRun(const PipelineForm& form, const Quorvel& ruler, const std::vector<Frame>& frames);

// Bytes that a call reads and writes once, by the images' sizes.
double intakeBytes(const cv::Size& size);
double measureBytes(const cv::Size& size);
double trackingBytes(const cv::Size& size);
double calibrationBytes(const cv::Size& size);
double batchBytes(const cv::Size& size, std::size_t frames);

}  // namespace quorvel::bench
