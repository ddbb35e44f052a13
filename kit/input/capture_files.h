// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include <opencv2/core.hpp>

#include "files/capture_reader.h"
#include "kit/input/frame_reader.h"

namespace quorvel::kit {

/// The reading that a capture keeps: sizes and corners, without the flags.
struct RecordedResult {
    float width = 0.0F;   ///< mm, as length and height
    float length = 0.0F;  ///< longer side
    float height = 0.0F;
    /// Image positions of the box, full-size pixels: eight, or none when nothing was measured.
    std::vector<cv::Point2f> corners;
};

/// What a capture folder holds.
struct Capture {
    internal::CaptureParameters parameters;
    RecordedResult recorded;
    /// Absent when the capture was made before any frame.
    std::optional<FramePair> frame;
};

/// Reads a capture folder as the library writes it.
/// \throws InputError when a file is missing or damaged, or when the files do not belong together
Capture readCapture(const std::filesystem::path& folder);

}  // namespace quorvel::kit
