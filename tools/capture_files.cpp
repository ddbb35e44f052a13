// SPDX-License-Identifier: Apache-2.0
#include "capture_files.h"

#include <charconv>
#include <sstream>
#include <string>
#include <system_error>

#include "input_error.h"
#include "input_file.h"

namespace quorvel::command {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBoxCorners = 8;

/// Reads one value after the other from a text file of the library. Its numbers have a decimal point in every locale,
/// and may be "nan" or "inf", which a stream would not read.
class ValueFile {
public:
    explicit ValueFile(const fs::path& path) : path_(path.string()) {
        std::error_code ignored;
        const std::string advice = "copy the whole capture folder";
        if (!fs::is_regular_file(path, ignored)) {
            throw InputError(path_ + ": there is no such readable file; " + advice);
        }
        text_.str(readInputFile(path_, kLargestText, advice));
    }

    /// \param name of the value, for the message
    template <typename Number>
    Number next(const std::string& name) {
        std::string word;
        text_ >> word;
        Number number{};
        const char* const end = word.data() + word.size();
        const std::from_chars_result outcome = std::from_chars(word.data(), end, number);
        if (outcome.ec != std::errc() || outcome.ptr != end) {
            throw InputError(path_ + ": the " + name + (word.empty() ? " is missing" : " is \"" + word + "\"") +
                             "; the file is cut short or was edited");
        }
        return number;
    }

    bool atEnd() { return (text_ >> std::ws).eof(); }

private:
    std::string path_;
    std::stringstream text_;
};

void readParameters(const fs::path& path, Capture& capture) {
    ValueFile file(path);
    Camera& camera = capture.camera;
    capture.downScale = file.next<int>("down-scale factor");
    capture.minObjectHeight = file.next<float>("minimum object height");
    camera.cx = file.next<float>("principal point's column");
    camera.cy = file.next<float>("principal point's row");
    camera.fx = file.next<float>("focal length along x");
    camera.fy = file.next<float>("focal length along y");
    capture.invFx = file.next<float>("inverse focal length along x");
    capture.invFy = file.next<float>("inverse focal length along y");
    for (int axis = 0; axis < 3; ++axis) {
        capture.plane.normal[axis] = file.next<float>("plane's normal");
    }
    capture.plane.offset = file.next<float>("plane's distance");
    camera.width = file.next<int>("frame width");
    camera.height = file.next<int>("frame height");
    if (capture.downScale <= 0 || camera.width < capture.downScale || camera.height < capture.downScale) {
        throw InputError(path.string() + ": a frame of " + std::to_string(camera.width) + " x " +
                         std::to_string(camera.height) + " cannot be scaled down by " +
                         std::to_string(capture.downScale) + "; the file was edited, or the ruler not configured");
    }
}

RecordedResult readResult(const fs::path& path) {
    ValueFile file(path);
    RecordedResult result;
    result.width = file.next<float>("width");
    result.length = file.next<float>("length");
    result.height = file.next<float>("height");
    while (!file.atEnd() && result.corners.size() < kBoxCorners) {
        const auto x = file.next<float>("corner's column");
        const auto y = file.next<float>("corner's row");
        result.corners.emplace_back(x, y);
    }
    if (!file.atEnd() || (!result.corners.empty() && result.corners.size() != kBoxCorners)) {
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
    const cv::Size size = capture.camera.size();
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
    readParameters(folder / "para.txt", capture);
    capture.recorded = readResult(folder / "res.txt");
    capture.frame = readCapturedFrame(folder, capture);
    return capture;
}

}  // namespace quorvel::command
