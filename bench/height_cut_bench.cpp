// SPDX-License-Identifier: Apache-2.0
// Ground removal and height cut on the small images.
#include <memory>

#include "bench_scene.h"
#include "library/fast_forms.h"
#include "library/plain/height_cut.h"
#include "measure/ground_removal.h"
#include "measure/height_cut.h"
#include "stage_input.h"
#include "work.h"

namespace quorvel::bench {

namespace {

constexpr float kWeight = 0.0F;

struct State {
    cv::Mat depth;
    cv::Mat mask;
};

template <typename Remove, typename Cut>
Run heightCut(Remove remove, Cut cut) {
    auto state = std::make_shared<State>();
    const MeasureInput& input = measureInput();
    return {[state, &input] {
                state->depth = input.depthSmall.clone();
                state->mask = cv::Mat::zeros(state->depth.size(), CV_8UC1);
            },
            [state, &input, remove, cut] {
                remove(state->depth, kWeight, input.offset);
                cut(state->depth, input.cloudSmall, input.normal, input.offset, input.minHeight, state->mask);
            },
            [state] { return cv::sum(state->depth)[0] + cv::countNonZero(state->mask); }};
}

}  // namespace

Works heightCutWorks() {
    const cv::Size size(640, 480);
    Work work;
    work.name = "height-cut";
    work.point = sizeName(size);
    work.bytes = (2 + 12 + 2 + 1) * pixelCounts(size).small;
    work.plain = [] { return heightCut(test::plain::removeGround, test::plain::cutAboveReferencePlane); };
    work.fast = [] { return heightCut(internal::removeGround, test::fast::cutAboveReferencePlane); };
    return {work};
}

}  // namespace quorvel::bench
