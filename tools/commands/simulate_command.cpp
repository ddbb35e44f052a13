// SPDX-License-Identifier: Apache-2.0
#include "commands/simulate_command.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>

#include "commands/exit_code.h"
#include "commands/truth_json.h"
#include "kit/account/text_format.h"
#include "kit/input/camera_file.h"
#include "kit/input/input_error.h"
#include "kit/input/input_file.h"
#include "kit/input/nesting.h"
#include "kit/output/output_file.h"
#include "kit/output/picture_file.h"
#include "sim/presets.h"
#include "sim/render.h"
#include "sim/scene_json.h"

namespace quorvel::command {

using namespace kit;

namespace {

/// The empty frame has a number far from the usual frame numbers, so that its noise is different from theirs.
constexpr std::uint32_t kEmptyFrames = 0x80000000U;

struct SimulateOptions {
    std::string sceneFile;
    std::string preset;
    std::string folder;
    std::optional<std::uint32_t> seed;
    std::uint32_t frame = 0;
    /// Number of consecutive frames to write as a batch as well.
    std::optional<std::uint32_t> frames;
    bool list = false;
};

int listPresets() {
    std::vector<std::pair<std::string, std::string>> rows;
    for (const std::string& name : sim::presetNames()) {
        rows.emplace_back(name, sim::presetDescription(name));
    }
    std::cout << "Presets:\n" << tableText(rows);
    return kSuccess;
}

sim::Scene readScene(const std::string& path) {
    const std::string text = readInputFile(path, kLargestText, "check the path");
    requireShallow(text, path);
    try {
        return sim::sceneFromJson(text);
    } catch (const std::runtime_error& error) {
        throw InputError("--scene: " + path + ": " + oneLine(error.what()));
    }
}

sim::Scene chosenScene(const SimulateOptions& options) {
    if (options.sceneFile.empty() == options.preset.empty()) {
        throw InputError(options.preset.empty()
                             ? "no scene is given; add --preset NAME (--list shows them) or --scene FILE"
                             : "--scene and --preset both give a scene; keep one of them");
    }
    try {
        sim::Scene scene = options.preset.empty() ? readScene(options.sceneFile) : sim::preset(options.preset);
        if (options.seed) {
            scene.seed = *options.seed;
        }
        return scene;
    } catch (const std::invalid_argument& error) {
        throw InputError("--preset: " + oneLine(error.what()));
    }
}

void requireFrames(const SimulateOptions& options) {
    if (!options.frames) {
        return;
    }
    if (*options.frames == 0) {
        throw InputError("--frames: a batch has 1 frame or more");
    }
    if (*options.frames - 1 > std::numeric_limits<std::uint32_t>::max() - options.frame) {
        throw InputError("--frames: the frame numbers end at 4294967295; choose a smaller --frame or fewer --frames");
    }
}

/// \return "00" for the first of up to 100 frames, "000" for the first of up to 1000, and so on
std::string frameNumberText(std::uint32_t index, std::uint32_t count) {
    const std::size_t digits = std::max<std::size_t>(2, std::to_string(count - 1).size());
    const std::string number = std::to_string(index);
    return std::string(digits - number.size(), '0') + number;
}

bool isNumberedPicture(const std::string& name) {
    const std::string end = ".png";
    for (const std::string start : {"color_", "depth_"}) {
        if (name.size() > start.size() + end.size() && name.rfind(start, 0) == 0 &&
            name.compare(name.size() - end.size(), end.size(), end) == 0) {
            return std::all_of(name.begin() + static_cast<std::ptrdiff_t>(start.size()),
                               name.end() - static_cast<std::ptrdiff_t>(end.size()),
                               [](unsigned char c) { return std::isdigit(c) != 0; });
        }
    }
    return false;
}

/// Removes numbered pictures of an earlier, longer batch, because they would belong to another scene.
void removeOtherNumberedPictures(OutputFiles& outputs, const std::filesystem::path& folder,
                                 const std::set<std::filesystem::path>& written) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (isNumberedPicture(entry.path().filename().string()) && written.count(entry.path().filename()) == 0) {
            outputs.removeStale(entry.path());
        }
    }
}

