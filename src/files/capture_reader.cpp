// SPDX-License-Identifier: Apache-2.0
#include "files/capture_reader.h"

#include <string_view>

#include "files/text_file.h"

namespace quorvel::internal {

namespace {

/// Reads one value after the other and remembers the first that cannot be read.
class FieldReader {
public:
    explicit FieldReader(std::string_view text) : reader_(text) {}

    template <typename Number>
    void read(Number& value, const char* name) {
        if (!problem_.field.empty()) {
            return;
        }
        const std::string word = reader_.nextWord();
        if (reader_.read(value)) {
            // What is left of a word is read as the next value. When that fails, it is this word that is wrong.
            cut_ = reader_.atWordEnd() ? CaptureProblem{} : CaptureProblem{true, name, word};
            return;
        }
        problem_ = cut_.opened ? cut_ : CaptureProblem{true, name, word};
    }

    const CaptureProblem& problem() const { return problem_; }

private:
    DecimalReader reader_;
    CaptureProblem problem_{true, {}, {}};
    CaptureProblem cut_;  ///< the last value, when its word goes on behind the number
};

CaptureParameters readFields(FieldReader& reader) {
    CaptureParameters capture;
    reader.read(capture.downScale, "down-scale factor");
    reader.read(capture.minObjectHeight, "minimum object height");
    reader.read(capture.cx, "principal point's column");
    reader.read(capture.cy, "principal point's row");
    reader.read(capture.fx, "focal length along x");
    reader.read(capture.fy, "focal length along y");
    reader.read(capture.invFx, "inverse focal length along x");
    reader.read(capture.invFy, "inverse focal length along y");
    for (int axis = 0; axis < 3; ++axis) {
        reader.read(capture.plane.normal[axis], "plane's normal");
    }
    reader.read(capture.plane.offset, "plane's distance");
    reader.read(capture.imageWidth, "frame width");
    reader.read(capture.imageHeight, "frame height");
    return capture;
}

}  // namespace

std::optional<CaptureParameters> readCaptureParameters(const std::string& path, CaptureProblem* problem) {
    const std::optional<std::string> text = readTextFile(path);
    FieldReader reader(text ? std::string_view(*text) : std::string_view());
    const CaptureParameters capture = readFields(reader);
    if (problem != nullptr) {
        *problem = text ? reader.problem() : CaptureProblem{};
    }
    return text && reader.problem().field.empty() ? std::optional(capture) : std::nullopt;
}

}  // namespace quorvel::internal
