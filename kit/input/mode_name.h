// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include <quorvel/quorvel.h>

namespace quorvel::kit {

/// \return the name the command uses for a mode: "kiosk", "ground-tracking", "ground-growing"
std::string modeName(ProductType mode);

/// \param name value of --mode
/// \return the mode
/// \throws InputError when there is no such mode
ProductType modeFromName(const std::string& name);

}  // namespace quorvel::kit
