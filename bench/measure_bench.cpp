// SPDX-License-Identifier: Apache-2.0
// The measuring stages beside their plain forms. Each benchmark pair does the same work on the same input.
#include <array>
#include <iostream>
#include <random>
#include <sstream>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench_scene.h"
#include "library/plain/detection_area.h"
#include "library/plain/object_component.h"
#include "library/plain/object_points.h"
#include "library/plain/surface_filter.h"
#include "measure/detection_area.h"
#include "measure/object_component.h"
#include "measure/object_points.h"
#include "measure/surface_filter.h"

namespace quorvel::bench {

namespace {

/// A depth image of squares, `count` of them in a row-major grid: one region each.
cv::Mat regionGrid(int count) {
    cv::Mat depth = cv::Mat::zeros(120, 160, CV_16UC1);
    for (int i = 0; i < count; ++i) {
        depth(cv::Rect(i % 26 * 6, i / 26 * 6, 5, 5)).setTo(800);
    }
    return depth;
}

template <typename Select>
void component(benchmark::State& state, Select select) {
    const cv::Mat depth = regionGrid(static_cast<int>(state.range(0)));
    const cv::Mat candidates = depth > 0;
    for (auto _ : state) {
        cv::Mat mask = candidates.clone();
        benchmark::DoNotOptimize(select(depth, 20, mask));
    }
}

void componentFast(benchmark::State& state) {
    component(state, internal::selectObjectComponent);
}
void componentPlain(benchmark::State& state) {
    component(state, test::plain::selectObjectComponent);
}
BENCHMARK(componentFast)->Arg(1)->Arg(100)->Arg(500);
BENCHMARK(componentPlain)->Arg(1)->Arg(100)->Arg(500);

/// The full cloud of a measured parcel, before the filter.
const cv::Mat& parcelCloud() {
    static const cv::Mat cloud = [] {
        Quorvel ruler = calibratedRuler(GROUND_GROWING);
        ruler.getCameraFrame(benchScene().occupied.color, benchScene().occupied.depth);
        cv::Mat object = ruler.pointCloud.clone();
        ruler.measureOnce();
        std::vector<cv::Mat> channels;
        cv::split(ruler.pointCloud, channels);
        object.setTo(cv::Scalar::all(0.0), channels[2] == 0.0);
        return object;
    }();
    return cloud;
}

template <typename Filter>
void surfaceFilter(benchmark::State& state, Filter filter) {
    for (auto _ : state) {
        state.PauseTiming();
        cv::Mat cloud = parcelCloud().clone();
        cv::Mat mask = cv::Mat::zeros(cloud.size(), CV_8UC1);
        state.ResumeTiming();
        filter(cloud, cv::Vec3f(0.0F, 0.0F, 1.0F), 1000.0F, mask);
        benchmark::DoNotOptimize(mask.data);
    }
}

void surfaceFilterFast(benchmark::State& state) {
    surfaceFilter(state, internal::filterSurfacePoints);
}
void surfaceFilterPlain(benchmark::State& state) {
    surfaceFilter(state, test::plain::filterSurfacePoints);
}
BENCHMARK(surfaceFilterFast)->Unit(benchmark::kMillisecond);
BENCHMARK(surfaceFilterPlain)->Unit(benchmark::kMillisecond);

std::vector<float> randomHeights(std::size_t count) {
    std::mt19937 generator(1);
    std::vector<float> heights(count);
    for (float& height : heights) {
        height = 150.0F + static_cast<float>(generator() % 10000U) / 1000.0F;
    }
    return heights;
}

void quantileFast(benchmark::State& state) {
    const std::vector<float> heights = randomHeights(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        std::vector<float> copy = heights;
        benchmark::DoNotOptimize(internal::heightQuantile(copy.data(), copy.size()));
    }
}
void quantilePlain(benchmark::State& state) {
    const std::vector<float> heights = randomHeights(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(test::plain::heightQuantile(heights));
    }
}
BENCHMARK(quantileFast)->Arg(50000)->Unit(benchmark::kMillisecond);
BENCHMARK(quantilePlain)->Arg(50000)->Unit(benchmark::kMillisecond);

template <typename Meets>
void detectionArea(benchmark::State& state, Meets meets) {
    const std::array<cv::Point2f, 4> face{cv::Point2f(200.0F, 150.0F), cv::Point2f(420.0F, 170.0F),
                                          cv::Point2f(400.0F, 330.0F), cv::Point2f(180.0F, 310.0F)};
    for (auto _ : state) {
        benchmark::DoNotOptimize(meets(face, cv::Rect(256, 192, 128, 96), cv::Size(640, 480)));
    }
}
void detectionAreaFast(benchmark::State& state) {
    detectionArea(state, internal::topFaceMeetsRegion);
}
void detectionAreaPlain(benchmark::State& state) {
    detectionArea(state, test::plain::topFaceMeetsRegion);
}
BENCHMARK(detectionAreaFast)->Unit(benchmark::kMicrosecond);
BENCHMARK(detectionAreaPlain)->Unit(benchmark::kMicrosecond);

}  // namespace

}  // namespace quorvel::bench
