// SPDX-License-Identifier: Apache-2.0
// Choice of the object among the regions of the small image.
#include <memory>

#include "bench_scene.h"
#include "library/fast_forms.h"
#include "library/plain/object_component.h"
#include "measure/object_component.h"
#include "stage_input.h"
#include "work.h"

namespace quorvel::bench {

namespace {

template <typename Select>
Run component(Select select) {
    auto mask = std::make_shared<cv::Mat>();
    const MeasureInput& input = measureInput();
    return {[mask, &input] { *mask = input.cutMask.clone(); },
            [mask, &input, select] { select(input.cutDepth, input.minPixels, *mask); },
            [mask] { return static_cast<double>(cv::countNonZero(*mask)); }};
}

}  // namespace

Works componentWorks() {
    const cv::Size size(640, 480);
    Work work;
    work.name = "component";
    work.point = sizeName(size);
    work.bytes = (2 + 1 + 1) * pixelCounts(size).small;
    work.plain = [] { return component(test::plain::selectObjectComponent); };
    work.fast = [] { return component(test::fast::selectObjectComponent); };
    return {work};
}

}  // namespace quorvel::bench
