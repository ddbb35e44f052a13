// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <quorvel/quorvel.h>

#include "files/capture_writer.h"

namespace quorvel::internal {

/// What became of a capture.
struct CaptureAccount {
    std::string folder;   ///< "./log/YYYY-MM/YYYY-MM-DD-hh-mm-ss"; empty when it was there already or cannot be made
    bool whole = false;   ///< all files were written; an image that is empty has none
    bool exists = false;  ///< without a folder: it was there already, made by an earlier capture of the same second
};

/// Writes a ruler's state, its last result and its frame into a new folder: Quorvel::saveOfflineData with an account.
CaptureAccount saveCapture(const Quorvel& ruler);

/// \return what a capture keeps of a result
CaptureReading captureReading(const MeasureResult& result);

}  // namespace quorvel::internal
