// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>
#include <vector>

#include <quorvel/quorvel.h>

namespace quorvel::internal {

/// Takes a batch of frames in: Quorvel::getCameraMultipleFrame, with the lines going where the caller wants them.
/// \param lines nothing is printed when it is null
/// \return whether the whole batch was taken in
bool takeBatch(Quorvel& ruler, const std::vector<cv::Mat>& colorFrames, const std::vector<cv::Mat>& depthFrames,
               std::ostream* lines);

/// Empties all buffers of a batch.
void emptyBatch(Quorvel& ruler);

}  // namespace quorvel::internal
