// SPDX-License-Identifier: Apache-2.0
#include "persist/capture_reader.h"

#include <optional>

#include "common/decimal_text.h"
#include "common/text_file.h"

namespace quorvel::internal {

bool readCaptureParameters(const std::string& path, CaptureParameters& capture) {
    const std::optional<std::string> text = readTextFile(path);
    if (!text) {
        return false;
    }
    DecimalReader reader(*text);
    Plane& plane = capture.plane;
    return reader.read(capture.downScale) && reader.read(capture.minObjectHeight) && reader.read(capture.cx) &&
           reader.read(capture.cy) && reader.read(capture.fx) && reader.read(capture.fy) &&
           reader.read(capture.invFx) && reader.read(capture.invFy) && reader.read(plane.normal[0]) &&
           reader.read(plane.normal[1]) && reader.read(plane.normal[2]) && reader.read(plane.offset) &&
           reader.read(capture.imageWidth) && reader.read(capture.imageHeight);
}

}  // namespace quorvel::internal