/// Adds the numbered frames of a batch.
/// \return the part of the closing line that names them
std::string addFrames(OutputFiles& outputs, const std::filesystem::path& folder, const sim::Scene& scene,
                      std::uint32_t first, std::uint32_t count) {
    std::set<std::filesystem::path> written;
    for (std::uint32_t i = 0; i < count; ++i) {
        const sim::Frame frame = sim::render(scene, first + i);
        const std::string end = frameNumberText(i, count) + ".png";
        addPicture(outputs, folder / ("color_" + end), frame.color);
        addPicture(outputs, folder / ("depth_" + end), frame.depth);
        written.insert({"color_" + end, "depth_" + end});
    }
    removeOtherNumberedPictures(outputs, folder, written);
    return ", and " + std::to_string(count) + (count == 1 ? " frame" : " frames") + " from color_" +
           frameNumberText(0, count) + ".png and depth_" + frameNumberText(0, count) + ".png on";
}

int simulate(const SimulateOptions& options) {
    if (options.list) {
        return listPresets();
    }
    const sim::Scene scene = chosenScene(options);
    if (options.folder.empty()) {
        throw InputError("no folder is given for the pictures; add --out DIR");
    }
    requireFrames(options);
    const std::filesystem::path folder(options.folder);
    makeFolder(folder);
    const sim::Frame empty = sim::renderEmpty(scene, options.frame ^ kEmptyFrames);
    const sim::Frame occupied = sim::render(scene, options.frame);
    OutputFiles outputs;
    addPicture(outputs, folder / "empty_color.png", empty.color);
    addPicture(outputs, folder / "empty_depth.png", empty.depth);
    addPicture(outputs, folder / "color.png", occupied.color);
    addPicture(outputs, folder / "depth.png", occupied.depth);
    const sim::Camera& camera = scene.camera;
    outputs.add(folder / "camera.json",
                cameraFileText({camera.fx, camera.fy, camera.cx, camera.cy, camera.width, camera.height}));
    outputs.add(folder / "scene.json", sim::sceneToJson(scene) + "\n");
    outputs.add(folder / "truth.json", truthJson(scene, options.frame));
    const std::string frames =
        options.frames ? addFrames(outputs, folder, scene, options.frame, *options.frames) : std::string();
    outputs.commit();
    std::cout << "Rendered " << (scene.name.empty() ? "the scene" : scene.name) << " into " << folder.string()
              << ": empty_color.png, empty_depth.png, color.png, depth.png, camera.json, truth.json, scene.json"
              << frames << "\n";
    return kSuccess;
}

}  // namespace

Subcommand addSimulateCommand(CLI::App& app) {
    auto options = std::make_shared<SimulateOptions>();
    CLI::App* parser = app.add_subcommand("simulate", "Render a scene with known truth into a folder");
    parser->add_option("--preset", options->preset, "name of a built-in scene; --list shows them")->type_name("NAME");
    parser->add_option("--scene", options->sceneFile, "scene file, JSON")->type_name("FILE");
    parser->add_option("--out", options->folder, "folder for the pictures; made when it is missing")->type_name("DIR");
    parser->add_option("--seed", options->seed, "seed of the noise; without it the scene's own")->type_name("N");
    parser->add_option("--frame", options->frame, "which frame of the scene: another number, other noise (default 0)")
        ->type_name("N");
    parser
        ->add_option("--frames", options->frames,
                     "write a batch as well: color_00.png, depth_00.png and so on of this many frames, from --frame on")
        ->type_name("N");
    parser->add_flag("--list", options->list, "list the built-in scenes and stop");
    parser->footer(
        "Examples:\n"
        "  quorvel simulate --preset parcel --out parcel\n"
        "  quorvel simulate --preset parcel --out parcel --frames 5");
    return {parser, [options] { return simulate(*options); }};
}

}  // namespace quorvel::command
