// SPDX-License-Identifier: Apache-2.0
#include "kit/report/json_number.h"

#include <charconv>
#include <cmath>

#include "kit/account/text_format.h"

namespace quorvel::kit {

nlohmann::ordered_json jsonNumber(float value) {
    if (!std::isfinite(value)) {
        return nullptr;
    }
    const std::string text = shortestText(value);
    double decimal = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), decimal);
    return decimal;
}

}  // namespace quorvel::kit
