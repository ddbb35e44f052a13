// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// What the ruler expects of every frame of a batch.
struct BatchForm {
    int width = 0;  ///< frame size, pixels
    int height = 0;
    int downScale = 0;         ///< factor between full and small images
    bool offlineMode = false;  ///< the ruler replays one stored frame and takes no batch
};

/// Checks a batch before anything of it is kept. A batch with an empty frame is not refused here: the intake keeps
/// what came before that frame.
/// \param colorFrames,depthFrames vectors of one length
/// \return an empty text when nothing is wrong; otherwise one line that says what was expected and what came
std::string batchProblem(const std::vector<cv::Mat>& colorFrames, const std::vector<cv::Mat>& depthFrames,
                         const BatchForm& form);

}  // namespace quorvel::internal
