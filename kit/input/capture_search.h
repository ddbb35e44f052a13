// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <istream>
#include <string>
#include <vector>

namespace quorvel::kit {

/// Finds the captures under a path. A capture is a folder with para.txt or res.txt in it, or one with the name of a
/// capture (a time stamp) without either. Links to folders are not followed, so that the search always ends.
/// \param path a capture, or a tree of captures of any depth
/// \return the capture folders in the order of their names. When there is none, or when the path cannot be read, the
///         path itself, so that the report says what is wrong with it.
std::vector<std::string> findCaptures(const std::string& path);

/// \return the lines of the stream that are not empty, without a carriage return at their end
std::vector<std::string> readPathList(std::istream& stream);

}  // namespace quorvel::kit
