// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string_view>

#include "kit/account/text_format.h"
#include "kit/input/camera_formats.h"
#include "kit/input/input_error.h"

namespace quorvel::kit {

namespace {

int size(const cv::FileStorage& storage, const std::string& key, const std::string& path) {
    const cv::FileNode node = storage[key];
    if (!node.isInt()) {
        throw InputError(path + ": has no whole number \"" + key + "\"; a calibration file gives image_width and " +
                         "image_height beside camera_matrix");
    }
    return static_cast<int>(node);
}

bool endsWith(const std::string& text, std::string_view end) {
    const std::size_t length = text.find_last_not_of(" \t\r\n") + 1;
    return length >= end.size() && text.compare(length - end.size(), end.size(), end) == 0;
}

/// \return whether the text continues after the end of the first YAML document
bool goesOn(const std::string& text) {
    constexpr std::string_view kEnd = "\n...";
    std::string lines = text;
    lines.erase(std::remove_if(lines.begin(), lines.end(), [](char c) { return c == ' ' || c == '\t' || c == '\r'; }),
                lines.end());
    const std::size_t end = lines.find(kEnd);
    return end != std::string::npos && lines.find_first_not_of('\n', end + kEnd.size()) != std::string::npos;
}

/// Refuses texts that OpenCV's parsers cannot handle. In XML that ends within a tag or contains a zero byte they use a
/// null pointer. At a list after the end of a YAML document they run without end.
void requireWhole(const std::string& text, const std::string& path) {
    if (text.find('\0') != std::string::npos || (text.front() == '<' && !endsWith(text, "</opencv_storage>"))) {
        throw InputError(path + ": is not a valid calibration file (it ends too early); export it again");
    }
    if (goesOn(text)) {
        throw InputError(path + ": is not a valid calibration file (it continues after its end); export it again");
    }
}

/// \return the matrix; empty when there is no matrix, or when its header claims more numbers than follow: OpenCV would
///         allocate memory for all of them
cv::Mat readMatrix(const cv::FileStorage& storage, const std::string& key) {
    const cv::FileNode node = storage[key];
    cv::Mat matrix;
    if (node.isMap() && node["rows"].isInt() && node["cols"].isInt()) {
        const double claimed = static_cast<double>(static_cast<int>(node["rows"])) * static_cast<int>(node["cols"]);
        if (claimed > 0.0 && claimed <= static_cast<double>(node["data"].size())) {
            node >> matrix;
        }
    }
    return matrix;
}

cv::Matx33d cameraMatrix(const cv::FileStorage& storage, const std::string& path) {
    cv::Mat matrix = readMatrix(storage, "camera_matrix");
    if (matrix.rows != 3 || matrix.cols != 3 || matrix.channels() != 1) {
        throw InputError(path + ": has no 3 x 3 \"camera_matrix\"; a calibration file gives it with image_width and " +
                         "image_height");
    }
    matrix.convertTo(matrix, CV_64F);
    return matrix;
}

}  // namespace

Camera cameraFromFileStorage(const std::string& text, const std::string& path) {
    requireWhole(text, path);
    try {
        const cv::FileStorage storage(text, cv::FileStorage::READ | cv::FileStorage::MEMORY);
        const cv::Matx33d matrix = cameraMatrix(storage, path);
        const cv::Mat distortion = readMatrix(storage, "distortion_coefficients");
        Camera camera;
        camera.fx = matrix(0, 0);
        camera.fy = matrix(1, 1);
        camera.cx = matrix(0, 2);
        camera.cy = matrix(1, 2);
        camera.width = size(storage, "image_width", path);
        camera.height = size(storage, "image_height", path);
        camera.distorted = !distortion.empty() && cv::countNonZero(distortion.reshape(1)) > 0;
        return camera;
    } catch (const cv::Exception& error) {
        throw InputError(path + ": is not a valid calibration file (" + oneLine(error.err) + "); export it again");
    } catch (const std::logic_error&) {
        // The YAML parser takes the text before a colon as a name, and raises this when the colon comes first.
        throw InputError(path + ": is not a valid calibration file (it has a value without a name); export it again");
    }
}

}  // namespace quorvel::kit
