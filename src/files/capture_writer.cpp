// SPDX-License-Identifier: Apache-2.0
#include "files/capture_writer.h"

#include "files/text_file.h"

namespace quorvel::internal {

std::string captureParametersText(const CaptureParameters& capture) {
    const Plane& plane = capture.plane;
    std::string text = std::to_string(capture.downScale) + '\n';
    for (const float value : {capture.minObjectHeight, capture.cx, capture.cy, capture.fx, capture.fy, capture.invFx,
                              capture.invFy, plane.normal[0], plane.normal[1], plane.normal[2], plane.offset}) {
        text += sixDecimals(value) + '\n';
    }
    text += std::to_string(capture.imageWidth) + '\n';
    text += std::to_string(capture.imageHeight) + '\n';
    return text;
}

std::string captureReadingText(const CaptureReading& reading) {
    std::string text =
        sixDecimals(reading.width) + '\n' + sixDecimals(reading.length) + '\n' + sixDecimals(reading.height) + '\n';
    for (const cv::Point2f& corner : reading.corners) {
        text += sixDecimals(corner.x) + ' ' + sixDecimals(corner.y) + '\n';
    }
    return text;
}

}  // namespace quorvel::internal
