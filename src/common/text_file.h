// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

namespace quorvel::internal {

/// \return whether a file of this name can be opened for reading; a folder cannot
bool canRead(const std::string& path);

/// Reads a whole text file.
/// \param path as the platform's narrow strings name it, relative to the working directory
/// \return the text, or nothing when the file cannot be opened
std::optional<std::string> readTextFile(const std::string& path);

/// Writes a text file in the platform's text mode, replacing what was there.
/// \param path as the platform's narrow strings name it, relative to the working directory
/// \return whether the file could be opened and written
bool writeTextFile(const std::string& path, const std::string& text);

/// Creates a folder whose parent exists, unless something of that name is there already.
void ensureFolder(const std::string& path);

}  // namespace quorvel::internal
