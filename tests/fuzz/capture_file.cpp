// SPDX-License-Identifier: Apache-2.0
// Any bytes as the para.txt of a stored capture.
#include <cmath>
#include <filesystem>

#include <opencv2/imgcodecs.hpp>

#include <quorvel/quorvel.h>

#include "files/capture_reader.h"
#include "files/capture_writer.h"
#include "fuzz/target.h"
#include "support/same_bits.h"

namespace quorvel::fuzz {

namespace {

constexpr const char* kFolder = "capture";
constexpr const char* kFile = "capture/para.txt";
constexpr int kWidth = 32;  // pixels, of the stored images
constexpr int kHeight = 24;

/// A surface at 1000 mm with a box on it, so that a para.txt that fits leads to a measurement.
void makeImages() {
    std::filesystem::create_directory(kFolder);
    cv::Mat depth(kHeight, kWidth, CV_16UC1, cv::Scalar(1000));
    depth(cv::Rect(8, 8, 16, 12)).setTo(900);
    const cv::Mat color(kHeight, kWidth, CV_8UC3, cv::Scalar::all(128));
    require(cv::imwrite(std::string(kFolder) + "/color.png", color) &&
                cv::imwrite(std::string(kFolder) + "/depth.tif", depth),
            "the capture's images cannot be written");
}

void requireRoundTrip(const internal::CaptureParameters& capture) {
    const std::string text = internal::captureParametersText(capture);
    writeFile(kFile, text);
    const std::optional<internal::CaptureParameters> read = internal::readCaptureParameters(kFile);
    require(read.has_value(), "what was written cannot be read");
    const internal::CaptureParameters& again = *read;
    require(internal::captureParametersText(again) == text, "a file that was read is written differently");
    require(again.downScale == capture.downScale && again.imageWidth == capture.imageWidth &&
                again.imageHeight == capture.imageHeight,
            "a whole number was not read back");
    const bool near =
        std::fabs(again.plane.offset - capture.plane.offset) <= 0.5e-6F + std::fabs(capture.plane.offset) * 1.2e-7F;
    require(near || test::sameBits(again.plane.offset, capture.plane.offset), "the distance was not read back");
}

/// A readable capture is replayed. A frame that does not fit is refused and leaves an empty result.
void requireReplay(bool readable, const internal::CaptureParameters& capture) {
    Quorvel ruler(500.0F, 500.0F, 16.0F, 12.0F, kWidth, kHeight, true, kFolder);
    require(ruler.offlineMode, "the offline mode went off");
    require(ruler.calibStatus == readable, "the plane's status does not follow from the file");
    if (!readable) {
        require(ruler.imageWidth == kWidth && ruler.downScale == 4, "the normal start did not step in");
        return;
    }
    require(ruler.imageWidth == capture.imageWidth && ruler.imageHeight == capture.imageHeight &&
                ruler.downScale == capture.downScale,
            "the capture's sizes were not taken over");
    require(ruler.colorImage.size() == cv::Size(kWidth, kHeight) && ruler.depthImage.size() == ruler.colorImage.size(),
            "the capture's images were not taken over");
    require(ruler.result.corners.empty() || ruler.result.corners.size() == 8, "a box has eight corners or none");
    require(!ruler.result.inView || !ruler.result.corners.empty(), "a box without corners is in view");
    const bool fits = capture.imageWidth == kWidth && capture.imageHeight == kHeight && capture.downScale > 0 &&
                      capture.downScale <= kHeight;
    require(ruler.getCameraFrame({}, {}) == fits, "a stored frame is taken when it fits, and only then");
    ruler.measureOnce();
}

}  // namespace

}  // namespace quorvel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvel::fuzz;
    prepareProcess();
    if (!std::filesystem::exists(kFolder)) {
        makeImages();
    }
    writeFile(kFile, std::string(data, data + size));
    const std::optional<quorvel::internal::CaptureParameters> capture = quorvel::internal::readCaptureParameters(kFile);
    requireReplay(capture.has_value(), capture.value_or(quorvel::internal::CaptureParameters()));
    if (capture) {
        requireRoundTrip(*capture);
    }
    return 0;
}
