// SPDX-License-Identifier: Apache-2.0
#include "calib/calibration_file.h"

#include <optional>

#include "common/decimal_text.h"
#include "common/text_file.h"
#include "common/whole_file.h"

namespace quorvel::internal {

void writeCalibrationFile(const std::string& path, const Plane& plane) {
    writeWholeFile(path,
                   sixDecimals(plane.normal[0]) + ' ' + sixDecimals(plane.normal[1]) + ' ' +
                       sixDecimals(plane.normal[2]) + ' ' + sixDecimals(plane.offset) + '\n',
                   FileContent::Text);
}

bool readCalibrationFile(const std::string& path, Plane& plane) {
    const std::optional<std::string> text = readTextFile(path);
    if (!text) {
        return false;
    }
    DecimalReader reader(*text);
    static_cast<void>(reader.read(plane.normal[0]) && reader.read(plane.normal[1]) && reader.read(plane.normal[2]) &&
                      reader.read(plane.offset));
    return true;
}

}  // namespace quorvel::internal
