// SPDX-License-Identifier: Apache-2.0
#include "kit/input/png_check.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace quorvel::kit {

namespace {

constexpr std::array<unsigned char, 8> kSignature{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
/// Length, type and CRC of a chunk, four bytes each.
constexpr std::size_t kChunkFrame = 12;

std::uint32_t bigEndian(const std::vector<unsigned char>& bytes, std::size_t at) {
    return (std::uint32_t{bytes[at]} << 24U) | (std::uint32_t{bytes[at + 1]} << 16U) |
           (std::uint32_t{bytes[at + 2]} << 8U) | std::uint32_t{bytes[at + 3]};
}

std::array<std::uint32_t, 256> crcTable() {
    constexpr std::uint32_t kReversedPolynomial = 0xEDB88320U;
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t n = 0; n < table.size(); ++n) {
        std::uint32_t c = n;
        for (int bit = 0; bit < 8; ++bit) {
            c = (c & 1U) != 0U ? kReversedPolynomial ^ (c >> 1U) : c >> 1U;
        }
        table.at(n) = c;
    }
    return table;
}

std::uint32_t crc32(const std::vector<unsigned char>& bytes, std::size_t begin, std::size_t end) {
    static const std::array<std::uint32_t, 256> kTable = crcTable();
    std::uint32_t crc = 0xFFFFFFFFU;
    for (std::size_t i = begin; i < end; ++i) {
        crc = kTable[(crc ^ bytes[i]) & 0xFFU] ^ (crc >> 8U);
    }
    return ~crc;
}

}  // namespace

std::string pngDamage(const std::vector<unsigned char>& bytes) {
    if (bytes.size() < kSignature.size() || !std::equal(kSignature.begin(), kSignature.end(), bytes.begin())) {
        return {};
    }
    std::size_t at = kSignature.size();
    while (true) {
        if (bytes.size() - at < kChunkFrame) {
            return "the file ends early, at byte " + std::to_string(bytes.size());
        }
        const std::size_t length = bigEndian(bytes, at);
        const std::string type(bytes.begin() + static_cast<std::ptrdiff_t>(at + 4),
                               bytes.begin() + static_cast<std::ptrdiff_t>(at + 8));
        if (bytes.size() - at - kChunkFrame < length) {
            return "the file ends early, at byte " + std::to_string(bytes.size());
        }
        if (crc32(bytes, at + 4, at + 8 + length) != bigEndian(bytes, at + 8 + length)) {
            return "the chunk at byte " + std::to_string(at) + " fails its checksum";
        }
        if (type == "IEND") {
            return {};
        }
        at += kChunkFrame + length;
    }
}

}  // namespace quorvel::kit
