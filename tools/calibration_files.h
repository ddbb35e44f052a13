// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include <quorvel/quorvel.h>

#include "plane.h"

namespace quorvel::command {

/// What the parameter folder held before a calibration. The library writes its files even when the fit failed;
/// with this the command brings back what was there.
class CalibrationFiles {
public:
    /// Remembers the calibration file and the depth image of the last calibration, byte for byte.
    explicit CalibrationFiles(const Quorvel& ruler);

    /// Checks that both files can be written and replaced; makes the folder when it is missing.
    /// \throws InputError when they cannot
    void requireWritable() const;

    /// Writes back the remembered files and removes those that were not there, the folder included.
    /// \return one sentence that says what was done
    std::string restore() const;

    /// \param plane what the ruler now holds
    /// \param depth image that it was fitted to, CV_16UC1, mm
    /// \return whether the files hold both
    bool hold(const Plane& plane, const cv::Mat& depth) const;

    /// \return absolute path of the calibration file
    std::filesystem::path planePath() const { return plane_; }
    /// \return absolute path of the depth image of the last calibration
    std::filesystem::path depthPath() const { return depth_; }

private:
    std::filesystem::path plane_;
    std::filesystem::path depth_;
    std::optional<std::string> planeBytes_;
    std::optional<std::string> depthBytes_;
    bool folderExisted_;
};

}  // namespace quorvel::command
