// SPDX-License-Identifier: Apache-2.0
#include "calibration_files.h"

#include <cmath>
#include <fstream>
#include <iterator>
#include <system_error>

#include "input_error.h"

namespace quorvel::command {

namespace {

std::optional<std::string> readBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file || std::filesystem::is_directory(path)) {
        return std::nullopt;
    }
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

/// \return whether the file is again as it was
bool bringBack(const std::filesystem::path& path, const std::optional<std::string>& bytes) {
    std::error_code ignored;
    if (!bytes) {
        std::filesystem::remove(path, ignored);
        return !std::filesystem::exists(path, ignored);
    }
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << *bytes;
    file.close();
    return static_cast<bool>(file);
}

}  // namespace

CalibrationFiles::CalibrationFiles(const Quorvel& ruler)
    : plane_(std::filesystem::absolute(ruler.calFilePath).lexically_normal()),
      depth_(std::filesystem::absolute(ruler.paramDir + "/depth.tif").lexically_normal()),
      planeBytes_(readBytes(plane_)),
      depthBytes_(readBytes(depth_)),
      folderExisted_(std::filesystem::exists(plane_.parent_path())) {}

void CalibrationFiles::requireWritable() const {
    std::error_code ignored;
    std::filesystem::create_directory(plane_.parent_path(), ignored);
    for (const std::filesystem::path& path : {plane_, depth_}) {
        const bool existed = std::filesystem::exists(path, ignored);
        const bool opened = std::ofstream(path, std::ios::binary | std::ios::app).is_open();
        if (!opened) {
            throw InputError(path.string() +
                             ": cannot be written; check the permissions of the folder, or choose "
                             "another with -C");
        }
        if (!existed) {
            std::filesystem::remove(path, ignored);
        }
    }
}

std::string CalibrationFiles::restore() const {
    const bool planeBack = bringBack(plane_, planeBytes_);
    const bool depthBack = bringBack(depth_, depthBytes_);
    if (!folderExisted_) {
        std::error_code ignored;  // somebody else may have put a file there meanwhile
        std::filesystem::remove(plane_.parent_path(), ignored);
    }
    const std::string folder = plane_.parent_path().string();
    if (!planeBack || !depthBack) {
        return "The files of the failed calibration could not be undone: check " + folder + ".";
    }
    return planeBytes_ ? "The previous calibration in " + folder + " was put back."
                       : "No calibration was left in " + folder + ".";
}

bool CalibrationFiles::hold(const Plane& plane) const {
    // The file keeps six decimals; large offsets are printed from a float exactly.
    constexpr double kRounding = 1e-6;
    std::ifstream file(plane_);
    for (const float expected : {plane.normal[0], plane.normal[1], plane.normal[2], plane.offset}) {
        double stored = 0.0;
        if (!(file >> stored) || std::abs(stored - static_cast<double>(expected)) > kRounding) {
            return false;
        }
    }
    return std::filesystem::exists(depth_);
}

}  // namespace quorvel::command
