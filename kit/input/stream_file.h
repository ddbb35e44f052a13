// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

/// \file stream_file.h
/// Pipes and devices given as file names, such as /dev/stdin, a named pipe, or the names that a shell passes for <(...)
/// and >(...).

namespace quorvel::kit {

/// \return whether this name, after following links, is something other than a regular file or a folder
bool isStream(const std::filesystem::path& path);

/// Reads a pipe or a device to its end. Waits as long as a writing program has the pipe open; gives up after three
/// seconds when no program opens it.
/// \param most bytes; reading stops after them
/// \return the bytes read, at most one block more than `most`
/// \throws InputError with one line that names the path
std::string readStream(const std::filesystem::path& path, std::size_t most);

/// Writes into a pipe or a device. Waits as long as a reading program has the pipe open; gives up after three seconds
/// when no program opens it.
/// \throws InputError with one line that names the path
void writeStream(const std::filesystem::path& path, const std::string& bytes);

}  // namespace quorvel::kit
