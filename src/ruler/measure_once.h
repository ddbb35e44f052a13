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

/// Empties a record: no corners (their storage is kept), zero sizes, both flags false.
void resetResult(MeasureResult& result);

/// Turns an account that ends with a record into the record: corners and flags of the box when its top face meets the
/// detection area, sizes when it is in view. The height is lowered by the account's `heightLowering`, that of an empty
/// record too.
/// \param[in,out] result reset before
void storeRecord(const MeasureAccount& account, MeasureResult& result);

/// Prints what the measurement of one frame says about why it has no record.
/// \param lines where to; nothing is printed when it is null
/// \param debugMode also print the lines of the debug mode
void printSearch(const MeasureAccount& account, bool debugMode, std::ostream* lines);

/// Prints why a measurement refuses the reference plane, if there is one and it does.
/// \param lines where to; nothing is printed when it is null
void printPlaneRefusal(const Plane& plane, std::ostream* lines);

}  // namespace quorvel::internal
