// SPDX-License-Identifier: Apache-2.0
#include "shared/life.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include "support/file_bytes.h"
#include "support/members.h"

namespace quorvel::test {

namespace {

namespace fs = std::filesystem;

constexpr int kSmallScenes = 8;
constexpr int kLargeScenes = 3;

Views viewsOf(DepthScene scene, Draws& draws) {
    Views views;
    views.scene = scene;
    views.color = cv::Mat(scene.size, CV_8UC3, cv::Scalar(30, 60, 90));
    scene.blocks.clear();
    views.empty = scene.depth(draws);
    for (int i = 0; i < 3; ++i) {
        views.occupied.push_back(views.scene.depth(draws));
    }
    return views;
}

/// All files below the current folder; the names that the clock gives are gone by then.
std::vector<std::string> allFiles() {
    std::vector<std::string> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(".")) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path().generic_string());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string textOf(const std::string& bytes) {
    const cv::Mat image(static_cast<int>(bytes.size()), 1, CV_8UC1);
    std::copy(bytes.begin(), bytes.end(), image.data);
    return imageText(image);
}

}  // namespace

std::vector<Views> drawViews() {
    Draws draws(1);
    std::vector<Views> views;
    for (int i = 0; i < kSmallScenes; ++i) {
        const DepthScene surface = drawScene(draws);
        views.push_back(viewsOf(withBlock(surface, draws), draws));
    }
    for (int i = 0; i < kLargeScenes; ++i) {
        const DepthScene surface = largeScene(draws);
        views.push_back(viewsOf(withBlock(surface, draws), draws));
    }
    return views;
}

Life::Life(std::uint32_t seed, const std::vector<Views>& views, MemberRecord& record)
    : draws_(seed), record_(record), views_(draws_.oneOf(views)), ruler_(views_.scene.ruler()) {
    std::srand(seed);
    record_.begin("life " + std::to_string(seed));
    std::cout << "# life " << seed << std::endl;
}

void Life::live() {
    start();
    for (int steps = draws_.between(5, 25); steps > 0; --steps) {
        step();
    }
    // The same number of draws has been taken from the C library's one generator.
    record_.value("the next random number", std::rand());
}

/// As a host starts; without it hardly any life would come to a measurement.
void Life::start() {
    done("construction", 0);
    ruler_.setDebugMode(draws_.chance(50));
    useMode();
    cv::Rect region;
    done("setCalibrationRoI", ruler_.setCalibrationRoI(0.8F, region));
    done("setEffectiveRegionInArea", ruler_.setEffectiveRegionInArea(0.9F, region));
    if (draws_.chance(80)) {
        done("getCameraFrame", ruler_.getCameraFrame(views_.color, views_.empty) ? 1 : 0);
        calibrate();
        done("setFilterWeight", ruler_.setFilterWeight(draws_.chance(50) ? -1.0F : 0.01F));
    }
}

void Life::step() {
    // Frames and measurements are what a ruler is for: they come more often.
    constexpr void (Life::*kSteps[])() = {
        &Life::takeFrame,     &Life::takeFrame,   &Life::takeFrame,    &Life::measure,          &Life::measure,
        &Life::measure,       &Life::takeBatch,   &Life::measureBatch, &Life::calibrate,        &Life::useMode,
        &Life::useRegions,    &Life::useSettings, &Life::ask,          &Life::useParameterFile, &Life::saveCapture,
        &Life::replayCapture, &Life::copyRuler,   &Life::writeMember};
    (this->*draws_.oneOf(kSteps))();
}

void Life::calibrate() {
    if (draws_.chance(20)) {
        done("ransacCalibRef", ruler_.ransacCalibRef());
        return;
    }
    float t = -1.0F;
    const float offset = draws_.chance(50) ? 0.0F : draws_.real(-20, 20);
    done("calibRef", ruler_.calibRef(t, offset));
    record_.value("t", t);
    recordFiles();
}

const cv::Mat& Life::anyDepth() {
    return draws_.chance(80) ? draws_.oneOf(views_.occupied) : views_.empty;
}

void Life::takeFrame() {
    if (draws_.chance(60)) {
        takeProperFrame();
        return;
    }
    const cv::Mat depth = anyDepth();
    switch (draws_.below(4)) {
        case 0:
            done("getCameraFrame without a picture", ruler_.getCameraFrame(views_.color, cv::Mat()) ? 1 : 0);
            break;
        case 1:
            done("getCameraFrame of another size",
                 ruler_.getCameraFrame(views_.color, depth.colRange(1, depth.cols)) ? 1 : 0);
            break;
        default:
            done("getCameraFrame of three", ruler_.getCameraFrame(views_.color, depth, views_.empty) ? 1 : 0);
            break;
    }
}

void Life::takeProperFrame() {
    done("getCameraFrame", ruler_.getCameraFrame(views_.color, anyDepth()) ? 1 : 0);
}

void Life::takeBatch() {
    std::vector<cv::Mat> depths;
    for (int frames = draws_.below(4); frames > 0; --frames) {
        depths.push_back(anyDepth());
    }
    const std::size_t colors = draws_.chance(90) ? depths.size() : 2;
    const std::vector<cv::Mat> pictures(colors, views_.color);
    done("getCameraMultipleFrame", ruler_.getCameraMultipleFrame(pictures, depths) ? 1 : 0);
}

void Life::measure() {
    // A frame can be measured once.
    if (draws_.chance(80)) {
        takeProperFrame();
    }
    done("measureOnce", ruler_.measureOnce());
    boxes_ += ruler_.result.corners.empty() ? 0 : 1;
}

