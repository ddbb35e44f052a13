// SPDX-License-Identifier: Apache-2.0
#include "commands/param_command.h"

#include <iostream>
#include <memory>
#include <optional>

#include <nlohmann/json.hpp>

#include <quorvel/quorvel.h>

#include "commands/exit_code.h"
#include "kit/account/text_format.h"
#include "kit/input/camera_file.h"
#include "kit/input/frame_reader.h"
#include "kit/input/input_error.h"
#include "kit/input/region.h"
#include "kit/input/ruler_params.h"
#include "kit/input/size_text.h"
#include "kit/output/ruler_params_file.h"
#include "kit/report/json_number.h"
#include "ruler/members.h"

namespace quorvel::command {

using namespace kit;

namespace {

using Json = nlohmann::ordered_json;

/// The picture's size as typed: directly, or by a camera file.
struct PictureOptions {
    std::string size;
    std::string camera;
};

struct ShowOptions {
    std::string file;
    PictureOptions picture;
    bool json = false;
};

struct SetOptions {
    std::string file;
    PictureOptions picture;
    std::string calibrationArea;
    std::string detectArea;
    std::optional<float> groundWeight;
};

void addPictureOptions(CLI::App& parser, PictureOptions& options) {
    parser.add_option("--size", options.size, "size of the picture, pixels")->type_name("WxH");
    parser.add_option("--camera", options.camera, "instead of --size: camera file of any kind, for its picture size")
        ->type_name("FILE");
}

/// \return absent when no option names the size
std::optional<cv::Size> pictureSize(const PictureOptions& options) {
    if (!options.size.empty() && !options.camera.empty()) {
        throw InputError("--size and --camera both give the picture's size; keep one of them");
    }
    if (!options.size.empty()) {
        return parseSize(options.size);
    }
    if (!options.camera.empty()) {
        return readCameraFile(options.camera).size();
    }
    return std::nullopt;
}

Json rectangleJson(const cv::Rect& rect) {
    return {{"x", rect.x}, {"y", rect.y}, {"width", rect.width}, {"height", rect.height}};
}

std::string paramsJson(const std::string& file, const RulerParams& params, const std::optional<cv::Size>& picture,
                       const std::vector<std::string>& problems) {
    Json document{{"file", file},
                  {"calibration_area", rectangleJson(params.calibrationArea)},
                  {"detect_area", rectangleJson(params.detectArea)},
                  {"ground_weight", jsonNumber(params.groundWeight)},
                  {"picture", nullptr},
                  {"problems", nullptr}};
    if (picture) {
        document["picture"] = {{"width", picture->width}, {"height", picture->height}};
        document["problems"] = problems;
    }
    // File names may have bytes that are not UTF-8; these are replaced, and the name is not refused.
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string paramsTable(const std::string& file, const RulerParams& params, const std::optional<cv::Size>& picture,
                        const std::vector<std::string>& problems) {
    std::vector<std::pair<std::string, std::string>> rows{{"calibration area", rectangleText(params.calibrationArea)},
                                                          {"detection area", rectangleText(params.detectArea)},
                                                          {"ground weight", shortestText(params.groundWeight)}};
    if (picture) {
        rows.emplace_back("picture", sizeText(*picture) + (problems.empty() ? ", fits" : ", does not fit"));
    }
    std::string text = file + "\n\n" + tableText(rows);
    for (const std::string& problem : problems) {
        text += "\n  Problem: " + problem + "\n";
    }
    return text;
}

int show(const ShowOptions& options) {
    const std::optional<cv::Size> picture = pictureSize(options.picture);
    const RulerParams params = readRulerParams(options.file);
    const std::vector<std::string> problems =
        picture ? rulerParamProblems(params, *picture) : std::vector<std::string>();
    std::cout << (options.json ? paramsJson(options.file, params, picture, problems)
                               : paramsTable(options.file, params, picture, problems));
    return problems.empty() ? kSuccess : kNothingMeasured;
}

/// The area in pixels; for a ratio the region that the library computes from it.
cv::Rect areaFrom(const std::string& text, const std::string& option, cv::Size picture) {
    const Region region = parseRegion(text, option);
    if (const auto* rect = std::get_if<cv::Rect>(&region)) {
        return *rect;
    }
    return internal::centeredRegion(std::get<float>(region), picture.width, picture.height);
}

RulerParams edited(const RulerParams& before, const SetOptions& options, cv::Size picture) {
    RulerParams after = before;
    if (!options.calibrationArea.empty()) {
        after.calibrationArea = areaFrom(options.calibrationArea, "--calibration-area", picture);
    }
    if (!options.detectArea.empty()) {
        after.detectArea = areaFrom(options.detectArea, "--detect-area", picture);
    }
    if (options.groundWeight) {
        after.groundWeight = *options.groundWeight;
    }
    return after;
}

void requireFitting(const RulerParams& params, cv::Size picture, const std::string& file) {
    std::string text;
    for (const std::string& problem : rulerParamProblems(params, picture)) {
        text += (text.empty() ? "" : ", and ") + problem;
    }
    if (!text.empty()) {
        throw InputError(file + ": not written, since " + text + "; give values that fit the picture");
    }
}

/// Refuses calls that would change nothing, or that leave a new file without a value.
void requireValues(const SetOptions& options, bool newFile) {
    const bool area = !options.calibrationArea.empty();
    const bool detect = !options.detectArea.empty();
    const bool weight = options.groundWeight.has_value();
    if (!area && !detect && !weight) {
        throw InputError("nothing to set; add --calibration-area, --detect-area or --ground-weight");
    }
    if (newFile && !(area && detect && weight)) {
        throw InputError(options.file +
                         ": does not exist yet, and a new file needs all of --calibration-area, --detect-area and "
                         "--ground-weight");
    }
}

std::string changeText(const std::optional<std::string>& before, const std::string& after) {
    if (before == after) {
        return after + "  (unchanged)";
    }
    return before.value_or("none") + " -> " + after;
}

template <typename Text>
std::string change(const std::optional<RulerParams>& before, const RulerParams& after, Text text) {
    return changeText(before ? std::optional(text(*before)) : std::nullopt, text(after));
}

int set(const SetOptions& options) {
    const std::optional<cv::Size> picture = pictureSize(options.picture);
    if (!picture) {
        throw InputError("the picture's size is needed to check the areas; add --size WxH or --camera FILE");
    }
    const std::optional<RulerParams> before = readEditableParams(options.file);
    requireValues(options, !before);
    const RulerParams after = edited(before.value_or(RulerParams()), options, *picture);
    requireFitting(after, *picture, options.file);
    replaceRulerParams(options.file, after);
    std::cout << "Written " << options.file << "\n\n"
              << tableText({{"calibration area",
                             change(before, after, [](const auto& p) { return rectangleText(p.calibrationArea); })},
                            {"detection area",
                             change(before, after, [](const auto& p) { return rectangleText(p.detectArea); })},
                            {"ground weight",
                             change(before, after, [](const auto& p) { return shortestText(p.groundWeight); })}});
    return kSuccess;
}

const char* const kSetExample =
    "  quorvel param set line.yml --calibration-area 0.5 --detect-area 160,120,320,240 --ground-weight 0.005"
    " --size 640x480";
const char* const kShowExample = "  quorvel param show line.yml --size 640x480";

CLI::App* addShow(CLI::App& param, ShowOptions& options) {
    CLI::App* parser = param.add_subcommand("show", "Print the file, and whether it fits a picture size");
    parser->add_option("file", options.file, "ruler parameter file")->type_name("FILE")->required();
    addPictureOptions(*parser, options.picture);
    parser->add_flag("--json", options.json, "one JSON object on standard output instead of the table");
    parser->footer(std::string("Exit code 0: fine; 1: does not fit the picture; 2: wrong input.\n"
                               "Example:\n") +
                   kShowExample);
    return parser;
}

CLI::App* addSet(CLI::App& param, SetOptions& options) {
    CLI::App* parser = param.add_subcommand("set", "Change values of the file, or make a new one");
    parser
        ->add_option("file", options.file,
                     "ruler parameter file; the extension .yml, .yaml, .xml or .json is its format")
        ->type_name("FILE")
        ->required();
    parser
        ->add_option("--calibration-area", options.calibrationArea,
                     "where the surface is calibrated: centred share of the picture's width and height, or a rectangle "
                     "in pixels")
        ->type_name("RATIO|X,Y,W,H");
    parser->add_option("--detect-area", options.detectArea, "where an object is measured, in the same form")
        ->type_name("RATIO|X,Y,W,H");
    parser
        ->add_option("--ground-weight", options.groundWeight,
                     "depths beyond (1 - W) times the plane's distance count as ground")
        ->type_name("W");
    addPictureOptions(*parser, options.picture);
    parser->footer(std::string("Values that are not given stay. The areas must lie inside the picture.\n"
                               "Example:\n") +
                   kSetExample);
    return parser;
}

}  // namespace

Subcommand addParamCommand(CLI::App& app) {
    auto showOptions = std::make_shared<ShowOptions>();
    auto setOptions = std::make_shared<SetOptions>();
    CLI::App* parser = app.add_subcommand("param", "Show or edit a ruler parameter file");
    addShow(*parser, *showOptions);
    const CLI::App* setter = addSet(*parser, *setOptions);
    parser->require_subcommand(1);
    parser->footer(std::string("Examples:\n") + kSetExample + "\n" + kShowExample);
    return {parser,
            [showOptions, setOptions, setter] { return setter->parsed() ? set(*setOptions) : show(*showOptions); }};
}

}  // namespace quorvel::command
