// SPDX-License-Identifier: Apache-2.0
// Any bytes as a ruler parameter file. The first byte chooses the file's name, which must not matter.
#include "files/parameter_file.h"

#include <array>
#include <cmath>
#include <filesystem>
#include <string>

#include <opencv2/core.hpp>

#include <quorvel/quorvel.h>

#include "fuzz/input.h"
#include "fuzz/target.h"
#include "support/same_bits.h"

namespace quorvel::fuzz {

namespace {

using internal::RulerParameters;

bool same(const RulerParameters& a, const RulerParameters& b) {
    return a.calibrationArea == b.calibrationArea && a.detectArea == b.detectArea &&
           test::sameBits(a.groundWeight, b.groundWeight);
}

/// The values that were read can be written in every format and read back from it.
void requireRoundTrips(const RulerParameters& parameters) {
    for (const std::string path : {"written.yml", "written.xml", "written.json"}) {
        require(internal::writeRulerParameters(path, parameters), path + " cannot be written");
        const std::optional<RulerParameters> again = internal::readRulerParameters(path);
        require(again.has_value(), path + " cannot be read");
        require(same(*again, parameters), path + " holds other parameters than were written");
    }
}

/// \return whether the ruler took the file; an invalid document must change nothing
bool loadedBy(Quorvel& ruler, const std::string& path) {
    const cv::Rect before(1, 2, 3, 4);
    ruler.calibrationRoI = before;
    ruler.effectiveRegion = before;
    ruler.filterWeight = 0.5F;
    cv::Rect calibrationArea = before;
    cv::Rect detectArea = before;
    bool loaded = false;
    try {
        loaded = ruler.loadRulerParam(path, calibrationArea, detectArea);
    } catch (const cv::Exception&) {
        loaded = false;
    }
    require(calibrationArea == ruler.calibrationRoI && detectArea == ruler.effectiveRegion,
            "what is handed out is not what the ruler holds");
    require(loaded || (calibrationArea == before && detectArea == before && ruler.filterWeight == 0.5F),
            "a file that was not read changed something");
    return loaded;
}

}  // namespace

}  // namespace quorvel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace quorvel::fuzz;
    prepareProcess();
    Input input(data, size);
    const std::array<std::string, 4> names{"read.yml", "read.xml", "read.json", "read.yml.gz"};
    const std::string path = input.oneOf(names);
    writeFile(path, input.rest());
    std::optional<RulerParameters> read;
    try {
        read = quorvel::internal::readRulerParameters(path);
    } catch (const cv::Exception&) {
        read = std::nullopt;
    }
    static Quorvel ruler(500.0F, 500.0F, 320.0F, 240.0F, 640, 480, false, "");
    require(loadedBy(ruler, path) == read.has_value(),
            "the ruler reads what the reader refuses, or the other way round");
    if (read) {
        require(same({ruler.calibrationRoI, ruler.effectiveRegion, ruler.filterWeight}, *read),
                "the ruler holds other parameters than the file");
        requireRoundTrips(*read);
    }
    std::filesystem::remove(path);
    return 0;
}
