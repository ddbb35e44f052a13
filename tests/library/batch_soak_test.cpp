// SPDX-License-Identifier: Apache-2.0
#include <fstream>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "library/frame_draws.h"
#include "support/quarantine.h"

namespace quorvel::test {

namespace {

/// Pages of 4096 bytes are the smallest there are; where they are larger the slack is larger as well.
constexpr long kSlackPages = 4L * 1024 * 1024 / 4096;

/// \return resident memory of this process in pages; 0 where the system does not tell
long residentPages() {
    std::ifstream file("/proc/self/statm");
    long size = 0;
    long resident = 0;
    return file >> size >> resident ? resident : 0;
}

/// Grabs and measures batches of 5 new frames each, one of three of them in vain.
void runBatches(Quorvel& ruler, const DepthScene& scene, Draws& draws, int count) {
    for (int i = 0; i < count; ++i) {
        const Batch batch = sceneBatch(scene, draws, 5);
        ASSERT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths));
        if (i % 3 != 2) {
            ASSERT_EQ(ruler.measureMultiple(50, 50, 50), 0) << "batch " << i;
        }
    }
}

TEST(BatchSoak, NeedsNoMoreMemoryAfterAThousandBatches) {
    if (residentPages() == 0) {
        GTEST_SKIP() << "the system does not tell how much memory a process has";
    }
    if (kKeepsFreedMemory) {
        GTEST_SKIP() << "the address sanitizer keeps freed memory";
    }
    const DepthScene scene = blockScene(200);
    Draws draws(54);
    Quorvel ruler = scene.ruler();
    setPlane(ruler, {0, 0, 1}, scene.distance, 5);
    ruler.effectiveRegion = cv::Rect(cv::Point(0, 0), scene.size);
    runBatches(ruler, scene, draws, 10);
    const long before = residentPages();
    runBatches(ruler, scene, draws, 990);
    // A batch holds 5 * (9 + 6) kB of frames, 5 * 36 kB of clouds and more: 990 of them would be 250 MB.
    EXPECT_LE(residentPages(), before + kSlackPages) << "pages, " << before << " of them after 10 batches";
}

}  // namespace

}  // namespace quorvel::test
