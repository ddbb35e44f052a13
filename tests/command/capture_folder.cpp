// SPDX-License-Identifier: Apache-2.0
#include "capture_folder.h"

#include <cmath>

#include "sim/render.h"
#include "support/camera_ruler.h"
#include "support/captured_output.h"
#include "support/working_directory.h"

namespace quorvel::command {

namespace {

float sixDecimals(float value) {
    constexpr double kUnit = 1e6;
    return static_cast<float>(std::round(static_cast<double>(value) * kUnit) / kUnit);
}

void roundPlane(Quorvel& ruler) {
    for (int axis = 0; axis < 3; ++axis) {
        ruler.refPlaneNormal[axis] = sixDecimals(ruler.refPlaneNormal[axis]);
    }
    ruler.refPlaneOffset = sixDecimals(ruler.refPlaneOffset);
}

}  // namespace

Quorvel readyRuler(const sim::Scene& scene, const CaptureSetup& setup) {
    // Calibrating writes files.
    const test::WorkingDirectory folder;
    const test::CapturedOutput silence;
    Quorvel ruler = test::rulerOf(scene.camera);
    cv::Rect area;
    ruler.setProductType(setup.mode);
    ruler.setCalibrationRoI(0.6F, area);
    ruler.setEffectiveRegionInArea(setup.area, area);
    ruler.setFilterWeight(setup.filterWeight);
    const sim::Frame empty = sim::renderEmpty(scene, 1000);
    ruler.getCameraFrame(empty.color, empty.depth);
    float distance = 0.0F;
    ruler.calibRef(distance, 0.0F);
    const sim::Frame frame = sim::render(scene, 0);
    ruler.getCameraFrame(frame.color, frame.depth);
    if (setup.roundPlane) {
        roundPlane(ruler);
    }
    return ruler;
}

void captureTo(Quorvel& ruler, const std::filesystem::path& folder) {
    namespace fs = std::filesystem;
    const fs::path target = fs::absolute(folder);
    const test::WorkingDirectory work;
    ruler.saveOfflineData();
    fs::create_directories(target.parent_path());
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator("log")) {
        if (entry.path().filename() == "para.txt") {
            fs::copy(entry.path().parent_path(), target, fs::copy_options::recursive);
            return;
        }
    }
}

Quorvel captureScene(const sim::Scene& scene, const CaptureSetup& setup, const std::filesystem::path& folder) {
    Quorvel ruler = readyRuler(scene, setup);
    {
        const test::CapturedOutput silence;
        ruler.measureOnce();
    }
    captureTo(ruler, folder);
    return ruler;
}

}  // namespace quorvel::command
