// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace quorvel::command {

/// Exit codes of the command; part of its interface, scripts rely on them.
constexpr int kSuccess = 0;
/// The input was fine, but there was nothing to measure or no plane to fit.
constexpr int kNothingMeasured = 1;
/// An option, a file or the working folder cannot be used.
constexpr int kWrongInput = 2;

/// Replayed captures measure otherwise than they did.
constexpr int kChanged = 1;
/// Added to the number of the signal that ended a run early, as shells do: 130 after Ctrl-C.
constexpr int kSignalBase = 128;

}  // namespace quorvel::command
