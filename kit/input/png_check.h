// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace quorvel::kit {

/// Checks the chunks of a PNG file: every chunk is complete, its CRC-32 fits, and the end chunk is there. So a damaged
/// file is explained by one line of the command, before the decoder prints lines of its own on standard error.
/// Layout of the chunks and the checksum: Portable Network Graphics, ISO/IEC 15948, clause 5.
/// \param bytes the whole file
/// \return what is wrong, such as "chunk IDAT at byte 8259 fails its checksum"; empty when nothing is, or when
///         the file does not begin as a PNG does
std::string pngDamage(const std::vector<unsigned char>& bytes);

}  // namespace quorvel::kit
