// SPDX-License-Identifier: Apache-2.0
// Records every number that a host gets from the whole pipeline, for many scenes in every mode. Two builds agree
// when their records are the same file.
//
// One difference between builds is known and lies outside these scenes. cv::RotatedRect::points() takes the cosine of
// 90 degrees from the C library: 6.12323e-17 from glibc, 6.12303e-17 from mingw-w64. Either vanishes in a sum with
// anything but 0, so it shows in MeasureResult::corners alone, for a camera with cx = 0 that looks straight down on an
// axis-parallel object at x = 0: about 1e-15 pixels, which differ by 3e-5 of that.
#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

#include <quorvel/quorvel.h>

#include "numbers/exact_scene.h"
#include "numbers/member_record.h"
#include "sim/presets.h"
#include "sim/render.h"
#include "support/captured_output.h"
#include "support/loop_variant_name.h"
#include "support/own_rand.h"
#include "support/random.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

struct Mode {
    ProductType type;
    const char* name;
};

// KIOSK_LOW_OBJECT comes last: it loads the plane that the modes before it have stored.
constexpr Mode kModes[] = {{KIOSK, "KIOSK"},
                           {GROUND_TRACKING, "GROUND_TRACKING"},
                           {GROUND_GROWING, "GROUND_GROWING"},
                           {KIOSK_LOW_OBJECT, "KIOSK_LOW_OBJECT"}};

/// What a host shows the ruler, one frame after another.
struct Session {
    std::string name;
    std::uint32_t seed = 0;
    float fx = 0.0F;
    float fy = 0.0F;
    float cx = 0.0F;
    float cy = 0.0F;
    ExactFrame empty;
    std::array<ExactFrame, 4> occupied;
};

Session exactSession(std::uint32_t seed) {
    const ExactScene scene(seed);
    return {"scene " + std::to_string(seed),
            seed,
            scene.focalX(),
            scene.focalY(),
            scene.centreX(),
            scene.centreY(),
            scene.empty(0),
            {scene.occupied(1), scene.occupied(2), scene.occupied(3), scene.occupied(4)}};
}

ExactFrame simulated(const sim::Frame& frame) {
    return {frame.color, frame.depth};
}

Session presetSession(const std::string& name) {
    const sim::Scene scene = sim::preset(name);
    const sim::Camera& camera = scene.camera;
    return {"preset " + name,
            scene.seed,
            static_cast<float>(camera.fx),
            static_cast<float>(camera.fy),
            static_cast<float>(camera.cx),
            static_cast<float>(camera.cy),
            simulated(sim::renderEmpty(scene, 0)),
            {simulated(sim::render(scene, 1)), simulated(sim::render(scene, 2)), simulated(sim::render(scene, 3)),
             simulated(sim::render(scene, 4))}};
}

/// The lines of the calibration file, without the line ends, which depend on the platform.
void recordCalibrationFile(MemberRecord& record) {
    std::ifstream file("param/cal.txt");
    for (std::string line; std::getline(file, line);) {
        record.value("cal.txt", line);
    }
}

void applySettings(Quorvel& ruler, Draws& draw) {
    cv::Rect region;
    ruler.setCalibrationRoI(static_cast<float>(draw.between(500, 900)) / 1000.0F, region);
    ruler.setEffectiveRegionInArea(static_cast<float>(draw.between(100, 1200)) / 1000.0F, region);
    if (draw.between(0, 2) == 0) {
        ruler.setCameraType(true, draw.between(0, 200));
    }
}

void recordBatch(MemberRecord& record, Quorvel& ruler, const Session& session) {
    const auto& frames = session.occupied;
    record.value("getCameraMultipleFrame",
                 static_cast<int>(ruler.getCameraMultipleFrame({frames[1].color, frames[2].color, frames[3].color},
                                                               {frames[1].depth, frames[2].depth, frames[3].depth})));
    record.members("getCameraMultipleFrame", ruler);
    record.value("measureMultiple", ruler.measureMultiple(20.0F, 20.0F, 20.0F));
    record.members("measureMultiple", ruler);
}

void recordFrame(MemberRecord& record, Quorvel& ruler, const ExactFrame& frame) {
    record.value("getCameraFrame", static_cast<int>(ruler.getCameraFrame(frame.color, frame.depth)));
    record.members("getCameraFrame", ruler);
}

