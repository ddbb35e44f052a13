// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ctime>
#include <string>

namespace quorvel::internal {

// What the standard library leaves to the platform. Paths are narrow strings as the platform's own calls take them,
// bytes on Linux and the active code page on Windows, like those of std::fstream and OpenCV; std::filesystem::path
// would read them otherwise there.

/// \return whether a file, a folder or anything else of this name exists
bool pathExists(const std::string& path);

/// \return whether a folder of this name exists
bool isFolder(const std::string& path);

/// Creates a folder whose parent exists.
/// \return whether it was created; false also when something of that name was there already
bool makeFolder(const std::string& path);

/// \param time seconds since the epoch
/// \return the time in the local time zone as it is set at this moment; safe on several threads, unlike std::localtime
std::tm localTime(std::time_t time);

}  // namespace quorvel::internal
