// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "kit/input/ruler_params.h"

namespace quorvel::kit {

/// Reads the parameter file that is about to be rewritten.
/// \param path .yml, .yaml, .xml or .json, each perhaps followed by .gz; a symbolic link is followed
/// \return absent when there is no file yet
/// \throws InputError when the extension is not that of a format that can be written, when the file is not a parameter
///         file, or when it holds other values too, which would be lost
std::optional<RulerParams> readEditableParams(const std::string& path);

/// Replaces the file in one step. A reader, also one after a crash of the machine, finds the complete old file or the
/// complete new file. The permissions stay; a symbolic link stays a link, and its target is replaced.
/// \throws InputError when the file cannot be written; the old file is then unchanged
void replaceRulerParams(const std::string& path, const RulerParams& params);

}  // namespace quorvel::kit
