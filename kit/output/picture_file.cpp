// SPDX-License-Identifier: Apache-2.0
#include "kit/output/picture_file.h"

#include <string>
#include <system_error>
#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "kit/input/input_error.h"
#include "kit/input/muted_errors.h"

namespace quorvel::kit {

namespace {

namespace fs = std::filesystem;

/// The part of the name that chooses the format, such as ".png".
std::string formatEnding(const fs::path& path) {
    const std::string name = path.filename().string();
    if (cv::haveImageWriter(name)) {
        return name.substr(name.rfind('.'));
    }
    if (isWrittenStraight(path)) {
        return ".png";
    }
    throw InputError(path.string() + ": pictures are not written in this format; end the name in .png");
}

std::vector<unsigned char> encoded(const cv::Mat& picture, const std::string& ending, const fs::path& path) {
    std::vector<unsigned char> bytes;
    const MutedErrors muted;
    try {
        if (cv::imencode(ending, picture, bytes)) {
            return bytes;
        }
    } catch (const cv::Exception&) {
        bytes.clear();  // a format that cannot hold the picture's type is reported like any other failure
    }
    throw InputError(path.string() + ": the picture cannot be written in this format; end the name in .png");
}

}  // namespace

void makeFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error || !fs::is_directory(folder)) {
        throw InputError(folder.string() + ": the folder cannot be made; check the path and its permissions");
    }
}

void addPicture(OutputFiles& outputs, const fs::path& path, const cv::Mat& picture) {
    const std::vector<unsigned char> bytes = encoded(picture, formatEnding(path), path);
    outputs.add(path, {bytes.begin(), bytes.end()});
}

}  // namespace quorvel::kit
