// SPDX-License-Identifier: Apache-2.0
#include "ruler/offline_capture.h"

#include <ctime>
#include <string>

#include "files/platform.h"
#include "files/text_file.h"
#include "files/time_text.h"
#include "files/whole_file.h"
#include "ruler/members.h"

namespace quorvel::internal {

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
CaptureAccount newCaptureFolder() {
    const std::tm now = localTime(std::time(nullptr));
    const std::string month = std::string(kLogFolder) + "/" + timeText(now, "%Y-%m");
    const std::string folder = month + "/" + timeText(now, "%Y-%m-%d-%H-%M-%S");
    ensureFolder(kLogFolder);
    ensureFolder(month);
    CaptureAccount account;
    account.exists = pathExists(folder);
    if (makeFolder(folder)) {
        account.folder = folder;
    }
    return account;
}

}  // namespace

CaptureReading captureReading(const MeasureResult& result) {
    return {result.width, result.length, result.height, result.corners};
}

CaptureAccount saveCapture(const Quorvel& ruler) {
    CaptureAccount account = newCaptureFolder();
    if (account.folder.empty()) {
        return account;
    }
    const std::string& folder = account.folder;
    const bool parameters =
        writeWholeFile(folder + "/para.txt", captureParametersText(captureParameters(ruler)), FileContent::Text);
    const bool reading =
        writeWholeFile(folder + "/res.txt", captureReadingText(captureReading(ruler.result)), FileContent::Text);
    const bool color = writeImageFile(folder + "/color.png", ruler.colorImage) || ruler.colorImage.empty();
    const bool depth = writeImageFile(folder + "/depth.tif", ruler.depthImage) || ruler.depthImage.empty();
    account.whole = parameters && reading && color && depth;
    return account;
}

}  // namespace quorvel::internal

int Quorvel::saveOfflineData() {
    quorvel::internal::saveCapture(*this);
    return 0;
}
