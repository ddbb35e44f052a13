// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace quorvel::command {

/// Exit codes of the command; part of its interface, scripts rely on them.
constexpr int kSuccess = 0;
/// The input was right, but nothing was measured or no plane could be fitted.
constexpr int kNothingMeasured = 1;
/// An option, a file or the working folder cannot be used.
constexpr int kWrongInput = 2;

/// Replayed captures have other sizes than recorded.
constexpr int kChanged = 1;
/// Added to the number of the signal that ended a run early, as shells do: 130 after Ctrl-C.
constexpr int kSignalBase = 128;

}  // namespace quorvel::command
