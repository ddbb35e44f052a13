// SPDX-License-Identifier: Apache-2.0
#include "options/frame_options.h"

#include "kit/input/input_error.h"

namespace quorvel::command {

using namespace kit;

namespace {

constexpr const char* kColorHelp =
    "colour image, aligned with the depth; without it a grey picture of the depth stands in";
constexpr const char* kDepthHelp = "depth image: PNG or TIFF of 16-bit or floating-point values, 0 = no measurement";

void addDepthScaleOption(CLI::App& app, double& millimetresPerUnit) {
    app.add_option("--depth-scale", millimetresPerUnit,
                   "millimetres that one stored depth unit stands for: 1 for millimetres (the default), 0.1 for "
                   "tenths of a millimetre, 1000 for metres")
        ->type_name("MM_PER_UNIT");
}

}  // namespace

void addFrameOptions(CLI::App& app, FrameOptions& options) {
    addCameraOptions(app, options.camera);
    app.add_option("--color", options.color, kColorHelp)->type_name("FILE");
    app.add_option("--depth", options.depth, kDepthHelp)->type_name("FILE")->required();
    addDepthScaleOption(app, options.millimetresPerUnit);
}

void addFrameListOptions(CLI::App& app, FrameListOptions& options) {
    addCameraOptions(app, options.camera);
    app.add_option("--color", options.colors, kColorHelp + std::string("; several make a batch"))->type_name("FILE");
    app.add_option("--depth", options.depths, kDepthHelp + std::string("; several make a batch"))->type_name("FILE");
    addDepthScaleOption(app, options.millimetresPerUnit);
}

CameraFrame readCameraFrame(const FrameOptions& options) {
    constexpr double kLargestUnit = 1e6;  // mm, a kilometre
    if (!(options.millimetresPerUnit > 0.0 && options.millimetresPerUnit <= kLargestUnit)) {
        throw InputError(
            "--depth-scale: the millimetres of one stored unit are above 0 and at most 1000000; give 1 for "
            "millimetres, 1000 for metres");
    }
    CameraFrame result;
    result.frame = readFrame(options.color, options.depth, options.millimetresPerUnit);
    result.camera = resolveCamera(options.camera, result.frame.depth.size());
    requireSize(result.frame, result.camera.size(), options.depth);
    return result;
}

}  // namespace quorvel::command
