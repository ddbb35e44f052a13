// SPDX-License-Identifier: Apache-2.0
// The public operations at three picture sizes.
#include <utility>

#include "pipeline.h"

namespace quorvel::bench {

namespace {

/// \param make makes a run of a form; both forms get the same ruler and frames
Work inBothForms(const std::string& name, const cv::Size& size, double bytes,
                 const std::function<Run(const PipelineForm&)>& make) {
    return {name, sizeName(size), bytes, [make] { return make(plainPipeline()); },
            [make] { return make(fastPipeline()); }};
}

/// A ruler whose calibrations cannot write their files and spend no time on them; libtiff prints that on standard
/// error.
Quorvel withoutFiles(Quorvel ruler) {
    ruler.paramDir = "missing/param";
    ruler.calFilePath = ruler.paramDir + "/cal.txt";
    return ruler;
}

Works pipelineAt(const cv::Size& size) {
    const sim::Camera camera = parcelScene(size).camera;
    return {inBothForms("intake", size, intakeBytes(size),
                        [=](const PipelineForm& form) {
                            return intakeRun(form, calibratedRuler(camera, KIOSK), parcelFrames(size).occupied);
                        }),
            inBothForms("measureOnce", size, measureBytes(size),
                        [=](const PipelineForm& form) {
                            return measureRun(form, calibratedRuler(camera, KIOSK), parcelFrames(size).occupied);
                        }),
            inBothForms("single-shot", size, intakeBytes(size) + measureBytes(size),
                        [=](const PipelineForm& form) {
                            return frameRun(form, calibratedRuler(camera, KIOSK), parcelFrames(size).occupied);
                        }),
            inBothForms("sampling-calibration", size, calibrationBytes(size),
                        [=](const PipelineForm& form) {
                            return calibrationRun(form, makeRuler(camera, KIOSK), parcelFrames(size).empty);
                        }),
            inBothForms("growing-calibration", size, calibrationBytes(size),
                        [=](const PipelineForm& form) {
                            return calibrationRun(form, makeRuler(camera, GROUND_GROWING), parcelFrames(size).empty);
                        }),
            inBothForms("sampling-calibration-no-files", size, calibrationBytes(size),
                        [=](const PipelineForm& form) {
                            return calibrationRun(form, withoutFiles(makeRuler(camera, KIOSK)),
                                                  parcelFrames(size).empty);
                        }),
            inBothForms("growing-calibration-no-files", size, calibrationBytes(size),
                        [=](const PipelineForm& form) {
                            return calibrationRun(form, withoutFiles(makeRuler(camera, GROUND_GROWING)),
                                                  parcelFrames(size).empty);
                        }),
            inBothForms("tracking-frame", size, trackingBytes(size),
                        [=](const PipelineForm& form) {
                            return frameRun(form, makeRuler(camera, GROUND_TRACKING), parcelFrames(size).occupied);
                        }),
            inBothForms("batch-of-four", size, batchBytes(size, 4), [=](const PipelineForm& form) {
                return batchRun(form, calibratedRuler(camera, KIOSK), parcelBatch(size, 4));
            })};
}

}  // namespace

Works pipelineWorks() {
    Works works;
    for (const cv::Size& size : {cv::Size(640, 480), cv::Size(1280, 720), cv::Size(1920, 1080)}) {
        for (Work& work : pipelineAt(size)) {
            works.push_back(std::move(work));
        }
    }
    return works;
}

}  // namespace quorvel::bench
