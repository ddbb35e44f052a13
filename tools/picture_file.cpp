// SPDX-License-Identifier: Apache-2.0
#include "picture_file.h"

#include <system_error>

#include <opencv2/imgcodecs.hpp>

#include "input_error.h"

namespace quorvel::command {

void makeFolder(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error || !std::filesystem::is_directory(folder)) {
        throw InputError(folder.string() + ": the folder cannot be made; check the path and its permissions");
    }
}

void writePicture(const std::filesystem::path& path, const cv::Mat& picture) {
    const std::string name = path.string();
    if (!cv::haveImageWriter(name)) {
        throw InputError(name + ": pictures are not written in this format; end the name in .png");
    }
    bool written = false;
    try {
        written = cv::imwrite(name, picture);
    } catch (const cv::Exception&) {
        written = false;  // a format that cannot hold the picture's type is reported like a full disk
    }
    if (!written) {
        throw InputError(name + ": the picture cannot be written; check the folder and its permissions");
    }
}

}  // namespace quorvel::command
