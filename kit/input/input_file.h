// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

namespace quorvel::kit {

/// Largest text file that is read, bytes. Camera files with all points of a calibration have some 100 kB.
constexpr std::size_t kLargestText = 4'000'000;

/// Largest picture file that is read, bytes: 16384 x 16384 pixels of 16 bits, uncompressed, and their header.
constexpr std::size_t kLargestPicture = 600'000'000;

/// Reads a file, a pipe or a device whole.
/// \param most bytes; a longer file is refused, an endless one too
/// \param advice what to do when there is no such file, for the message
/// \throws InputError with one line that names the path
std::string readInputFile(const std::string& path, std::size_t most, const std::string& advice);

/// Checks a file that the library reads by itself.
/// \throws InputError when something is there that is no regular file, or larger than any file of its kind
void requireOrdinaryFile(const std::string& path);

}  // namespace quorvel::kit
