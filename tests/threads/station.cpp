// SPDX-License-Identifier: Apache-2.0
#include "threads/station.h"

#include <cstdint>

#include "library/same_ruler.h"
#include "support/camera_ruler.h"
#include "support/own_rand.h"

namespace quorvel::test {

namespace {

// The fit on every frame needs more than 4000 small-image pixels of floor: these frames have 7500 in all.
constexpr int kWidth = 400;
constexpr int kHeight = 300;
constexpr double kFocal = 375.0;  // pixels

Station makeStation(std::size_t number) {
    const auto n = static_cast<double>(number);
    sim::Scene scene;
    scene.camera = {kFocal, kFocal, kWidth / 2.0, kHeight / 2.0, kWidth, kHeight};
    scene.surface.distance = 900.0 + 100.0 * n;
    sim::Box box;
    box.x = 10.0 * n;
    box.y = -5.0 * n;
    box.yawDeg = 12.0 * n;
    box.length = 260.0 - 20.0 * n;
    box.width = 180.0;
    box.height = 90.0 + 30.0 * n;
    scene.boxes = {box};
    scene.effects.axialNoise = 0.4;
    scene.effects.dropout = 0.002;
    scene.seed = static_cast<std::uint32_t>(number + 1);
    Station station{number, scene.camera, sim::renderEmpty(scene, 0), {}};
    for (const unsigned index : {1U, 2U, 3U}) {
        station.occupied.push_back(sim::render(scene, index));
    }
    return station;
}

std::vector<Station> makeStations() {
    std::vector<Station> made;
    for (std::size_t number = 0; number < kStations; ++number) {
        made.push_back(makeStation(number));
    }
    return made;
}

}  // namespace

Quorvel Station::ruler() const {
    Quorvel ruler = rulerOf(camera);
    ruler.paramDir = "./param" + std::to_string(number);
    ruler.calFilePath = ruler.paramDir + "/cal.txt";
    ruler.backgroundPath = ruler.paramDir + "/bg.bmp";
    return ruler;
}

std::vector<cv::Mat> Station::colors() const {
    std::vector<cv::Mat> images;
    for (const sim::Frame& frame : occupied) {
        images.push_back(frame.color);
    }
    return images;
}

std::vector<cv::Mat> Station::depths() const {
    std::vector<cv::Mat> images;
    for (const sim::Frame& frame : occupied) {
        images.push_back(frame.depth);
    }
    return images;
}

const std::vector<Station>& stations() {
    static const std::vector<Station> all = makeStations();
    return all;
}

Outcome dayOfWork(const Station& station, ProductType mode) {
    seedOwnRand(static_cast<std::uint32_t>(station.number) + 1);
    Outcome outcome;
    Quorvel& ruler = outcome.ruler;
    ruler = station.ruler();
    outcome.returned.push_back(ruler.setProductType(mode));
    cv::Rect calibrationArea;
    cv::Rect detectArea;
    ruler.setCalibrationRoI(0.6F, calibrationArea);
    ruler.setEffectiveRegionInArea(0.5F, detectArea);
    outcome.returned.push_back(static_cast<int>(ruler.getCameraFrame(station.empty.color, station.empty.depth)));
    float t = 0.0F;
    outcome.returned.push_back(ruler.calibRef(t, 0.0F));
    for (const sim::Frame& frame : station.occupied) {
        outcome.returned.push_back(static_cast<int>(ruler.getCameraFrame(frame.color, frame.depth)));
        outcome.returned.push_back(ruler.measureOnce());
        outcome.readings.push_back(ruler.result);
    }
    outcome.returned.push_back(static_cast<int>(ruler.getCameraMultipleFrame(station.colors(), station.depths())));
    outcome.returned.push_back(ruler.measureMultiple(30.0F, 30.0F, 30.0F));
    outcome.readings.push_back(ruler.result);
    const std::string settings = ruler.paramDir + "/ruler.yml";
    outcome.returned.push_back(static_cast<int>(ruler.saveRulerParam(settings)));
    outcome.returned.push_back(static_cast<int>(ruler.loadRulerParam(settings, calibrationArea, detectArea)));
    return outcome;
}

::testing::AssertionResult sameOutcome(const Outcome& a, const Outcome& b) {
    if (a.returned != b.returned) {
        return ::testing::AssertionFailure() << "returned values differ";
    }
    if (a.readings.size() != b.readings.size()) {
        return ::testing::AssertionFailure() << a.readings.size() << " and " << b.readings.size() << " readings";
    }
    for (std::size_t i = 0; i < a.readings.size(); ++i) {
        const ::testing::AssertionResult same = sameResult(a.readings[i], b.readings[i]);
        if (!same) {
            return ::testing::AssertionFailure() << "reading " << i << ": " << same.message();
        }
    }
    return sameRuler(a.ruler, b.ruler);
}

}  // namespace quorvel::test
