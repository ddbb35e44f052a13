// SPDX-License-Identifier: Apache-2.0
#include "simulate_command.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>

#include "camera_file.h"
#include "exit_code.h"
#include "input_error.h"
#include "picture_file.h"
#include "sim/presets.h"
#include "sim/render.h"
#include "sim/scene_json.h"
#include "text_format.h"
#include "truth_json.h"

namespace quorvel::command {

namespace {

/// The empty frame is drawn from the far end of the frame numbers, so that its noise is that of no occupied frame.
constexpr std::uint32_t kEmptyFrames = 0x80000000U;

struct SimulateOptions {
    std::string sceneFile;
    std::string preset;
    std::string folder;
    std::optional<std::uint32_t> seed;
    std::uint32_t frame = 0;
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

sim::Scene chosenScene(const SimulateOptions& options) {
    if (options.sceneFile.empty() == options.preset.empty()) {
        throw InputError(options.preset.empty()
                             ? "no scene is given; add --preset NAME (--list shows them) or --scene FILE"
                             : "--scene and --preset both give a scene; keep one of them");
    }
    try {
        sim::Scene scene = options.preset.empty() ? sim::readScene(options.sceneFile) : sim::preset(options.preset);
        if (options.seed) {
            scene.seed = *options.seed;
        }
        return scene;
    } catch (const std::invalid_argument& error) {
        throw InputError("--preset: " + oneLine(error.what()));
    } catch (const std::runtime_error& error) {
        throw InputError("--scene: " + oneLine(error.what()));
    }
}

void writeText(const std::filesystem::path& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) {
        throw InputError(path.string() + ": cannot be written; check the folder and its permissions");
    }
}

int simulate(const SimulateOptions& options) {
    if (options.list) {
        return listPresets();
    }
    const sim::Scene scene = chosenScene(options);
    if (options.folder.empty()) {
        throw InputError("no folder is given for the pictures; add --out DIR");
    }
    const std::filesystem::path folder(options.folder);
    makeFolder(folder);
    const sim::Frame empty = sim::renderEmpty(scene, options.frame ^ kEmptyFrames);
    const sim::Frame occupied = sim::render(scene, options.frame);
    writePicture(folder / "empty_color.png", empty.color);
    writePicture(folder / "empty_depth.png", empty.depth);
    writePicture(folder / "color.png", occupied.color);
    writePicture(folder / "depth.png", occupied.depth);
    const sim::Camera& camera = scene.camera;
    writeCameraFile((folder / "camera.json").string(),
                    {camera.fx, camera.fy, camera.cx, camera.cy, camera.width, camera.height});
    writeText(folder / "scene.json", sim::sceneToJson(scene) + "\n");
    writeText(folder / "truth.json", truthJson(scene, options.frame));
    std::cout << "Rendered " << (scene.name.empty() ? "the scene" : scene.name) << " into " << folder.string()
              << ": empty_color.png, empty_depth.png, color.png, depth.png, camera.json, truth.json, scene.json\n";
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
    parser->add_flag("--list", options->list, "list the built-in scenes and stop");
    parser->footer("Example:\n  quorvel simulate --preset parcel --out parcel");
    return {parser, [options] { return simulate(*options); }};
}

}  // namespace quorvel::command
