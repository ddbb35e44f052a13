// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace quorvel::internal {

/// The most that is read of a file, bytes. Ours have some hundred; what is longer is none of them, however long it is.
constexpr std::size_t kLongestText = 65536;

/// Reads a text file, or its first kLongestText bytes; a word that this bound cuts is left out whole.
/// \param path as the platform's narrow strings name it, relative to the working directory
/// \return the text, or nothing when there is no plain file that can be opened: a folder cannot, and a device or a pipe
///         is not tried, since it may never end or never answer
std::optional<std::string> readTextFile(const std::string& path);

/// Reads a text file whole.
/// \return the text, or nothing when readTextFile has none or the file is longer than kLongestText
std::optional<std::string> readWholeTextFile(const std::string& path);

/// Creates a folder whose parent exists, unless something of that name is there already.
void ensureFolder(const std::string& path);

}  // namespace quorvel::internal
