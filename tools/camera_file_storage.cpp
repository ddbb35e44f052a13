// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string_view>

#include "camera_formats.h"
#include "input_error.h"
#include "text_format.h"

namespace quorvel::command {

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

/// \return whether something follows the end of the first YAML document
bool goesOn(const std::string& text) {
    constexpr std::string_view kEnd = "\n...";
    std::string lines = text;
    lines.erase(std::remove_if(lines.begin(), lines.end(), [](char c) { return c == ' ' || c == '\t' || c == '\r'; }),
                lines.end());
    const std::size_t end = lines.find(kEnd);
    return end != std::string::npos && lines.find_first_not_of('\n', end + kEnd.size()) != std::string::npos;
}

/// OpenCV's parsers trust a text to be whole and of one piece: in XML that ends within a tag or holds a zero byte they
/// follow a null pointer, and they never get past a list behind the end of a YAML document.
void requireWhole(const std::string& text, const std::string& path) {
    if (text.find('\0') != std::string::npos || (text.front() == '<' && !endsWith(text, "</opencv_storage>"))) {
        throw InputError(path + ": is no valid calibration file (it ends too early); export it again");
    }
    if (goesOn(text)) {
        throw InputError(path + ": is no valid calibration file (it goes on behind its end); export it again");
    }
}

/// \return the matrix; empty when there is none, or when it claims more numbers than follow: OpenCV would take the
///         memory for all of them
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
        throw InputError(path + ": is no valid calibration file (" + oneLine(error.err) + "); export it again");
    } catch (const std::logic_error&) {
        // The parser of YAML takes the text before a colon for a name, also where it has a negative length.
        throw InputError(path + ": is no valid calibration file (it has a name that is none); export it again");
    }
}

}  // namespace quorvel::command
