// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <istream>
#include <string>
#include <vector>

namespace quorvel::command {

/// Finds the captures under a path. A capture is a folder with para.txt or res.txt in it, or one with the name of a
/// capture (a time stamp) that lost both. Links to folders are not followed, so that a loop cannot trap the walk.
/// \param path a capture, or a tree of captures of any depth
/// \return the capture folders in the order of their names; the path itself when it holds none or cannot be read, so
///         that it is reported as what it is
std::vector<std::string> findCaptures(const std::string& path);

/// \return the lines of the stream that are not empty, without a carriage return at their end
std::vector<std::string> readPathList(std::istream& stream);

}  // namespace quorvel::command
