// SPDX-License-Identifier: Apache-2.0
#include "measure/account.h"

#include <map>

#include <gtest/gtest.h>

#include "library/depth_scene.h"
#include "library/plain/back_projection.h"
#include "library/same_result.h"
#include "ruler/measure_once.h"

namespace quorvel::test {

namespace {

using internal::AccountDetail;
using internal::MeasureAccount;
using internal::Outcome;

/// A ruler in GROUND_GROWING with a plane, and with the scene's frame taken in.
Quorvel rulerOf(const DepthScene& scene, Draws& draws) {
    Quorvel ruler = scene.ruler();
    ruler.productType = GROUND_GROWING;
    setPlane(ruler, {0, 0, 1}, scene.distance, 5);
    ruler.effectiveRegion = cv::Rect(cv::Point(0, 0), scene.size);
    ruler.getCameraFrame(scene.color(), scene.depth(draws));
    return ruler;
}

MeasureAccount accountOf(Quorvel& ruler, const AccountDetail& detail = {}) {
    const std::optional<MeasureAccount> account = internal::measureSingleShot(ruler, detail, nullptr);
    EXPECT_TRUE(account);
    return account.value_or(MeasureAccount());
}

class AccountTest : public ::testing::Test {
protected:
    Draws draws_{1};
    DepthScene scene_ = blockScene(200);
};

TEST_F(AccountTest, MeasuredHoldsTheNumbersOfEveryStage) {
    Quorvel ruler = rulerOf(scene_, draws_);
    AccountDetail detail;
    detail.survey = true;
    detail.regions = true;
    detail.times = true;
    const MeasureAccount account = accountOf(ruler, detail);
    EXPECT_EQ(account.outcome, Outcome::Measured);
    EXPECT_EQ(account.groundDepth, 1000.0F);
    EXPECT_EQ(account.minHeight, 10.0F);
    EXPECT_EQ(account.minPixels, 5);
    EXPECT_EQ(account.picture, scene_.size);
    // The block covers 24 x 16 pixels, 6 x 4 of the small picture.
    EXPECT_EQ(account.raisedPixels, 24);
    EXPECT_EQ(account.component.candidates, 24);
    EXPECT_EQ(account.component.regions, 1);
    EXPECT_EQ(account.component.largest, 24);
    EXPECT_EQ(account.component.sizes, std::vector<int>{24});
    ASSERT_TRUE(account.component.chosen);
    EXPECT_EQ(account.component.chosen->pixels, 24);
    EXPECT_EQ(account.component.chosen->bounds.size(), cv::Size(6, 4));
    EXPECT_EQ(account.footprint.points, 304U) << "22 x 14 without the corners";
    ASSERT_TRUE(account.footprint.box);
    EXPECT_EQ(account.footprint.box->rawHeight, 200.0F);
    EXPECT_EQ(account.footprint.box->topDistance, -200.0F);
    EXPECT_GT(account.footprint.box->rawSides.a, 0.0F);
    EXPECT_EQ(account.footprint.box->corners, ruler.result.corners);
    EXPECT_EQ(account.footprint.sizes.length, ruler.result.length);
    EXPECT_EQ(account.footprint.usable.right, 64.0F);
    ASSERT_TRUE(account.survey);
    EXPECT_EQ(account.survey->measured, 16 * 12);
    EXPECT_EQ(account.survey->highest, 200.0);
    ASSERT_TRUE(account.times);
    EXPECT_GT(account.times->footprint, 0.0);
}

TEST_F(AccountTest, WhatWasNotAskedForIsAbsent) {
    Quorvel ruler = rulerOf(scene_, draws_);
    const MeasureAccount account = accountOf(ruler);
    EXPECT_FALSE(account.survey);
    EXPECT_FALSE(account.times);
    EXPECT_TRUE(account.component.sizes.empty());
}

TEST_F(AccountTest, NoCalibrationIsNoPlaneAndNothingIsSearched) {
    Quorvel ruler = rulerOf(scene_, draws_);
    ruler.calibStatus = false;
    const MeasureAccount account = accountOf(ruler);
    EXPECT_EQ(account.outcome, Outcome::NoPlane);
    EXPECT_FALSE(account.searched);
    EXPECT_FALSE(internal::hasRecord(account));
}

TEST_F(AccountTest, AZeroNormalIsNoPlane) {
    Quorvel ruler = rulerOf(scene_, draws_);
    ruler.refPlaneNormal = {0, 0, 0};
    const MeasureAccount account = accountOf(ruler);
    EXPECT_EQ(account.outcome, Outcome::NoPlane);
    EXPECT_TRUE(account.searched);
}

TEST_F(AccountTest, APlaneThatCannotBeMeasuredFrom) {
    Quorvel ruler = rulerOf(scene_, draws_);
    ruler.refPlaneNormal = {0, 0, 1.2F};
    EXPECT_EQ(accountOf(ruler).outcome, Outcome::PlaneUnusable);
}

TEST_F(AccountTest, NoFrame) {
    Quorvel ruler = scene_.ruler();
    ruler.productType = GROUND_GROWING;
    setPlane(ruler, {0, 0, 1}, 1000.0F, 5);
    EXPECT_EQ(accountOf(ruler).outcome, Outcome::NoFrame);
}

TEST_F(AccountTest, NothingHighEnough) {
    scene_ = blockScene(9);
    Quorvel ruler = rulerOf(scene_, draws_);
    const MeasureAccount account = accountOf(ruler);
    EXPECT_EQ(account.outcome, Outcome::NothingHighEnough);
    EXPECT_EQ(account.raisedPixels, 0);
}

TEST_F(AccountTest, RemovedAsGround) {
    Quorvel ruler = rulerOf(scene_, draws_);
    ruler.filterWeight = 0.25F;  // depths beyond 750 mm are ground; the block's top is at 800
    const MeasureAccount account = accountOf(ruler);
    EXPECT_EQ(account.outcome, Outcome::RemovedAsGround);
    EXPECT_EQ(account.raisedPixels, 24);
    EXPECT_EQ(account.raisedButRemoved(), 24);
    EXPECT_EQ(account.groundDepth, 750.0F);
}

TEST_F(AccountTest, RegionTooSmall) {
    Quorvel ruler = rulerOf(scene_, draws_);
    ruler.minObjectPixels = 24;
    const MeasureAccount account = accountOf(ruler);
    EXPECT_EQ(account.outcome, Outcome::RegionTooSmall);
    EXPECT_EQ(account.component.largest, 24);
    EXPECT_FALSE(account.component.chosen);
}

TEST_F(AccountTest, TooFewSurfacePoints) {
    // One small pixel wide: the opening leaves nothing of it.
    scene_.blocks.front().pixels = {28, 8, 4, 32};
    Quorvel ruler = rulerOf(scene_, draws_);
    const MeasureAccount account = accountOf(ruler);
    EXPECT_EQ(account.outcome, Outcome::TooFewSurfacePoints);
    EXPECT_EQ(account.footprint.points, 0U);
    EXPECT_FALSE(account.footprint.box);
    EXPECT_TRUE(internal::hasRecord(account));
}

TEST_F(AccountTest, ABoxThatMissesTheAreaKeepsItsCorners) {
    Quorvel ruler = rulerOf(scene_, draws_);
    ruler.effectiveRegion = {0, 0, 2, 2};
    const MeasureAccount account = accountOf(ruler);
    EXPECT_EQ(account.outcome, Outcome::MissesArea);
    ASSERT_TRUE(account.footprint.box);
    EXPECT_EQ(account.footprint.box->corners.size(), 8U);
    EXPECT_GT(account.footprint.box->height, 0.0F);
    EXPECT_TRUE(ruler.result.corners.empty());
}

TEST_F(AccountTest, ABoxOutOfViewKeepsItsSides) {
    Quorvel ruler = rulerOf(scene_, draws_);
    ruler.productType = KIOSK;
    ruler.setCameraType(true, 300);  // 300 mm at 800 mm and 60 pixels of focal length, times 1.3: 29 pixels a side
    const MeasureAccount account = accountOf(ruler);
    EXPECT_EQ(account.outcome, Outcome::OutOfView);
    ASSERT_TRUE(account.footprint.box);
    EXPECT_GT(account.footprint.box->rawSides.a, 0.0F);
    EXPECT_EQ(account.footprint.sizes.length, 0.0F);
    EXPECT_EQ(account.footprint.sideMargin, ruler.result.sideMargin);
    EXPECT_EQ(account.footprint.usable.left, 29.0F);
}

TEST_F(AccountTest, TrackingSaysByHowMuchItLowersTheHeight) {
    Quorvel ruler = rulerOf(scene_, draws_);
    ruler.productType = GROUND_TRACKING;
    const MeasureAccount account = accountOf(ruler);
    EXPECT_EQ(account.heightLowering, 7.0F);
    EXPECT_EQ(ruler.result.height, account.footprint.sizes.height - 7.0F);
}

TEST_F(AccountTest, AModeThatMeasuresNothingHasNoAccount) {
    Quorvel ruler = rulerOf(scene_, draws_);
    ruler.productType = KIOSK_LOW_OBJECT;
    EXPECT_FALSE(internal::measureSingleShot(ruler, {}, nullptr));
    EXPECT_EQ(ruler.measureOnce(), 0);
}

/// Whatever is asked for, the numbers are the same; the account says what the class says.
TEST(Account, AgreesWithTheClassOverRandomScenes) {
    Draws draws(77);
    std::map<Outcome, int> seen;
    for (int run = 0; run < 400; ++run) {
        const DepthScene scene = drawScene(draws);
        Quorvel ruler = rulerOf(scene, draws);
        const int mode = draws.between(0, 2);
        ruler.productType = mode;
        ruler.effectiveRegion = {16, 12, 32, 24};
        ruler.filterWeight = draws.chance(30) ? 0.3F : 0.0F;
        ruler.minObjectPixels = draws.between(0, 12);
        Quorvel other = detachedCopy(ruler);
        AccountDetail detail;
        detail.survey = true;
        detail.regions = true;
        detail.times = true;
        const MeasureAccount account = accountOf(ruler, detail);
        const int status = other.measureOnce();
        ++seen[account.outcome];
        ASSERT_EQ(status, internal::hasRecord(account) ? 0 : 1) << "run " << run;
        ASSERT_TRUE(sameResult(ruler.result, other.result)) << "run " << run;
        ASSERT_EQ(account.outcome == Outcome::Measured, other.result.inView) << "run " << run;
        ASSERT_EQ(account.component.candidates, cv::countNonZero(other.depthSmall)) << "run " << run;
        ASSERT_GE(account.raisedButRemoved(), 0) << "run " << run;
    }
    EXPECT_GT(seen[Outcome::Measured], 20);
    EXPECT_GT(seen[Outcome::MissesArea], 5);
    EXPECT_GT(seen[Outcome::NothingHighEnough] + seen[Outcome::RemovedAsGround], 5);
}

}  // namespace

}  // namespace quorvel::test
