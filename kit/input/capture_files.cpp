// SPDX-License-Identifier: Apache-2.0
#include "kit/input/capture_files.h"

#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "files/text_file.h"
#include "kit/input/camera.h"
#include "kit/input/input_error.h"
#include "kit/input/input_file.h"

namespace quorvel::kit {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBoxCorners = 8;
const char* const kAdvice = "copy the whole capture folder";

/// \param found the word in the value's place; empty at the end of the file
[[noreturn]] void refuseValue(const fs::path& path, const std::string& name, const std::string& found) {
    throw InputError(path.string() + ": the " + name + (found.empty() ? " is missing" : " is \"" + found + "\"") +
                     "; the file is cut short or was edited");
}

[[noreturn]] void refuseFile(const fs::path& path) {
    throw InputError(path.string() + ": there is no such readable file; " + kAdvice);
}

void requireFile(const fs::path& path) {
    std::error_code ignored;
    if (!fs::is_regular_file(path, ignored)) {
        refuseFile(path);
    }
}

internal::CaptureParameters readParameters(const fs::path& path) {
    requireFile(path);
    internal::CaptureProblem problem;
    const std::optional<internal::CaptureParameters> parameters =
        internal::readCaptureParameters(path.string(), &problem);
    if (!parameters && !problem.opened) {
        refuseFile(path);
    }
    if (!parameters) {
        refuseValue(path, problem.field, problem.found);
    }
    const cv::Size size(parameters->imageWidth, parameters->imageHeight);
    if (parameters->downScale <= 0 || size.width < parameters->downScale || size.height < parameters->downScale) {
        throw InputError(path.string() + ": a frame of " + std::to_string(size.width) + " x " +
                         std::to_string(size.height) + " cannot be scaled down by " +
                         std::to_string(parameters->downScale) + "; the file was edited, or the ruler not configured");
    }
    return *parameters;
}

/// Reads the values of a res.txt one after the other.
class ResultReader {
public:
    ResultReader(fs::path path, const std::string& text) : path_(std::move(path)), reader_(text) {}

    /// \param name of the value, for the message
    float next(const char* name) {
        float value = 0.0F;
        if (!reader_.read(value)) {
            refuseValue(path_, name, reader_.nextWord());
        }
        return value;
    }

    bool atEnd() const { return reader_.atEnd(); }

private:
    fs::path path_;
    internal::DecimalReader reader_;
};

RecordedResult readResult(const fs::path& path) {
    requireFile(path);
    const std::string text = readInputFile(path.string(), kLargestText, kAdvice);
    ResultReader reader(path, text);
    RecordedResult result;
    result.width = reader.next("width");
    result.length = reader.next("length");
    result.height = reader.next("height");
    while (!reader.atEnd() && result.corners.size() < kBoxCorners) {
        const float x = reader.next("corner's column");
        const float y = reader.next("corner's row");
        result.corners.emplace_back(x, y);
    }
    if (!reader.atEnd() || (!result.corners.empty() && result.corners.size() != kBoxCorners)) {
        throw InputError(path.string() + ": a box has eight corners or none; the file is cut short or was edited");
    }
    return result;
}

bool isThere(const fs::path& path) {
    std::error_code ignored;
    return fs::exists(path, ignored);
}

std::optional<FramePair> readCapturedFrame(const fs::path& folder, const Capture& capture) {
    const fs::path colorPath = folder / "color.png";
    const fs::path depthPath = folder / "depth.tif";
    if (!isThere(colorPath) && !isThere(depthPath) && capture.recorded.corners.empty()) {
        return std::nullopt;
    }
    FramePair frame{readColor(colorPath.string()), readMillimetres(depthPath.string())};
    const cv::Size size(capture.parameters.imageWidth, capture.parameters.imageHeight);
    if (frame.color.size() != size || frame.depth.size() != size) {
        throw InputError(folder.string() + ": color.png is " + sizeText(frame.color.size()) + ", depth.tif " +
                         sizeText(frame.depth.size()) + " and the frame of para.txt " + sizeText(size) +
                         "; the files are of different captures");
    }
    return frame;
}

}  // namespace

Capture readCapture(const fs::path& folder) {
    Capture capture;
    capture.parameters = readParameters(folder / "para.txt");
    capture.recorded = readResult(folder / "res.txt");
    capture.frame = readCapturedFrame(folder, capture);
    return capture;
}

}  // namespace quorvel::kit
