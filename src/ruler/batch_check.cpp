// SPDX-License-Identifier: Apache-2.0
#include "ruler/batch_check.h"

#include <cstddef>

#include "image/frame_check.h"
#include "image/image_form.h"

namespace quorvel::internal {

namespace {

bool hasEmptyFrame(const std::vector<cv::Mat>& colorFrames, const std::vector<cv::Mat>& depthFrames) {
    for (std::size_t i = 0; i < colorFrames.size(); ++i) {
        if (isEmptyFrame(colorFrames[i], depthFrames[i])) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::string batchProblem(const std::vector<cv::Mat>& colorFrames, const std::vector<cv::Mat>& depthFrames,
                         const BatchForm& form) {
    if (colorFrames.empty()) {
        return "Batch refused: it holds no frame; give one colour and one depth frame at least.";
    }
    if (form.offlineMode) {
        return "Batch refused: in offline mode the ruler replays one stored frame; measure it with measureOnce.";
    }
    if (hasEmptyFrame(colorFrames, depthFrames)) {
        return {};
    }
    for (std::size_t i = 0; i < colorFrames.size(); ++i) {
        const std::string problem =
            frameProblem(colorFrames[i], depthFrames[i], form.width, form.height, form.downScale);
        if (!problem.empty()) {
            return "Batch refused because of frame " + std::to_string(i) + ". " + problem;
        }
    }
    return {};
}

}  // namespace quorvel::internal
