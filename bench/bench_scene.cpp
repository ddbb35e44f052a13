// SPDX-License-Identifier: Apache-2.0
#include "bench_scene.h"

#include <cstdlib>
#include <filesystem>

namespace quorvel::bench {

namespace {

sim::Scene parcelScene() {
    sim::Scene scene;
    scene.name = "bench";
    scene.camera = {600.0, 600.0, 319.5, 239.5, 640, 480};
    sim::Box box;
    box.length = 400.0;
    box.width = 300.0;
    box.height = 200.0;
    box.yawDeg = 12.0;
    scene.boxes = {box};
    scene.effects.axialNoise = 1.0;
    scene.effects.flyingPixels = 0.3;
    scene.effects.dropout = 0.002;
    return scene;
}

}  // namespace

const BenchScene& benchScene() {
    static const sim::Scene scene = parcelScene();
    static const BenchScene frames{sim::renderEmpty(scene, 1), sim::render(scene, 0)};
    return frames;
}

Quorvel benchRuler(ProductType mode) {
    Quorvel ruler(600.0F, 600.0F, 319.5F, 239.5F, 640, 480, false, "");
    cv::Rect region;
    ruler.productType = mode;
    ruler.paramDir = (std::filesystem::temp_directory_path() / "quorvel-bench").string();
    ruler.calFilePath = ruler.paramDir + "/cal.txt";
    ruler.setCalibrationRoI(0.8F, region);
    ruler.setEffectiveRegionInArea(0.6F, region);
    return ruler;
}

Quorvel calibratedRuler(ProductType mode) {
    Quorvel ruler = benchRuler(mode);
    std::srand(1);
    float t = 0.0F;
    ruler.getCameraFrame(benchScene().empty.color, benchScene().empty.depth);
    ruler.calibRef(t, 0.0F);
    return ruler;
}

}  // namespace quorvel::bench
