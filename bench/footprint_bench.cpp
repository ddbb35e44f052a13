// SPDX-License-Identifier: Apache-2.0
// From the surface points to the record, and two of its parts: the height quantile and the test of the detection area.
#include <array>
#include <memory>
#include <vector>

#include "bench_scene.h"
#include "library/fast_forms.h"
#include "library/plain/detection_area.h"
#include "library/plain/footprint.h"
#include "library/plain/object_points.h"
#include "measure/detection_area.h"
#include "measure/footprint.h"
#include "measure/object_points.h"
#include "stage_input.h"
#include "support/random.h"
#include "work.h"

namespace quorvel::bench {

namespace {

const cv::Size kSize(640, 480);

template <typename Measure>
Run footprint(Measure measure) {
    auto result = std::make_shared<MeasureResult>();
    const MeasureInput& input = measureInput();
    return {[] {}, [result, &input, measure] { *result = measure(input); },
            [result] { return static_cast<double>(result->length) + static_cast<double>(result->height); }};
}

MeasureResult footprintPlain(const MeasureInput& input) {
    return test::plain::measureFootprint(input.surfaceCloud, input.footprint);
}

MeasureResult footprintFast(const MeasureInput& input) {
    return test::fast::measureFootprint(input.surfaceCloud, input.footprint);
}

constexpr std::size_t kHeights = 50000;  // the top of the parcel has as many

std::vector<float> randomHeights() {
    test::Draws draws(1);
    std::vector<float> heights(kHeights);
    for (float& height : heights) {
        height = 150.0F + static_cast<float>(draws.below(10000)) / 1000.0F;
    }
    return heights;
}

template <typename Quantile>
Run heightQuantile(Quantile quantile) {
    struct State {
        std::vector<float> original = randomHeights();
        std::vector<float> heights;
        float found = 0.0F;
    };
    auto state = std::make_shared<State>();
    return {[state] { state->heights = state->original; },
            [state, quantile] { state->found = quantile(state->heights); },
            [state] { return static_cast<double>(state->found); }};
}

template <typename Meets>
Run detectionArea(Meets meets) {
    const std::array<cv::Point2f, 4> face{cv::Point2f(200.0F, 150.0F), cv::Point2f(420.0F, 170.0F),
                                          cv::Point2f(400.0F, 330.0F), cv::Point2f(180.0F, 310.0F)};
    auto found = std::make_shared<bool>(false);
    return {[] {}, [found, face, meets] { *found = meets(face, cv::Rect(256, 192, 128, 96), kSize); },
            [found] { return *found ? 1.0 : 0.0; }};
}

}  // namespace

Works footprintWorks() {
    const std::string point = sizeName(kSize);
    return {
        {"footprint", point, 12 * pixelCounts(kSize).full, [] { return footprint(footprintPlain); },
         [] { return footprint(footprintFast); }},
        {"height-quantile", point, sizeof(float) * static_cast<double>(kHeights),
         [] { return heightQuantile([](std::vector<float>& h) { return test::plain::heightQuantile(h); }); },
         [] {
             return heightQuantile([](std::vector<float>& h) { return internal::heightQuantile(h.data(), h.size()); });
         }},
        {"detection-area", point, 0.0, [] { return detectionArea(test::plain::topFaceMeetsRegion); },
         [] { return detectionArea(internal::topFaceMeetsRegion); }}};
}

}  // namespace quorvel::bench
