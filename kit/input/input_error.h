// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>

namespace quorvel::kit {

/// Input the command cannot work with. what() is one line that says what is wrong, where, and what to do.
class InputError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace quorvel::kit
