// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

/// \file stream_file.h
/// Pipes and devices named as files, such as /dev/stdin, a named pipe, or what a shell makes of <(...) and >(...).

namespace quorvel::command {

/// \return whether something other than a regular file or a folder is of this name, links followed
bool isStream(const std::filesystem::path& path);

/// Reads a pipe or a device to its end. A program that writes into the pipe may take its time; one that never opens it
/// is given up after three seconds.
/// \param most bytes; reading stops beyond them
/// \return what was read, at most a block more than `most`
/// \throws InputError with one line that names the path
std::string readStream(const std::filesystem::path& path, std::size_t most);

/// Writes into a pipe or a device. A program that reads the pipe may take its time; one that never opens it is given up
/// after three seconds.
/// \throws InputError with one line that names the path
void writeStream(const std::filesystem::path& path, const std::string& bytes);

}  // namespace quorvel::command
