// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ostream>

namespace quorvel::command {

/// Makes sure that the first three descriptors are taken, so that no file that is opened later becomes the standard
/// output or the standard error of a run that was started without one. Writing to such an output fails.
void claimStandardStreams();

/// \throws InputError when something written to standard output did not go through
void requireWritten(std::ostream& output);

}  // namespace quorvel::command
