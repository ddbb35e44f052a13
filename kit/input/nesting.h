// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace quorvel::kit {

/// Refuses a text whose brackets, tags or indentation nest deeper than any camera or parameter file: the parsers call
/// themselves at every level, and would run out of stack.
/// \param path for the message
/// \throws InputError
void requireShallow(const std::string& text, const std::string& path);

}  // namespace quorvel::kit
