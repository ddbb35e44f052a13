// SPDX-License-Identifier: Apache-2.0
#include "kit/input/mode_name.h"

#include <array>
#include <utility>

#include "kit/input/input_error.h"

namespace quorvel::kit {

namespace {

constexpr std::array<std::pair<ProductType, const char*>, 3> kModes{
    {{KIOSK, "kiosk"}, {GROUND_TRACKING, "ground-tracking"}, {GROUND_GROWING, "ground-growing"}}};

}  // namespace

std::string modeName(ProductType mode) {
    for (const auto& [value, name] : kModes) {
        if (value == mode) {
            return name;
        }
    }
    return "kiosk-low-object";
}

ProductType modeFromName(const std::string& name) {
    for (const auto& [value, known] : kModes) {
        if (name == known) {
            return value;
        }
    }
    throw InputError("--mode: there is no mode \"" + name + "\"; choose kiosk, ground-tracking or ground-growing");
}

}  // namespace quorvel::kit
