// SPDX-License-Identifier: Apache-2.0
#include "files/calibration_file.h"

#include "files/text_file.h"
#include "files/whole_file.h"

namespace quorvel::internal {

bool writeCalibrationFile(const std::string& path, const Plane& plane) {
    return writeWholeFile(path,
                          sixDecimals(plane.normal[0]) + ' ' + sixDecimals(plane.normal[1]) + ' ' +
                              sixDecimals(plane.normal[2]) + ' ' + sixDecimals(plane.offset) + '\n',
                          FileContent::Text);
}

std::optional<Plane> readCalibrationFile(const std::string& path, const Plane& previous) {
    const std::optional<std::string> text = readTextFile(path);
    if (!text) {
        return std::nullopt;
    }
    Plane plane = previous;
    DecimalReader reader(*text);
    static_cast<void>(reader.read(plane.normal[0]) && reader.read(plane.normal[1]) && reader.read(plane.normal[2]) &&
                      reader.read(plane.offset));
    return plane;
}

}  // namespace quorvel::internal
