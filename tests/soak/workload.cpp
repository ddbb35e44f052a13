// SPDX-License-Identifier: Apache-2.0
#include "soak/workload.h"

#include <climits>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "soak/process_state.h"
#include "support/camera_ruler.h"

namespace quorvel::soak {

namespace {

constexpr int kLargeScenes = 80;
constexpr int kSmallScenes = 20;
constexpr int kLongestBatch = 4;
const char* const kGarbage = "garbage.yml";

/// Rulers of one camera share a calibration file otherwise.
void setFolder(Quorvel& ruler, const std::string& folder) {
    ruler.paramDir = folder;
    ruler.calFilePath = folder + "/cal.txt";
}

void setAreas(Quorvel& ruler) {
    cv::Rect area;
    ruler.setCalibrationRoI(0.6F, area);
    ruler.setEffectiveRegionInArea(0.8F, area);
    ruler.setFilterWeight(0.005F);
}

}  // namespace

Workload::Workload() : large_({640, 480}, kLargeScenes), small_({320, 240}, kSmallScenes) {
    const std::vector<std::pair<ProductType, ScenePool*>> kinds{
        {KIOSK, &large_}, {GROUND_GROWING, &large_}, {GROUND_TRACKING, &large_}, {KIOSK, &small_}};
    for (const auto& [mode, pool] : kinds) {
        stations_.push_back({test::rulerOf(pool->camera()), pool, mode});
        setFolder(stations_.back().ruler, "./param" + std::to_string(stations_.size()));
    }
    std::ofstream(kGarbage) << "%YAML:1.0\n---\n[ ] : {";
}

int Workload::showEveryScene() {
    calibrateAll();
    for (Station& station : stations_) {
        // A third image, as it comes with an unusable frame later.
        station.ruler.getCameraFrame(cv::Mat(), cv::Mat(), station.pool->drawEmpty(draws_).color);
        for (std::size_t i = 0; i < station.pool->scenes(); ++i) {
            const Frame& frame = station.pool->scene(i, draws_);
            station.ruler.getCameraMultipleFrame({frame.color}, {frame.depth});
            station.ruler.measureOnce();
            ++outcome_.frames;
        }
    }
    dropBatches();
    return outcome_.frames;
}

PassOutcome Workload::run(unsigned seed, int frames, const std::function<void(double)>& onFrame) {
    std::srand(seed);
    draws_ = test::Draws(seed);
    digest_ = Digest();
    outcome_ = PassOutcome();
    calibrateAll();
    holdLongestBatches();
    while (outcome_.frames < frames) {
        step(onFrame);
    }
    saveCapture(stations_.front());
    dropBatches();
    outcome_.digest = digest_.value();
    return outcome_;
}

/// Every pass fits new planes, so that the pass before has no influence.
void Workload::calibrateAll() {
    for (Station& station : stations_) {
        Quorvel& ruler = station.ruler;
        ruler.refPlaneNormal = {0, 0, 0};
        ruler.refPlaneOffset = 0;
        ruler.minObjectHeight = 10;
        ruler.setProductType(station.mode);
        calibrate(station);
    }
}

/// Every station holds the longest batch at a time, so that the storage kept for batches has its full size from the
/// beginning: what grows afterwards is a leak.
void Workload::holdLongestBatches() {
    for (Station& station : stations_) {
        const Frame& frame = station.pool->drawEmpty(draws_);
        const std::vector<cv::Mat> colors(kLongestBatch, frame.color);
        const std::vector<cv::Mat> depths(kLongestBatch, frame.depth);
        if (!station.ruler.getCameraMultipleFrame(colors, depths)) {
            throw std::logic_error("a proper batch was refused");
        }
    }
    dropBatches();
}

/// What waits in a station's batch buffers at the end of a pass is chance.
void Workload::dropBatches() {
    for (Station& station : stations_) {
        digest_.add(station.ruler.measureMultiple(20, 20, 20));
        const Frame& frame = station.pool->drawEmpty(draws_);
        station.ruler.getCameraFrame(frame.color, frame.depth);
    }
}

void Workload::calibrate(Station& station) {
    Quorvel& ruler = station.ruler;
    const Frame& frame = station.pool->drawEmpty(draws_);
    float t = 0;
    setAreas(ruler);
    ruler.getCameraFrame(frame.color, frame.depth);
    ruler.calibRef(t, 0);
    ++outcome_.frames;
    digest_.add(t);
    digest_.add(ruler.refPlaneNormal);
    digest_.add(ruler.calibCloud);
}

void Workload::step(const std::function<void(double)>& onFrame) {
    Station& station = draws_.oneOf(stations_);
    const int what = draws_.below(100);
    if (what < 10) {
        shootBatch(station);
    } else if (what < 13) {
        calibrate(station);
    } else if (what < 16) {
        useParameterFile(station);
    } else if (what < 24) {
        disturb(station);
    } else {
        shoot(what < 60 ? stations_.front() : station, onFrame);
    }
}

void Workload::shoot(Station& station, const std::function<void(double)>& onFrame) {
    Quorvel& ruler = station.ruler;
    const Frame& frame = station.pool->draw(draws_);
    const double start = secondsWorked();
    const bool taken = ruler.getCameraFrame(frame.color, frame.depth);
    const int status = ruler.measureOnce();
    onFrame(secondsWorked() - start);
    if (!taken) {
        throw std::logic_error("a proper frame was refused");
    }
    ++outcome_.frames;
    outcome_.measured += ruler.result.corners.empty() ? 0 : 1;
    digest_.add(status);
    digest_.add(ruler.result);
    digest_.add(ruler.refPlaneOffset);
    digest_.add(ruler.depthSmall);
}

void Workload::shootBatch(Station& station) {
    Quorvel& ruler = station.ruler;
    const Frame& frame = station.pool->draw(draws_);
    const int length = draws_.between(2, kLongestBatch);
    std::vector<cv::Mat> colors;
    std::vector<cv::Mat> depths;
    for (int i = 0; i < length; ++i) {
        // The same picture but for one millimetre here and there, as frames in quick succession are.
        colors.push_back(frame.color);
        depths.push_back(frame.depth.clone());
        depths.back().col(draws_.below(frame.depth.cols)).setTo(0);
    }
    if (!ruler.getCameraMultipleFrame(colors, depths)) {
        throw std::logic_error("a proper batch was refused");
    }
    outcome_.frames += length;
    // One of ten is never measured: the next batch drops it.
    if (draws_.chance(90)) {
        const int status = ruler.measureMultiple(20, 20, 20);
        outcome_.measured += status == 0 ? length : 0;
        digest_.add(status);
        digest_.add(ruler.result);
    }
}

void Workload::useParameterFile(Station& station) {
    static const std::vector<std::string> kNames{"ruler.yml", "ruler.json", "ruler.xml"};
    const std::string& name = draws_.oneOf(kNames);
    cv::Rect calibration;
    cv::Rect detection;
    digest_.add(station.ruler.saveRulerParam(name) ? 1 : 0);
    digest_.add(station.ruler.loadRulerParam(name, calibration, detection) ? 1 : 0);
    digest_.add(calibration.width);
    digest_.add(detection.width);
}

/// Writes a capture, replays it and removes it.
void Workload::saveCapture(Station& station) {
    station.ruler.saveOfflineData();
    for (const auto& entry : std::filesystem::recursive_directory_iterator("log")) {
        if (entry.path().filename() == "para.txt") {
            const Quorvel replay(1, 1, 1, 1, 1, 1, true, entry.path().parent_path().generic_string());
            digest_.add(replay.depthImage);
            digest_.add(replay.imageWidth);
        }
    }
    std::filesystem::remove_all("log");
}

void Workload::expectRefused(bool taken) {
    if (taken) {
        throw std::logic_error("an unusable frame was taken in");
    }
    ++outcome_.frames;
    ++outcome_.refused;
}

void Workload::pushUnusable(Station& station) {
    Quorvel& ruler = station.ruler;
    const Frame& frame = station.pool->draw(draws_);
    const cv::Mat& color = frame.color;
    const cv::Mat& depth = frame.depth;
    switch (draws_.below(6)) {
        case 0:
            expectRefused(ruler.getCameraFrame(color, depth.colRange(1, depth.cols)));
            break;
        case 1:
            expectRefused(ruler.getCameraFrame(depth, depth));
            break;
        case 2:
            expectRefused(ruler.getCameraFrame(color, cv::Mat()));
            break;
        case 3:
            expectRefused(ruler.getCameraFrame(cv::Mat(), depth, color));
            break;
        case 4:
            expectRefused(ruler.getCameraMultipleFrame({color, color}, {depth, cv::Mat()}));
            break;
        default:
            expectRefused(ruler.getCameraMultipleFrame({color, color}, {depth, depth.t()}));
            break;
    }
}

/// What goes wrong at a station now and then. Afterwards it is as it was.
void Workload::disturb(Station& station) {
    Quorvel& ruler = station.ruler;
    const cv::Rect everywhere(INT_MIN, INT_MAX, INT_MAX, INT_MAX);
    cv::Rect calibration;
    cv::Rect detection;
    switch (draws_.below(5)) {
        case 0:
            pushUnusable(station);
            break;
        case 1: {
            const Frame& frame = station.pool->draw(draws_);
            ruler.getCameraFrame(frame.color, cv::Mat::zeros(frame.depth.size(), CV_16UC1));
            ++outcome_.frames;
            break;
        }
        case 2:
            ruler.setCalibrationRoI(everywhere);
            ruler.setEffectiveRegionInArea(everywhere);
            break;
        case 3:
            try {
                ruler.loadRulerParam(kGarbage, calibration, detection);
            } catch (const cv::Exception&) {
                ++outcome_.exceptions;
            }
            break;
        default: {
            Quorvel copy(ruler);
            digest_.add(copy.measureOnce());
            break;
        }
    }
    digest_.add(ruler.measureOnce());
    digest_.add(ruler.result);
    digest_.add(ruler.measureMultiple(20, 20, 20));
    setAreas(ruler);
}

}  // namespace quorvel::soak
