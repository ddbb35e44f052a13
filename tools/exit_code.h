// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace quorvel::command {

/// Exit codes of the command; part of its interface, scripts rely on them.
constexpr int kSuccess = 0;
/// The input was fine, but there was nothing to measure or no plane to fit.
constexpr int kNothingMeasured = 1;
/// An option, a file or the working folder cannot be used.
constexpr int kWrongInput = 2;

}  // namespace quorvel::command
