// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>

namespace quorvel::kit {

/// A temporary folder for the library's calibration files, so that they do not go into the working folder. The
/// destructor removes it.
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

}  // namespace quorvel::kit
