// SPDX-License-Identifier: Apache-2.0
#include "kit/account/notes.h"

#include <iostream>

namespace quorvel::kit {

std::vector<std::string> cameraNotes(const Camera& camera, const std::string& source) {
    if (!camera.distorted) {
        return {};
    }
    return {source + " gives lens distortion, which is not used; the images should be rectified"};
}

void printNotes(const std::vector<std::string>& notes) {
    for (const std::string& note : notes) {
        std::cerr << "quorvel: note: " << note << '\n';
    }
}

}  // namespace quorvel::kit
