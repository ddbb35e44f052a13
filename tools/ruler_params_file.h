// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "ruler_params.h"

namespace quorvel::command {

/// Reads the parameter file that is about to be rewritten.
/// \param path .yml, .yaml, .xml or .json, each perhaps followed by .gz; a symbolic link is followed
/// \return absent when there is no file yet
/// \throws InputError when the extension names no format that can be written, when the file is no parameter file, or
///         when it holds something besides the parameters, which rewriting would lose
std::optional<RulerParams> readEditableParams(const std::string& path);

/// Replaces the file in one step: whoever reads it meanwhile, or a machine that stops, finds the old file or the new
/// one, never a part. Its permissions stay; a symbolic link stays a link, and its target is replaced.
/// \throws InputError when the file cannot be written; it is then as it was before
void replaceRulerParams(const std::string& path, const RulerParams& params);

}  // namespace quorvel::command
