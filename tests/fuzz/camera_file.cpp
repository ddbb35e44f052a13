// SPDX-License-Identifier: Apache-2.0
// Any bytes as the files and options that the command reads. The first byte chooses the reader. Unusable input is
// refused with one line; no other exception may leave a reader.
#include "kit/input/camera_file.h"

#include <array>
#include <cmath>
#include <filesystem>
#include <stdexcept>
#include <string>

#include <opencv2/imgcodecs.hpp>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "kit/input/capture_files.h"
#include "kit/input/frame_reader.h"
#include "kit/input/input_error.h"
#include "kit/input/numbers.h"
#include "kit/input/region.h"
#include "kit/input/size_text.h"
#include "kit/output/ruler_params_file.h"
#include "sim/scene_json.h"
#include "support/same_bits.h"

namespace quorvel::fuzz {

namespace {

using namespace kit;

/// A refusal is one line for the user's terminal.
void requireOneLine(const InputError& error) {
    const std::string line = error.what();
    require(!line.empty() && line.find('\n') == std::string::npos, "a refusal is no line: " + line);
}

void readCamera(Input& input) {
    writeFile("camera", input.rest());
    Camera camera;
    try {
        camera = readCameraFile("camera");
    } catch (const InputError& error) {
        requireOneLine(error);
        return;
    }
    require(std::isfinite(camera.fx) && camera.fx > 0.0 && std::isfinite(camera.fy) && camera.fy > 0.0 &&
                std::isfinite(camera.cx) && std::isfinite(camera.cy) && camera.width > 0 && camera.height > 0,
            "a camera that cannot be was read");
    writeFile("written.json", cameraFileText(camera));
    const Camera again = readCameraFile("written.json");
    require(again.fx == camera.fx && again.fy == camera.fy && again.cx == camera.cx && again.cy == camera.cy &&
                again.size() == camera.size(),
            "a camera was not read back as it was written");
}

void readDepthImage(Input& input) {
    const float scale = input.below(4) == 0 ? input.anyReal() : 1.0F;
    writeFile("depth", input.rest());
    try {
        const cv::Mat depth = readDepth("depth", static_cast<double>(scale));
        require(depth.type() == CV_16UC1 && !depth.empty(), "a depth image of another type was read");
    } catch (const InputError& error) {
        requireOneLine(error);
    }
}

void readColorImage(Input& input) {
    writeFile("color", input.rest());
    try {
        const cv::Mat color = readColor("color");
        require(color.type() == CV_8UC3 && !color.empty(), "a colour image of another type was read");
    } catch (const InputError& error) {
        requireOneLine(error);
    }
}

void makeCaptureImages() {
    const cv::Mat color(24, 32, CV_8UC3, cv::Scalar::all(128));
    const cv::Mat depth(24, 32, CV_16UC1, cv::Scalar(1000));
    require(cv::imwrite("capture/color.png", color) && cv::imwrite("capture/depth.tif", depth),
            "the capture's images cannot be written");
}

/// The two text files of a capture, divided at a zero byte.
void readStoredCapture(Input& input) {
    if (std::filesystem::create_directory("capture")) {
        makeCaptureImages();
    }
    const std::string text = input.rest();
    const std::size_t end = text.find('\0');
    writeFile("capture/para.txt", text.substr(0, end));
    writeFile("capture/res.txt", end == std::string::npos ? "1.0\n2.0\n3.0\n" : text.substr(end + 1));
    try {
        const Capture capture = readCapture("capture");
        require(capture.recorded.corners.empty() || capture.recorded.corners.size() == 8, "a box of some corners");
        require(capture.frame && capture.frame->depth.size() ==
                                     cv::Size(capture.parameters.imageWidth, capture.parameters.imageHeight),
                "a frame of another size");
    } catch (const InputError& error) {
        requireOneLine(error);
    }
}

void readOptions(Input& input) {
    const std::string text = input.rest();
    try {
        const Region region = parseRegion(text, "--roi");
        const auto* rect = std::get_if<cv::Rect>(&region);
        require(rect == nullptr || (rect->width > 0 && rect->height > 0), "an empty region was read");
        const auto* ratio = std::get_if<float>(&region);
        require(ratio == nullptr || (*ratio >= 0.0F && *ratio <= 1.0F), "a ratio out of range was read");
        requireInside(region, {640, 480}, "--roi");
        require(rect == nullptr || (cv::Rect(0, 0, 640, 480) & *rect) == *rect, "a region outside was let through");
    } catch (const InputError&) {  // an option's text comes from the command line and may be of several lines
    }
    try {
        const cv::Size size = parseSize(text);
        require(size.width > 0 && size.height > 0, "an empty size was read");
    } catch (const InputError&) {
    }
    try {
        for (const double number : parseNumbers(text, "--intrinsics")) {
            require(std::isfinite(number), "a number that is not finite was read");
        }
    } catch (const InputError&) {
    }
}

void readParameters(Input& input) {
    const std::array<std::string, 4> names{"p.yml", "p.xml", "p.json", "p.yml.gz"};
    const std::string path = input.oneOf(names);
    writeFile(path, input.rest());
    try {
        if (const std::optional<RulerParams> params = readEditableParams(path)) {
            replaceRulerParams(path, *params);
            const std::optional<RulerParams> again = readEditableParams(path);
            require(again && again->calibrationArea == params->calibrationArea &&
                        again->detectArea == params->detectArea &&
                        test::sameBits(again->groundWeight, params->groundWeight),
                    "parameters were not read back as they were written");
        }
    } catch (const InputError& error) {
        requireOneLine(error);
    }
    std::filesystem::remove(path);
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        require(entry.path().extension() != ".new", "a temporary file was left");
    }
}

void readScene(Input& input) {
    try {
        const sim::Scene scene = sim::sceneFromJson(input.rest());
        const std::string text = sim::sceneToJson(scene);
        require(sim::sceneToJson(sim::sceneFromJson(text)) == text, "a scene is written differently once it was read");
    } catch (const std::runtime_error&) {  // what the simulator promises
    }
}

constexpr std::array<void (*)(Input&), 7> kReaders{readCamera,  readDepthImage, readColorImage, readStoredCapture,
                                                   readOptions, readParameters, readScene};

}  // namespace

}  // namespace quorvel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return quorvel::fuzz::workThrough(quorvel::fuzz::kReaders, data, size);
}
