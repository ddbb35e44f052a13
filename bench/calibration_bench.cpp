// SPDX-License-Identifier: Apache-2.0
// The plane fits beside their plain forms, on the empty surface, 80 % of 640 x 480.
#include <cstdlib>

#include <benchmark/benchmark.h>

#include "bench_scene.h"
#include "calib/dominant_normal.h"
#include "calib/normal_map.h"
#include "calib/ransac_plane.h"
#include "calib/region_growth.h"
#include "library/plain/ransac_plane.h"
#include "library/plain/region_growth.h"

namespace quorvel::bench {

namespace {

struct FitInput {
    cv::Mat fullCloud;
    cv::Mat fullMap;
    cv::Mat regionCloud;
    cv::Mat regionMap;
    cv::Vec3f bin;
};

const FitInput& fitInput() {
    static const FitInput input = [] {
        const Quorvel ruler = calibratedRuler(KIOSK);
        FitInput made{ruler.calibFullCloud,
                      internal::computeNormalMap(ruler.calibFullCloud),
                      ruler.calibCloud,
                      internal::computeNormalMap(ruler.calibCloud),
                      {}};
        internal::dominantNormalBin(made.regionMap, made.bin);
        return made;
    }();
    return input;
}

void ransacFast(benchmark::State& state) {
    const FitInput& input = fitInput();
    for (auto _ : state) {
        std::srand(1);
        cv::Vec3f normal;
        float offset = 0.0F;
        internal::ransacFitPlane(input.regionCloud, input.regionMap, input.bin, normal, offset);
        benchmark::DoNotOptimize(offset);
    }
}
void ransacPlain(benchmark::State& state) {
    const FitInput& input = fitInput();
    for (auto _ : state) {
        std::srand(1);
        cv::Vec3f normal;
        float offset = 0.0F;
        test::plain::ransacFitPlane(input.regionCloud, input.regionMap, input.bin, normal, offset);
        benchmark::DoNotOptimize(offset);
    }
}
BENCHMARK(ransacFast)->Unit(benchmark::kMillisecond);
BENCHMARK(ransacPlain)->Unit(benchmark::kMillisecond);

const cv::Vec3f kStraight(0.0F, 0.0F, 1.0F);

void growthFast(benchmark::State& state) {
    const FitInput& input = fitInput();
    for (auto _ : state) {
        cv::Mat cloud = input.regionCloud;
        internal::growPlaneRegion(input.fullCloud, input.fullMap, kStraight, cloud);
        benchmark::DoNotOptimize(cloud.data);
    }
}
void growthPlain(benchmark::State& state) {
    const FitInput& input = fitInput();
    for (auto _ : state) {
        const cv::Mat cloud =
            test::plain::growPlaneRegion(input.fullCloud, input.fullMap, kStraight, input.regionCloud);
        benchmark::DoNotOptimize(cloud.data);
    }
}
BENCHMARK(growthFast)->Unit(benchmark::kMillisecond);
BENCHMARK(growthPlain)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace quorvel::bench
