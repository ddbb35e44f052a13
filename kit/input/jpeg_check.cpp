// SPDX-License-Identifier: Apache-2.0
#include "kit/input/jpeg_check.h"

#include <algorithm>
#include <array>

namespace quorvel::kit {

namespace {

constexpr std::array<unsigned char, 3> kSignature{0xFF, 0xD8, 0xFF};
constexpr std::array<unsigned char, 2> kStartOfScan{0xFF, 0xDA};
constexpr std::array<unsigned char, 2> kEndOfImage{0xFF, 0xD9};

}  // namespace

bool jpegEndsEarly(const std::vector<unsigned char>& bytes) {
    if (bytes.size() < kSignature.size() || !std::equal(kSignature.begin(), kSignature.end(), bytes.begin())) {
        return false;
    }
    // A preview in the header has its own end marker. The picture's end marker comes after the last scan, and the data
    // of a scan contain no markers.
    const auto scan = std::find_end(bytes.begin(), bytes.end(), kStartOfScan.begin(), kStartOfScan.end());
    return std::search(scan, bytes.end(), kEndOfImage.begin(), kEndOfImage.end()) == bytes.end();
}

}  // namespace quorvel::kit
