// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>

namespace quorvel::kit {

/// \return the value as the shortest decimal that reads back as the same float (241.3 rather than 241.30000305175781);
///         null when it is not finite, which JSON cannot hold
nlohmann::ordered_json jsonNumber(float value);

}  // namespace quorvel::kit
