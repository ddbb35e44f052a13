// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

namespace quorvel::command {

/// For the library's calibration files, where these must not come into the working folder; removed at the end.
class ScratchFolder {
public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ScratchFolder(ScratchFolder&&) = delete;
    ScratchFolder& operator=(ScratchFolder&&) = delete;

    /// \return the folder's path; the library makes it
    std::string path() const { return path_.string(); }

private:
    std::filesystem::path path_;
};

}  // namespace quorvel::command
