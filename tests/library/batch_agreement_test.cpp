// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <vector>

#include <gtest/gtest.h>

#include "library/measure_draws.h"
#include "library/same_result.h"
#include "measure/batch_account.h"

namespace quorvel::test {

namespace {

using BatchTolerances = internal::Sizes;

/// The account of a frame that ended with this record.
internal::MeasureAccount accountFor(const MeasureResult& record) {
    internal::MeasureAccount account;
    account.outcome =
        record.inView && !record.corners.empty() ? internal::Outcome::Measured : internal::Outcome::OutOfView;
    account.footprint.sizes = {record.length, record.width, record.height};
    return account;
}

internal::BatchAccount judge(const std::vector<MeasureResult>& records, const BatchTolerances& tolerances) {
    std::vector<internal::MeasureAccount> frames;
    std::transform(records.begin(), records.end(), std::back_inserter(frames), accountFor);
    return internal::judgeBatch(frames, tolerances);
}

bool recordsAgree(const std::vector<MeasureResult>& records, const BatchTolerances& tolerances) {
    return judge(records, tolerances).outcome == internal::BatchOutcome::Agreed;
}

/// The last record with the mean sizes of all.
MeasureResult meanRecord(const std::vector<MeasureResult>& records) {
    std::vector<internal::Sizes> sizes;
    for (const MeasureResult& record : records) {
        sizes.push_back({record.length, record.width, record.height});
    }
    const internal::Sizes mean = internal::meanSizes(sizes);
    MeasureResult result = records.back();
    result.length = mean.length;
    result.width = mean.width;
    result.height = mean.height;
    return result;
}

/// One of the three sizes that a batch compares, with its tolerance.
struct NamedSize {
    const char* name;
    float MeasureResult::*size;
    float BatchTolerances::*tolerance;
};

const std::array<NamedSize, 3> kDimensions{{{"length", &MeasureResult::length, &BatchTolerances::length},
                                            {"width", &MeasureResult::width, &BatchTolerances::width},
                                            {"height", &MeasureResult::height, &BatchTolerances::height}}};

/// A record in view with eight corners.
MeasureResult usable(float length = 300, float width = 200, float height = 100) {
    return {std::vector<cv::Point2f>(8, cv::Point2f(1, 2)), length, width, height, true, true, 0};
}

/// Records that differ in one size only.
std::vector<MeasureResult> spread(const NamedSize& dimension, const std::vector<float>& sizes) {
    std::vector<MeasureResult> records;
    for (const float size : sizes) {
        records.push_back(usable());
        records.back().*dimension.size = size;
    }
    return records;
}

/// Tolerances of 50 mm but for one.
BatchTolerances only(const NamedSize& dimension, float tolerance) {
    BatchTolerances tolerances{50, 50, 50};
    tolerances.*dimension.tolerance = tolerance;
    return tolerances;
}

TEST(RecordsAgree, PassesADifferenceEqualToItsToleranceAndNoneAbove) {
    for (const NamedSize& dimension : kDimensions) {
        const float limit = 4;
        const BatchTolerances tolerances = only(dimension, limit);
        const float below = std::nextafter(104.0F, 0.0F);
        const float above = std::nextafter(104.0F, 200.0F);
        EXPECT_TRUE(recordsAgree(spread(dimension, {100, below}), tolerances)) << dimension.name;
        EXPECT_TRUE(recordsAgree(spread(dimension, {100, 104}), tolerances)) << dimension.name;
        EXPECT_TRUE(recordsAgree(spread(dimension, {104, 100}), tolerances)) << dimension.name;
        EXPECT_FALSE(recordsAgree(spread(dimension, {100, above}), tolerances)) << dimension.name;
        EXPECT_FALSE(recordsAgree(spread(dimension, {above, 100}), tolerances)) << dimension.name;
    }
}

TEST(RecordsAgree, ComparesEachSizeWithItsOwnTolerance) {
    for (const NamedSize& dimension : kDimensions) {
        const std::vector<MeasureResult> records = spread(dimension, {100, 105});
        EXPECT_FALSE(recordsAgree(records, only(dimension, std::nextafter(5.0F, 0.0F)))) << dimension.name;
        EXPECT_TRUE(recordsAgree(records, only(dimension, 5))) << dimension.name;
        BatchTolerances others{0, 0, 0};
        others.*dimension.tolerance = 5;
        EXPECT_TRUE(recordsAgree(records, others)) << "the other sizes are equal: " << dimension.name;
    }
}

TEST(RecordsAgree, TakesTheSpreadOfTheWholeBatchNotThatOfNeighbours) {
    for (const NamedSize& dimension : kDimensions) {
        for (const std::vector<float>& sizes :
             {std::vector<float>{100, 102, 104}, {102, 100, 104}, {104, 102, 100}, {102, 104, 102, 100}}) {
            EXPECT_TRUE(recordsAgree(spread(dimension, sizes), only(dimension, 4.0F))) << dimension.name;
            EXPECT_FALSE(recordsAgree(spread(dimension, sizes), only(dimension, 3.9F))) << dimension.name;
        }
    }
}

TEST(RecordsAgree, FailsForOneDisagreeingFrameInAnyPlace) {
    for (const NamedSize& dimension : kDimensions) {
        for (std::size_t at = 0; at < 5; ++at) {
            std::vector<float> sizes(5, 100.0F);
            sizes[at] = 106;
            EXPECT_FALSE(recordsAgree(spread(dimension, sizes), only(dimension, 5))) << dimension.name << " " << at;
            EXPECT_TRUE(recordsAgree(spread(dimension, sizes), only(dimension, 6))) << dimension.name << " " << at;
        }
    }
}

TEST(RecordsAgree, FailsForARecordOutOfViewOrWithoutCornersInAnyPlace) {
    for (std::size_t at = 0; at < 4; ++at) {
        std::vector<MeasureResult> outOfView(4, usable());
        outOfView[at].inView = false;
        EXPECT_FALSE(recordsAgree(outOfView, {50, 50, 50})) << at;
        std::vector<MeasureResult> cornerless(4, usable());
        cornerless[at].corners.clear();
        EXPECT_FALSE(recordsAgree(cornerless, {50, 50, 50})) << at;
        std::vector<MeasureResult> offTarget(4, usable());
        offTarget[at].onTarget = false;
        offTarget[at].sideMargin = 999;
        offTarget[at].corners.resize(1);
        EXPECT_TRUE(recordsAgree(offTarget, {0, 0, 0})) << "neither the flag nor the margin is compared: " << at;
    }
}

TEST(RecordsAgree, NeedsNoSecondRecord) {
    EXPECT_TRUE(recordsAgree({usable()}, {0, 0, 0}));
    EXPECT_TRUE(recordsAgree({usable()}, {-1, -1, -1})) << "nothing to compare with";
    EXPECT_TRUE(recordsAgree({usable(kNaN, kNaN, kNaN)}, {0, 0, 0}));
    MeasureResult outOfView = usable();
    outOfView.inView = false;
    EXPECT_FALSE(recordsAgree({outOfView}, {50, 50, 50}));
    EXPECT_FALSE(recordsAgree({MeasureResult{}}, {50, 50, 50}));
}

TEST(RecordsAgree, TakesZeroAndNegativeTolerancesAsTheyAre) {
    for (const NamedSize& dimension : kDimensions) {
        EXPECT_TRUE(recordsAgree(spread(dimension, {100, 100, 100}), only(dimension, 0))) << dimension.name;
        EXPECT_FALSE(recordsAgree(spread(dimension, {100, std::nextafter(100.0F, 0.0F)}), only(dimension, 0)))
            << dimension.name;
        EXPECT_FALSE(recordsAgree(spread(dimension, {100, 100}), only(dimension, -1))) << dimension.name;
        EXPECT_TRUE(recordsAgree(spread(dimension, {100, 100}), only(dimension, -0.0F))) << dimension.name;
    }
}

TEST(RecordsAgree, NeverExceedsAToleranceWhereOneOfTheTwoIsNoNumber) {
    // A comparison with NaN is false, so nothing disagrees.
    for (const NamedSize& dimension : kDimensions) {
        EXPECT_TRUE(recordsAgree(spread(dimension, {100, kNaN}), only(dimension, 0))) << dimension.name;
        EXPECT_TRUE(recordsAgree(spread(dimension, {kNaN, 100}), only(dimension, 0))) << dimension.name;
        EXPECT_TRUE(recordsAgree(spread(dimension, {100, 900}), only(dimension, kNaN))) << dimension.name;
        EXPECT_TRUE(recordsAgree(spread(dimension, {kInfinity, kInfinity}), only(dimension, 0))) << dimension.name;
        EXPECT_FALSE(recordsAgree(spread(dimension, {100, kInfinity}), only(dimension, 50))) << dimension.name;
        EXPECT_TRUE(recordsAgree(spread(dimension, {100, kInfinity}), only(dimension, kInfinity))) << dimension.name;
        EXPECT_FALSE(recordsAgree(spread(dimension, {100, kNaN, 200}), only(dimension, 50)))
            << "the two others still disagree: " << dimension.name;
    }
}

TEST(RecordsAgree, FindsTheSameAsTheLargestAndTheSmallestSize) {
    // With finite sizes every pair agrees exactly when the extremes do: rounding keeps the order of differences.
    Draws draws(421);
    int agreeing = 0;
    for (int run = 0; run < 2000; ++run) {
        std::vector<MeasureResult> records;
        const int count = draws.between(1, 6);
        records.reserve(6);
        for (int i = 0; i < count; ++i) {
            const cv::Vec3f sizes{draws.real(300, 305), draws.real(200, 205), draws.real(100, 105)};
            records.push_back(usable(sizes[0], sizes[1], sizes[2]));
        }
        const BatchTolerances tolerances{draws.real(2, 6), draws.real(2, 6), draws.real(2, 6)};
        bool expected = true;
        for (const NamedSize& dimension : kDimensions) {
            float low = records.front().*dimension.size;
            float high = low;
            for (const MeasureResult& record : records) {
                low = std::min(low, record.*dimension.size);
                high = std::max(high, record.*dimension.size);
            }
            expected = expected && high - low <= tolerances.*dimension.tolerance;
        }
        ASSERT_EQ(recordsAgree(records, tolerances), expected) << "run " << run;
        agreeing += expected ? 1 : 0;
    }
    EXPECT_GT(agreeing, 300);
    EXPECT_LT(agreeing, 1700);
}

TEST(MeanRecord, OfOneRecordIsThatRecord) {
    const MeasureResult record{{{1, 2}, {3, 4}}, 0.1F, 0.7F, 123.456F, true, false, 9};
    EXPECT_TRUE(sameResult(meanRecord({record}), record));
}

TEST(MeanRecord, TakesEverythingButTheSizesFromTheLastRecord) {
    MeasureResult first = usable(300, 200, 100);
    MeasureResult last{{{5, 6}, {7, 8}, {9, 10}}, 306, 204, 101, true, false, 12};
    const MeasureResult mean = meanRecord({first, last});
    EXPECT_TRUE(sameResult(mean, {last.corners, 303, 202, 100.5F, true, false, 12}));
    first.inView = false;
    first.onTarget = false;
    last.onTarget = true;
    EXPECT_TRUE(meanRecord({first, last}).onTarget);
    EXPECT_TRUE(meanRecord({first, last}).inView);
    EXPECT_FALSE(meanRecord({last, first}).inView);
}

TEST(MeanRecord, SumsInFloatAndInOrder) {
    // 2^24 + 1 + 1 stays 2^24 in float; in the other order it becomes 2^24 + 2.
    const float big = 16777216.0F;
    EXPECT_EQ(meanRecord({usable(big, 1, 1), usable(1, big, 1), usable(1, 1, big)}).length, big / 3.0F);
    EXPECT_EQ(meanRecord({usable(1, 1, big), usable(1, 1, 1), usable(big, 1, 1)}).length, 16777218.0F / 3.0F);
    EXPECT_EQ(meanRecord({usable(1, 1, 1), usable(1, 1, 1), usable(1, big, 1)}).width, 16777218.0F / 3.0F);
    EXPECT_EQ(meanRecord({usable(1, 1, big), usable(1, 1, 1), usable(1, 1, 1)}).height, big / 3.0F);
}

TEST(MeanRecord, AgreesWithAPlainLoopForRandomSizes) {
    Draws draws(422);
    for (int run = 0; run < 500; ++run) {
        std::vector<MeasureResult> records;
        const int count = draws.between(1, 40);
        records.reserve(40);
        for (int i = 0; i < count; ++i) {
            const cv::Vec3f sizes{draws.real(-1e4F, 1e6F), draws.real(0, 1), draws.real(0, 1000)};
            records.push_back(usable(sizes[0], sizes[1], sizes[2]));
        }
        std::array<float, 3> sums{};
        for (const MeasureResult& record : records) {
            sums[0] += record.length;
            sums[1] += record.width;
            sums[2] += record.height;
        }
        const auto number = static_cast<float>(count);
        const MeasureResult expected = usable(sums[0] / number, sums[1] / number, sums[2] / number);
        ASSERT_TRUE(sameResult(meanRecord(records), expected)) << "run " << run << ", " << count << " records";
    }
}

TEST(MeanRecord, IsNoNumberWhereOneSizeIsNone) {
    const MeasureResult mean = meanRecord({usable(300, 200, 100), usable(kNaN, 200, kInfinity)});
    EXPECT_TRUE(std::isnan(mean.length));
    EXPECT_EQ(mean.width, 200.0F);
    EXPECT_EQ(mean.height, kInfinity);
}

TEST(JudgeBatch, NamesTheFirstTwoFramesThatDisagreeAndInWhat) {
    const internal::BatchAccount account =
        judge({usable(300, 200, 100), usable(301, 200, 103), usable(310, 200, 104)}, {5, 5, 3.5F});
    EXPECT_EQ(account.outcome, internal::BatchOutcome::FramesDisagree);
    ASSERT_TRUE(account.disagreement);
    EXPECT_EQ(account.disagreement->first, 0U);
    EXPECT_EQ(account.disagreement->second, 2U);
    EXPECT_EQ(account.disagreement->dimension, internal::Dimension::Height) << "compared before width and length";
    EXPECT_EQ(account.disagreement->difference, 4.0F);
    EXPECT_EQ(account.disagreement->tolerance, 3.5F);
    ASSERT_TRUE(account.spread);
    EXPECT_EQ(account.spread->length, 10.0F);
    EXPECT_EQ(account.spread->width, 0.0F);
    EXPECT_EQ(account.spread->height, 4.0F);
}

TEST(JudgeBatch, AFrameWithoutAnObjectComesBeforeOneWithoutSizes) {
    std::vector<internal::MeasureAccount> frames{accountFor(usable()), accountFor(usable()), accountFor(usable())};
    frames[1].outcome = internal::Outcome::MissesArea;
    internal::BatchAccount account = internal::judgeBatch(frames, {5, 5, 5});
    EXPECT_EQ(account.outcome, internal::BatchOutcome::FrameWithoutSizes);
    EXPECT_EQ(account.spoiler, 1U);
    EXPECT_FALSE(account.spread);
    frames[2].outcome = internal::Outcome::RegionTooSmall;
    account = internal::judgeBatch(frames, {5, 5, 5});
    EXPECT_EQ(account.outcome, internal::BatchOutcome::FrameNotMeasured);
    EXPECT_EQ(account.spoiler, 2U);
}

TEST(JudgeBatch, AnEmptyBatchHasNoFrames) {
    EXPECT_EQ(internal::judgeBatch({}, {5, 5, 5}).outcome, internal::BatchOutcome::NoFrames);
}

}  // namespace

}  // namespace quorvel::test
