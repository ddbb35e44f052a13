// SPDX-License-Identifier: Apache-2.0
#include "calibration_files.h"

#include <cmath>
#include <fstream>
#include <system_error>

#include "frame_reader.h"
#include "input_error.h"
#include "input_file.h"
#include "output_file.h"

namespace quorvel::command {

namespace {

namespace fs = std::filesystem;

std::optional<std::string> readBytes(const fs::path& path) {
    std::error_code ignored;
    if (!fs::exists(path, ignored) || fs::is_directory(path, ignored)) {
        return std::nullopt;
    }
    return readInputFile(path.string(), kLargestPicture, "check its permissions");
}

/// \return whether the file is again as it was
bool bringBack(const fs::path& path, const std::optional<std::string>& bytes) {
    std::error_code ignored;
    try {
        if (!bytes) {
            fs::remove(path, ignored);
            return !fs::exists(path, ignored);
        }
        if (readBytes(path) != bytes) {
            writeOutputFile(path, *bytes);
        }
        return true;
    } catch (const InputError&) {
        return false;
    }
}

/// A full disk leaves a cut picture, or that of an earlier calibration.
bool holdsPicture(const fs::path& path, const cv::Mat& depth) {
    try {
        const cv::Mat stored = readMillimetres(path.string());
        return stored.size() == depth.size() && cv::norm(stored, depth, cv::NORM_INF) == 0.0;
    } catch (const InputError&) {
        return false;
    }
}

}  // namespace

CalibrationFiles::CalibrationFiles(const Quorvel& ruler)
    : plane_(fs::absolute(ruler.calFilePath).lexically_normal()),
      depth_(fs::absolute(ruler.paramDir + "/depth.tif").lexically_normal()),
      planeBytes_(readBytes(plane_)),
      depthBytes_(readBytes(depth_)),
      folderExisted_(fs::exists(plane_.parent_path())) {}

void CalibrationFiles::requireWritable() const {
    std::error_code ignored;
    fs::create_directory(plane_.parent_path(), ignored);
    for (const fs::path& path : {plane_, depth_}) {
        requireOrdinaryFile(path.string());
        command::requireWritable(path);
    }
}

std::string CalibrationFiles::restore() const {
    const bool planeBack = bringBack(plane_, planeBytes_);
    const bool depthBack = bringBack(depth_, depthBytes_);
    if (!folderExisted_) {
        std::error_code ignored;  // somebody else may have put a file there meanwhile
        fs::remove(plane_.parent_path(), ignored);
    }
    const std::string folder = plane_.parent_path().string();
    if (!planeBack || !depthBack) {
        return "The files of the failed calibration could not be undone: check " + folder + ".";
    }
    return planeBytes_ ? "The previous calibration in " + folder + " was put back."
                       : "No calibration was left in " + folder + ".";
}

bool CalibrationFiles::hold(const Plane& plane, const cv::Mat& depth) const {
    // The file keeps six decimals; large offsets are printed from a float exactly.
    constexpr double kRounding = 1e-6;
    std::ifstream file(plane_);
    for (const float expected : {plane.normal[0], plane.normal[1], plane.normal[2], plane.offset}) {
        double stored = 0.0;
        if (!(file >> stored) || std::abs(stored - static_cast<double>(expected)) > kRounding) {
            return false;
        }
    }
    return holdsPicture(depth_, depth);
}

}  // namespace quorvel::command
