// SPDX-License-Identifier: Apache-2.0
// Any bytes as a calibration file.
#include "files/calibration_file.h"

#include <array>
#include <cmath>
#include <cstring>

#include <quorvel/quorvel.h>

#include "files/text_file.h"
#include "fuzz/target.h"
#include "support/same_bits.h"

namespace quorvel::fuzz {

namespace {

constexpr const char* kFile = "cal.txt";
constexpr float kUnread = -77.25F;  // a value that stands where nothing was read

using Fields = std::array<float, 4>;

Fields fieldsOf(const internal::Plane& plane) {
    return {plane.normal[0], plane.normal[1], plane.normal[2], plane.offset};
}

Fields readFields() {
    internal::Plane plane{{kUnread, kUnread, kUnread}, kUnread};
    const std::optional<internal::Plane> read = internal::readCalibrationFile(kFile, plane);
    require(read.has_value(), "a small file that is there could not be opened");
    plane = *read;
    return fieldsOf(plane);
}

#ifndef _WIN32
/// Reading stops at the first field that is not a number, so the plane has the numbers that DecimalReader finds.
void requireFieldsOf(const std::string& bytes, const Fields& fields) {
    internal::DecimalReader reader(bytes);
    bool reading = true;
    for (const float field : fields) {
        float expected = kUnread;
        reading = reading && reader.read(expected);
        require(test::sameBits(field, expected), "a field differs from its text");
    }
}
#endif

/// A plane goes through its file and comes back to six decimals; from then on nothing changes any more.
void requireRoundTrip(const Fields& fields) {
    internal::writeCalibrationFile(kFile, {{fields[0], fields[1], fields[2]}, fields[3]});
    const std::string written = readFile(kFile);
    const Fields again = readFields();
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const bool near = std::fabs(again[i] - fields[i]) <= 0.5e-6F + std::fabs(fields[i]) * 1.2e-7F;
        require(near || test::sameBits(again[i], fields[i]), "a value was not read back as it was written");
    }
    internal::writeCalibrationFile(kFile, {{again[0], again[1], again[2]}, again[3]});
    require(readFile(kFile) == written, "a file that was read is written differently");
}

void requireLoadedBy(Quorvel ruler, const Fields& fields) {
    ruler.calFilePath = kFile;
    ruler.refPlaneNormal = {kUnread, kUnread, kUnread};
    ruler.refPlaneOffset = kUnread;
    require(ruler.setProductType(KIOSK) == 0 && ruler.calibStatus, "the mode did not take the file");
    const Fields loaded = fieldsOf({ruler.refPlaneNormal, ruler.refPlaneOffset});
    for (std::size_t i = 0; i < fields.size(); ++i) {
        require(test::sameBits(loaded[i], fields[i]), "the ruler holds another plane than its file");
    }
    float height = 0.0F;
    require(ruler.getCameraHeight(height) == 0 && test::sameBits(height, fields[3]), "the camera's height differs");
}

}  // namespace

}  // namespace quorvel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvel::fuzz;
    prepareProcess();
    const std::string bytes(data, data + size);
    writeFile(kFile, bytes);
    const Fields fields = readFields();
#ifndef _WIN32
    requireFieldsOf(bytes, fields);  // elsewhere the text mode changes line ends
#endif
    const Quorvel ruler(500.0F, 500.0F, 320.0F, 240.0F, 640, 480, false, "");
    requireLoadedBy(ruler, fields);
    requireRoundTrip(fields);
    return 0;
}
