// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace quorvel::internal {

/// The most that is read of a text file, bytes. The library's own files have some hundred.
constexpr std::size_t kLongestText = 65536;

/// Reads a text file, or its first kLongestText bytes. A word that would be cut at this bound is left out.
/// \param path in the platform's encoding, relative to the working directory
/// \return the text; nothing when the file cannot be opened or is not a regular file. Devices and pipes are not opened,
///         because they may never end or never answer.
std::optional<std::string> readTextFile(const std::string& path);

/// Reads a text file whole.
/// \return the text; nothing when readTextFile() gives nothing or the file is longer than kLongestText
std::optional<std::string> readWholeTextFile(const std::string& path);

/// Creates a folder whose parent exists, unless something of that name already exists.
void ensureFolder(const std::string& path);

}  // namespace quorvel::internal
