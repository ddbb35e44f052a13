// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>
#include <optional>

#include <quorvel/quorvel.h>

#include "measure/account.h"
#include "measure/object_chain.h"

namespace quorvel::internal {

/// \return what the ruler's members say about measuring a frame
MeasureSettings measureSettings(const Quorvel& ruler);

/// Measures the frame that a ruler holds, and keeps the record in `result`: Quorvel::measureOnce with an account in
/// place of a status.
/// \param lines where the lines of the measurement go; nothing is printed when it is null
/// \return the account; nothing in a mode that measures nothing
std::optional<MeasureAccount> measureSingleShot(Quorvel& ruler, const AccountDetail& detail, std::ostream* lines);

}  // namespace quorvel::internal
