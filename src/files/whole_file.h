// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <opencv2/core.hpp>

namespace quorvel::internal {

/// How a file's bytes stand to its content.
enum class FileContent {
    Text,   ///< a line feed becomes the platform's line end
    Binary  ///< as they are
};

/// Why a file is not written.
enum class WriteProblem {
    None,
    EndlessLinks,  ///< the path is a symbolic link that leads to itself
    Folder,        ///< there is a folder at the path
    Protected,     ///< there is a write-protected file, a device or a pipe at the path
    NotStarted,    ///< no new file can be created in the folder
    NotWhole,      ///< the content does not get onto the disk completely
    NotReplaced    ///< the new file cannot be renamed to the path
};

/// A new file that waits to replace the file at a path. Unless commit() succeeded, the destructor removes the new file.
class StagedFile {
public:
    /// \param path in the platform's encoding, relative to the working directory. A symbolic link stays, and the file
    ///             that it points to is replaced. A folder, device, pipe or write-protected file is not changed.
    explicit StagedFile(std::string path);
    ~StagedFile();
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;
    StagedFile(StagedFile&& other) noexcept;
    StagedFile& operator=(StagedFile&&) = delete;

    /// Writes the content into the new file and waits until it is on the disk. To be called once.
    WriteProblem stage(std::string_view content, FileContent kind);

    /// Renames the new file to the path and gives it the permissions of the old file. To be called once, after stage()
    /// succeeded.
    WriteProblem commit();

    /// \return the path; after stage(), the path at the end of the symbolic links
    const std::string& place() const { return place_; }
    /// \return after NotReplaced, the number of the system's error, for std::system_category()
    int systemError() const { return systemError_; }

private:
    std::string place_;
    std::string beside_;  ///< the new file; empty when there is none to remove
    int systemError_ = 0;
};

/// Removes the new files that processes left beside these paths and that no longer run. Each folder is read once.
void removeLeftovers(const std::vector<std::string>& places);

/// Writes one file, and removes what killed processes left beside it.
/// \return whether the file was written; if not, an old file is unchanged and no new file is left
bool writeWholeFile(const std::string& path, std::string_view content, FileContent kind);

/// Writes an image in the format that its file's extension names, with OpenCV's default parameters, whole or not at
/// all. An image that is empty or does not have two dimensions is not written, and an old file stays.
/// \return whether it was written
/// \throws cv::Exception when OpenCV has no encoder for the image
bool writeImageFile(const std::string& path, const cv::Mat& image);

/// Reads an image. The result is empty when the file cannot be read or when OpenCV refuses the size in its header.
/// \param mode a cv::ImreadModes
cv::Mat readImageFile(const std::string& path, int mode);

}  // namespace quorvel::internal
