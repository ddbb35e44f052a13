// SPDX-License-Identifier: Apache-2.0
// Normal colours of a full cloud, and the most frequent orientation among them.
#include <memory>

#include "bench_scene.h"
#include "calib/normal_map.h"
#include "library/plain/dominant_normal.h"
#include "library/plain/normal_map.h"
#include "stage_input.h"
#include "work.h"

namespace quorvel::bench {

namespace {

template <typename Compute>
Run normalMap(Compute compute) {
    auto map = std::make_shared<cv::Mat>();
    const FitInput& input = fitInput();
    return {[] {}, [map, &input, compute] { *map = compute(input.fullCloud); }, [map] { return cv::norm(*map); }};
}

template <typename Find>
Run dominantNormal(Find find) {
    auto bin = std::make_shared<cv::Vec3f>();
    const FitInput& input = fitInput();
    return {[] {}, [bin, &input, find] { *bin = find(input.fullMap); }, [bin] { return cv::norm(*bin); }};
}

cv::Vec3f dominantNormalFast(const cv::Mat& map) {
    return internal::dominantNormalBin(map);
}

}  // namespace

Works normalMapWorks() {
    const cv::Size size(640, 480);
    const double cloud = 12 * pixelCounts(size).full;
    return {{"normal-map", sizeName(size), 2 * cloud, [] { return normalMap(test::plain::computeNormalMap); },
             [] { return normalMap(internal::computeNormalMap); }},
            {"dominant-normal", sizeName(size), cloud, [] { return dominantNormal(test::plain::dominantNormalBin); },
             [] { return dominantNormal(dominantNormalFast); }}};
}

}  // namespace quorvel::bench
