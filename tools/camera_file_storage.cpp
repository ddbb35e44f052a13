// SPDX-License-Identifier: Apache-2.0
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

cv::Matx33d cameraMatrix(const cv::FileStorage& storage, const std::string& path) {
    cv::Mat matrix;
    storage["camera_matrix"] >> matrix;
    if (matrix.rows != 3 || matrix.cols != 3 || matrix.channels() != 1) {
        throw InputError(path + ": has no 3 x 3 \"camera_matrix\"; a calibration file gives it with image_width and " +
                         "image_height");
    }
    matrix.convertTo(matrix, CV_64F);
    return matrix;
}

}  // namespace

Camera cameraFromFileStorage(const std::string& text, const std::string& path) {
    try {
        const cv::FileStorage storage(text, cv::FileStorage::READ | cv::FileStorage::MEMORY);
        const cv::Matx33d matrix = cameraMatrix(storage, path);
        cv::Mat distortion;
        storage["distortion_coefficients"] >> distortion;
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
    }
}

}  // namespace quorvel::command
