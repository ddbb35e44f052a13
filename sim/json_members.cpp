// SPDX-License-Identifier: Apache-2.0
#include "sim/json_members.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

#include "sim/color_text.h"

namespace quorvel::sim {

void refuse(const std::string& where, const std::string& what) {
    throw std::runtime_error(where + ": " + what);
}

std::string shown(const Json& value) {
    constexpr std::size_t kLongest = 60;
    const std::string text = value.dump(-1, ' ', true);
    return text.size() <= kLongest ? text : text.substr(0, kLongest) + "...";
}

Members::Members(const Json& object, std::string where) : object_(object), where_(std::move(where)) {
    if (!object.is_object()) {
        refuse(where_.empty() ? "scene" : where_, "expected an object { ... }, found " + shown(object));
    }
}

std::string Members::at(const std::string& name) const {
    return where_.empty() ? name : where_ + "." + name;
}

const Json* Members::find(const std::string& name) {
    known_.push_back(name);
    const auto found = object_.find(name);
    return found == object_.end() ? nullptr : &*found;
}

void Members::read(const std::string& name, double& value) {
    if (const Json* member = find(name)) {
        if (!member->is_number()) {
            refuse(at(name), "expected a number, found " + shown(*member));
        }
        value = member->get<double>();
    }
}

template <typename Integer>
void Members::readInteger(const std::string& name, Integer& value) {
    const Json* member = find(name);
    if (member == nullptr) {
        return;
    }
    constexpr auto kLow = static_cast<double>(std::numeric_limits<Integer>::min());
    constexpr auto kHigh = static_cast<double>(std::numeric_limits<Integer>::max());
    const bool fits = member->is_number_integer() && member->get<double>() >= kLow && member->get<double>() <= kHigh;
    if (!fits) {
        refuse(at(name), "expected a whole number of at most 32 bits, found " + shown(*member));
    }
    value = member->get<Integer>();
}

void Members::read(const std::string& name, int& value) {
    readInteger(name, value);
}

void Members::read(const std::string& name, std::uint32_t& value) {
    readInteger(name, value);
}

void Members::read(const std::string& name, std::string& value) {
    if (const Json* member = find(name)) {
        if (!member->is_string()) {
            refuse(at(name), "expected a text in quotes, found " + shown(*member));
        }
        value = member->get<std::string>();
    }
}

void Members::read(const std::string& name, cv::Vec3b& value) {
    std::string text = colorToText(value);
    read(name, text);
    if (!colorFromText(text, value)) {
        refuse(at(name), R"(expected a colour written "#rrggbb", found )" + shown(text));
    }
}

void Members::readRequired(const std::string& name, double& value) {
    if (!object_.contains(name)) {
        refuse(at(name), "missing; give a size in mm");
    }
    read(name, value);
}

void Members::finish() const {
    for (const auto& member : object_.items()) {
        if (std::find(known_.begin(), known_.end(), member.key()) == known_.end()) {
            std::string names;
            for (const std::string& name : known_) {
                names += (names.empty() ? "" : ", ") + name;
            }
            refuse(at(member.key()), "unknown member; known here are " + names);
        }
    }
}

}  // namespace quorvel::sim
