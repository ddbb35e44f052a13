// SPDX-License-Identifier: Apache-2.0
#include "stage_pictures.h"

#include <array>
#include <system_error>

#include "overlay.h"
#include "picture_file.h"
#include "stage_drawings.h"
#include "stage_sheet.h"

namespace quorvel::command {

namespace {

constexpr std::array<const char*, 7> kNames{"01_color.png",      "02_depth.png",          "03_height_above_plane.png",
                                            "04_candidates.png", "05_surface_points.png", "06_footprint.png",
                                            "07_overlay.png"};

cv::Mat drawOverlayStage(const FramePair& frame, const Camera& camera, const Measurement& measurement) {
    return makeSheet(
        drawOverlay(frame.color, camera, measurement),
        {"7  Box", "Ground rectangle orange, top rectangle green, uprights blue, detection area dashed.", ""},
        std::nullopt);
}

}  // namespace

std::vector<std::filesystem::path> writeStagePictures(const std::filesystem::path& folder, const FramePair& frame,
                                                      const Camera& camera, const Measurement& measurement) {
    makeFolder(folder);
    for (const char* name : kNames) {
        std::error_code ignored;
        std::filesystem::remove(folder / name, ignored);
    }
    std::vector<std::filesystem::path> written;
    const auto write = [&](std::size_t stage, const cv::Mat& picture) {
        written.push_back(folder / kNames.at(stage - 1));
        writePicture(written.back(), picture);
    };
    write(1, drawColorStage(frame.color));
    write(2, drawDepthStage(frame.depth));
    if (!measurement.facts.smallCloud.empty()) {
        write(3, drawHeightStage(measurement));
        write(4, drawCandidateStage(frame.color, measurement));
    }
    if (!measurement.surfaceCloud.empty()) {
        write(5, drawSurfaceStage(frame.color, measurement));
        write(6, drawFootprintStage(camera, measurement));
    }
    write(7, drawOverlayStage(frame, camera, measurement));
    return written;
}

}  // namespace quorvel::command