void Life::measureBatch() {
    if (draws_.chance(50)) {
        takeBatch();
    }
    const float tolerance = draws_.chance(70) ? 1000.0F : draws_.real(0, 10);
    done("measureMultiple", ruler_.measureMultiple(tolerance, tolerance, tolerance));
    boxes_ += ruler_.result.corners.empty() ? 0 : 1;
}

void Life::useMode() {
    const auto mode = static_cast<ProductType>(draws_.below(4));
    done("setProductType " + std::to_string(mode), ruler_.setProductType(mode));
}

void Life::useRegions() {
    const cv::Size size = views_.scene.size;
    const cv::Rect given{draws_.between(-5, size.width), draws_.between(-5, size.height), draws_.between(0, size.width),
                         draws_.between(0, size.height)};
    const float ratio = draws_.real(0, 1.2F);
    cv::Rect region;
    switch (draws_.below(4)) {
        case 0:
            done("setCalibrationRoI", ruler_.setCalibrationRoI(given));
            break;
        case 1:
            done("setEffectiveRegionInArea", ruler_.setEffectiveRegionInArea(given));
            break;
        case 2:
            done("setCalibrationRoI of a ratio", ruler_.setCalibrationRoI(ratio, region));
            break;
        default:
            done("setEffectiveRegionInArea of a ratio", ruler_.setEffectiveRegionInArea(ratio, region));
            break;
    }
    record_.value("region", region.x + 10000 * region.y);
}

void Life::useSettings() {
    switch (draws_.below(3)) {
        case 0:
            ruler_.setDebugMode(draws_.chance(50));
            done("setDebugMode", 0);
            break;
        case 1: {
            const bool enable = draws_.chance(50);
            done("setCameraType", ruler_.setCameraType(enable, draws_.between(-5, 60)));
            break;
        }
        default:
            done("setFilterWeight", ruler_.setFilterWeight(draws_.real(-0.1F, 0.05F)));
            break;
    }
}

void Life::ask() {
    record_.value("getVersion", ruler_.getVersion());
    float height = -1.0F;
    done("getCameraHeight", ruler_.getCameraHeight(height));
    record_.value("height", height);
    bool status = false;
    done("getCalibStatus", ruler_.getCalibStatus(status));
    record_.value("status", status ? 1 : 0);
    done("stop", ruler_.stop());
}

void Life::useParameterFile() {
    static const std::vector<std::string> kPaths{"p.yml", "p.xml", "p.json", "p", "none/p.yml"};
    const std::string path = draws_.oneOf(kPaths);
    if (draws_.chance(10)) {
        put("p.yml", "%YAML:1.0\n---\n[ ] : {");
    }
    cv::Rect calibration;
    cv::Rect detection;
    try {
        if (draws_.chance(60)) {
            done("saveRulerParam " + path, ruler_.saveRulerParam(path) ? 1 : 0);
        } else {
            done("loadRulerParam " + path, ruler_.loadRulerParam(path, calibration, detection) ? 1 : 0);
        }
    } catch (const cv::Exception& error) {
        done("an exception", error.code);
    }
    record_.value("calibration area", calibration.x + 10000 * calibration.width);
    record_.value("detection area", detection.x + 10000 * detection.width);
    recordFiles();
}

void Life::saveCapture() {
    fs::remove_all("log");
    done("saveOfflineData", ruler_.saveOfflineData());
    // The clock names the folder; it gets a name that is the same in every run.
    const fs::path month = fs::directory_iterator("log")->path();
    fs::rename(fs::directory_iterator(month)->path(), "capture" + std::to_string(captures_));
    fs::remove_all("log");
    ++captures_;
    recordFiles();
}

void Life::replayCapture() {
    const std::string folder = "capture" + std::to_string(draws_.below(static_cast<int>(captures_) + 1));
    ruler_ = Quorvel(0, 0, 0, 0, 0, 0, true, folder);
    done("the offline start from " + folder, 0);
    measure();
    if (draws_.chance(80)) {
        ruler_ = views_.scene.ruler();
        start();
    }
}

void Life::copyRuler() {
    const Quorvel copy(ruler_);
    done("getCameraFrame", ruler_.getCameraFrame(views_.color, views_.empty) ? 1 : 0);
    ruler_ = copy;
    done("the copy back", 0);
}

void Life::writeMember() {
    static const auto kFloats = membersOf<float>();
    static const auto kBools = membersOf<bool>();
    static const auto kImages = rulerImages();
    switch (draws_.below(4)) {
        case 0:
            ruler_.*draws_.oneOf(kFloats).pointer *= draws_.real(0.9F, 1.1F);
            break;
        case 1:
            ruler_.*draws_.oneOf(kBools).pointer = draws_.chance(50);
            break;
        case 2:
            ruler_.*draws_.oneOf(kImages).pointer = cv::Mat();
            break;
        default:
            ruler_.downScale = draws_.between(1, 5);
            break;
    }
    done("a write of the host", 0);
}

void Life::recordFiles() {
    for (const std::string& file : allFiles()) {
        record_.value(file, textOf(bytesOf(file)));
    }
}

/// Writes what a call returned and changed, and marks the place among the lines that the library prints.
void Life::done(const std::string& call, int returned) {
    std::cout << "- " << call << std::endl;
    record_.value(call, returned);
    record_.members(call, ruler_);
}

}  // namespace quorvel::test
