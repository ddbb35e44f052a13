// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace quorvel::internal {

/// How a file's bytes stand to its content.
enum class FileContent {
    Text,   ///< a line feed becomes the platform's line end
    Binary  ///< as they are
};

/// Writes a file whole or not at all: beside its place first, then, once it is on the disk, into its place in one step.
/// Whoever reads the place, and whoever starts after a kill or a loss of power, finds the old content or the new, never
/// a part. A process that is killed in between may leave the file beside it, "PATH.PROCESS-NUMBER.new", which nothing
/// reads.
/// \param path as the platform's narrow strings name it, relative to the working directory. A symbolic link stays and
///             what it points to is replaced. A folder, device, pipe or write-protected file is left alone.
/// \return whether it was written; else what was there is untouched, and nothing is left beside it
bool writeWholeFile(const std::string& path, std::string_view content, FileContent kind);

}  // namespace quorvel::internal
