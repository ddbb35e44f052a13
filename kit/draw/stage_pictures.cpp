// SPDX-License-Identifier: Apache-2.0
#include "kit/draw/stage_pictures.h"

#include <array>

#include "kit/draw/overlay.h"
#include "kit/draw/stage_drawings.h"
#include "kit/draw/stage_sheet.h"
#include "kit/output/picture_file.h"

namespace quorvel::kit {

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

void addStagePictures(OutputFiles& outputs, const std::filesystem::path& folder, const FramePair& frame,
                      const Camera& camera, const Measurement& measurement) {
    makeFolder(folder);
    std::array<bool, kNames.size()> drawn{};
    const auto add = [&](std::size_t stage, const cv::Mat& picture) {
        drawn.at(stage - 1) = true;
        addPicture(outputs, folder / kNames.at(stage - 1), picture);
    };
    add(1, drawColorStage(frame.color));
    add(2, drawDepthStage(frame.depth));
    if (!measurement.smallCloud.empty()) {
        add(3, drawHeightStage(measurement));
        add(4, drawCandidateStage(frame.color, measurement));
    }
    if (!measurement.surfaceCloud.empty()) {
        add(5, drawSurfaceStage(frame.color, measurement));
        add(6, drawFootprintStage(camera, measurement));
    }
    add(7, drawOverlayStage(frame, camera, measurement));
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        if (!drawn.at(i)) {
            outputs.removeStale(folder / kNames.at(i));
        }
    }
}

}  // namespace quorvel::kit
