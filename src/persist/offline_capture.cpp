// SPDX-License-Identifier: Apache-2.0
#include <ctime>
#include <string>

#include <quorvel/quorvel.h>

#include "common/image_file.h"
#include "common/platform.h"
#include "common/text_file.h"
#include "common/time_text.h"
#include "common/whole_file.h"
#include "persist/capture_writer.h"
#include "ruler/members.h"

using namespace quorvel::internal;

namespace {

const char* const kLogFolder = "./log";

CaptureParameters captureParameters(const Quorvel& ruler) {
    CaptureParameters capture;
    capture.downScale = ruler.downScale;
    capture.minObjectHeight = ruler.minObjectHeight;
    capture.cx = ruler.cx;
    capture.cy = ruler.cy;
    capture.fx = ruler.fx;
    capture.fy = ruler.fy;
    capture.invFx = ruler.invFx;
    capture.invFy = ruler.invFy;
    capture.plane = referencePlane(ruler);
    capture.imageWidth = ruler.imageWidth;
    capture.imageHeight = ruler.imageHeight;
    return capture;
}

/// Makes the capture folder of this second, level by level.
/// \return its path; empty when it was there already or cannot be made
std::string newCaptureFolder() {
    const std::tm now = localTime(std::time(nullptr));
    const std::string month = std::string(kLogFolder) + "/" + timeText(now, "%Y-%m");
    const std::string folder = month + "/" + timeText(now, "%Y-%m-%d-%H-%M-%S");
    ensureFolder(kLogFolder);
    ensureFolder(month);
    return makeFolder(folder) ? folder : std::string();
}

}  // namespace

int Quorvel::saveOfflineData() {
    const std::string folder = newCaptureFolder();
    if (folder.empty()) {
        return 0;
    }
    writeWholeFile(folder + "/para.txt", captureParametersText(captureParameters(*this)), FileContent::Text);
    writeWholeFile(folder + "/res.txt", captureResultText(result), FileContent::Text);
    writeImageFile(folder + "/color.png", colorImage);
    writeImageFile(folder + "/depth.tif", depthImage);
    return 0;
}