void recordMeasurement(MemberRecord& record, Quorvel& ruler, const ExactFrame& frame) {
    recordFrame(record, ruler, frame);
    record.value("measureOnce", ruler.measureOnce());
    record.members("measureOnce", ruler);
}

void recordMode(MemberRecord& record, const Session& session, const Mode& mode) {
    Draws draw(session.seed);
    seedOwnRand(session.seed);
    record.begin(session.name + ", " + mode.name);
    const CapturedOutput printed;
    Quorvel ruler(session.fx, session.fy, session.cx, session.cy, session.empty.depth.cols, session.empty.depth.rows,
                  false, "");
    record.members("construction", ruler);
    ruler.setDebugMode(true);
    record.value("setProductType", ruler.setProductType(mode.type));
    record.members("setProductType", ruler);
    applySettings(ruler, draw);
    record.members("the settings", ruler);
    recordFrame(record, ruler, session.empty);
    float t = 0.0F;
    record.value("calibRef", ruler.calibRef(t, static_cast<float>(draw.between(-3, 3))));
    record.value("t", t);
    record.members("calibRef", ruler);
    recordCalibrationFile(record);
    recordMeasurement(record, ruler, session.occupied[0]);
    recordBatch(record, ruler, session);
    // Weights of both signs: one that takes the low parts of an object away, one that keeps the far ground.
    ruler.setFilterWeight(static_cast<float>(draw.between(-50, 20)) / 1000.0F);
    record.members("setFilterWeight", ruler);
    recordMeasurement(record, ruler, session.occupied[1]);
    record.value("ransacCalibRef", ruler.ransacCalibRef());
    record.members("ransacCalibRef", ruler);
    recordMeasurement(record, ruler, session.occupied[2]);
    std::string lines = printed.text();
    std::replace(lines.begin(), lines.end(), '\n', '|');
    record.value("printed", lines);
}

/// \return how many numbers the plane fits of KIOSK drew from our generator
std::uint64_t recordSession(MemberRecord& record, const Session& session) {
    std::filesystem::remove_all("param");
    std::uint64_t drawnInKiosk = 0;
    for (const Mode& mode : kModes) {
        const std::uint64_t before = ownRandCalls();
        recordMode(record, session, mode);
        const std::uint64_t drawn = ownRandCalls() - before;
        record.value("random numbers drawn", std::to_string(drawn));
        if (mode.type == KIOSK) {
            drawnInKiosk = drawn;
        }
    }
    return drawnInKiosk;
}

bool numberFrom(const char* text, std::uint32_t& number) {
    const char* end = text + std::strlen(text);
    const auto read = std::from_chars(text, end, number);
    return read.ec == std::errc() && read.ptr == end;
}

int usage() {
    std::cerr << "usage: number_record OUTPUT scenes FIRST COUNT\n       number_record OUTPUT presets\n";
    return 2;
}

int recordAll(const std::string& path, const std::vector<std::string>& presets, std::uint32_t first,
              std::uint32_t count) {
    // The line ends are the same on every platform: the files are compared byte by byte.
    std::ofstream out(path, std::ios::binary);
    MemberRecord record(out);
    const WorkingDirectory folder;
    std::uint64_t drawn = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
        drawn += recordSession(record, exactSession(first + i));
    }
    for (const std::string& name : presets) {
        drawn += recordSession(record, presetSession(name));
    }
    out.close();
    if (!out) {
        std::cerr << "number_record: " << path << " cannot be written\n";
        return 1;
    }
    if (drawn == 0) {
        std::cerr << "number_record: no plane fit of KIOSK drew from the program's own rand()\n";
        return 1;
    }
    return 0;
}

int run(const std::vector<const char*>& arguments) {
    if (arguments.size() == 2 && std::string(arguments[1]) == "presets") {
        return recordAll(arguments[0], sim::presetNames(), 0, 0);
    }
    std::uint32_t first = 0;
    std::uint32_t count = 0;
    if (arguments.size() != 4 || std::string(arguments[1]) != "scenes" || !numberFrom(arguments[2], first) ||
        !numberFrom(arguments[3], count)) {
        return usage();
    }
    return recordAll(arguments[0], {}, first, count);
}

}  // namespace

}  // namespace quorvel::test

int main(int argc, char** argv) {
    try {
        std::cout << "pixel loops: " << quorvel::test::nameOf(quorvel::internal::loopVariant()) << '\n';
        return quorvel::test::run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << "number_record: " << error.what() << '\n';
        return 1;
    }
}
