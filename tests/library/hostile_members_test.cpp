// SPDX-License-Identifier: Apache-2.0
// Hosts that write anything into the public members, and call anything in any order.
#include <array>
#include <climits>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "library/depth_scene.h"
#include "library/frame_draws.h"
#include "library/hostile_draws.h"
#include "library/same_ruler.h"
#include "support/captured_output.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

constexpr std::array<ProductType, 3> kMeasuringModes{KIOSK, GROUND_TRACKING, GROUND_GROWING};

cv::Vec3f drawOddNormal(Draws& draws) {
    cv::Vec3f normal = drawNormal(draws);
    for (float& value : normal.val) {
        value = draws.chance(30) ? drawOddFloat(draws) : value;
    }
    return normal;
}

TEST(HostileClouds, AreMeasured) {
    const CapturedOutput output;
    Draws draws(777);
    int measured = 0;
    for (int i = 0; i < 4000; ++i) {
        DepthScene scene = blockScene(draws.real(20, 400));
        Quorvel ruler = scene.ruler();
        ruler.productType = draws.oneOf(kMeasuringModes);
        const bool oddPlane = draws.chance(40);
        const cv::Vec3f normal = oddPlane ? drawOddNormal(draws) : drawNormal(draws);
        const float offset = draws.chance(20) ? drawOddFloat(draws) : 1000.0F;
        setPlane(ruler, normal, offset, draws.between(-3, 30));
        ruler.effectiveRegion = draws.chance(90) ? cv::Rect(-65536, -65536, INT_MAX, INT_MAX) : drawOddRect(draws);
        ASSERT_TRUE(ruler.getCameraFrame(scene.color(), scene.depth(draws)));
        ruler.pointCloud = drawOddCloud(draws, ruler.pointCloud.size());
        if (draws.chance(30)) {
            ruler.pointCloudSmallCopy = drawOddCloud(draws, ruler.pointCloudSmallCopy.size());
        }
        ruler.minObjectHeight = draws.chance(20) ? drawOddFloat(draws) : ruler.minObjectHeight;
        ruler.filterWeight = draws.chance(20) ? drawOddFloat(draws) : -5.0F;
        measureAnything(ruler);
        ASSERT_FALSE(HasFailure()) << "run " << i;
        measured += ruler.result.corners.empty() ? 0 : 1;
    }
    EXPECT_GT(measured, 200) << "clouds of which a box was made";
}

TEST(HostileClouds, AreCalibratedOn) {
    const CapturedOutput output;
    Draws draws(2);
    std::srand(2);
    for (int i = 0; i < 150; ++i) {
        Quorvel ruler(100, 100, 50, 40, 400, 320, false, "");
        ruler.pointCloudSmall = drawOddCloud(draws, {100, 80});
        if (draws.chance(50)) {
            // A surface, so that the fit has candidates, with odd points in it.
            for (int row = 0; row < 80; ++row) {
                for (int column = 0; column < 100; ++column) {
                    if (draws.chance(90)) {
                        ruler.pointCloudSmall.at<cv::Vec3f>(row, column) =
                            cv::Vec3f(static_cast<float>(column), static_cast<float>(row), 100) *
                            (draws.chance(50) ? 1.0F : 1e30F);
                    }
                }
            }
        }
        ASSERT_EQ(ruler.ransacCalibRef(), 0) << "run " << i;
    }
}

TEST(HostileMembers, OfOtherFormsAreRefused) {
    const CapturedOutput output;
    const DepthScene scene = blockScene(200);
    Draws draws(3);
    const cv::Mat color = scene.color();
    const cv::Mat depth = scene.depth(draws);
    for (const ProductType mode : kMeasuringModes) {
        for (cv::Mat Quorvel::*member : {&Quorvel::depthSmall, &Quorvel::pointCloud, &Quorvel::pointCloudSmallCopy}) {
            Quorvel ruler = scene.ruler();
            ruler.productType = mode;
            setPlane(ruler, {0, 0, 1}, scene.distance, 5);
            ruler.effectiveRegion = cv::Rect(cv::Point(0, 0), scene.size);
            ASSERT_TRUE(ruler.getCameraFrame(color, depth));
            const cv::Mat proper = ruler.*member;
            std::vector<cv::Mat> odd{cv::Mat(),
                                     withoutPixels(proper.rows, proper.cols, proper.type()),
                                     cubeOf(proper.rows, proper.cols, proper.type()),
                                     proper.colRange(0, proper.cols - 1),
                                     proper.rowRange(1, proper.rows),
                                     cv::Mat(proper.rows, 0, proper.type()),
                                     proper.t()};
            for (int type = CV_8U; type <= CV_16F; ++type) {
                odd.emplace_back(proper.size(), CV_MAKETYPE(type, 2));
            }
            for (const cv::Mat& image : odd) {
                ruler.*member = image;
                setPlane(ruler, {0, 0, 1}, scene.distance, 5);
                EXPECT_EQ(ruler.measureOnce(), 1) << image.size << ", " << cv::typeToString(image.type());
            }
        }
    }
}

TEST(HostileMembers, OfOtherFormsInBatchesAreRefused) {
    const CapturedOutput output;
    const DepthScene scene = blockScene(200);
    Draws draws(4);
    const Batch batch = sceneBatch(scene, draws, 2);
    for (std::vector<cv::Mat> Quorvel::*buffer :
         {&Quorvel::depthSmallBuffer, &Quorvel::pointCloudBuffer, &Quorvel::pointCloudSmallCopyBuffer}) {
        for (int kind = 0; kind < 4; ++kind) {
            Quorvel ruler = scene.ruler();
            setPlane(ruler, {0, 0, 1}, scene.distance, 5);
            ruler.effectiveRegion = cv::Rect(cv::Point(0, 0), scene.size);
            ASSERT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths));
            std::vector<cv::Mat>& images = ruler.*buffer;
            const cv::Mat proper = images[1];
            switch (kind) {
                case 0:
                    images.pop_back();
                    break;
                case 1:
                    images.push_back(proper);
                    break;
                case 2:
                    images[1] = withoutPixels(proper.rows, proper.cols, proper.type());
                    break;
                default:
                    images[1] = proper.colRange(1, proper.cols);
                    break;
            }
            EXPECT_EQ(ruler.measureMultiple(50, 50, 50), 1) << kind;
            EXPECT_TRUE(isEmptyResult(ruler.result)) << kind;
            EXPECT_TRUE(ruler.depthSmallBuffer.empty()) << kind;
        }
    }
}

/// One ruler on which calls are made in random order and with random arguments, all drawn from one seed.
class ShortLife {
public:
    explicit ShortLife(unsigned seed)
        : draws_(seed),
          scene_(drawScene(draws_)),
          color_(scene_.color()),
          depth_(scene_.depth(draws_)),
          ruler_(scene_.ruler()) {}

    /// \return the calls that were made, for the message of a failure
    std::string live() {
        const int steps = draws_.between(1, 25);
        for (int i = 0; i < steps && !::testing::Test::HasFailure(); ++i) {
            step();
        }
        return story_;
    }

private:
    void tell(const std::string& what) { story_ += what + "; "; }

    void step() {
        switch (draws_.below(5)) {
            case 0:
                takeSomething();
                break;
            case 1:
                useSomething();
                break;
            case 2:
                setSomething();
                break;
            case 3:
                writeSomething();
                break;
            default:
                measureSomething();
                break;
        }
    }

    void takeSomething() {
        const bool proper = draws_.chance(70);
        const cv::Mat color = proper ? color_ : drawOddImage(draws_);
        const cv::Mat depth = proper || draws_.chance(50) ? depth_ : drawOddImage(draws_);
        if (draws_.chance(60)) {
            tell("frame");
            ruler_.getCameraFrame(color, depth);
        } else if (draws_.chance(30)) {
            tell("frame of three");
            ruler_.getCameraFrame(color, depth, drawOddImage(draws_));
        } else {
            tell("batch");
            const auto frames = static_cast<std::size_t>(draws_.below(4));
            ruler_.getCameraMultipleFrame(std::vector<cv::Mat>(frames, color),
                                          std::vector<cv::Mat>(draws_.chance(10) ? 1 : frames, depth));
        }
    }

    void measureSomething() {
        tell("measure");
        if (draws_.chance(70)) {
            measureAnything(ruler_);
        } else {
            measureAnyBatch(ruler_, draws_.chance(50) ? 50.0F : drawOddFloat(draws_));
        }
    }

    void useSomething() {
        float number = 0;
        bool flag = false;
        cv::Rect one;
        cv::Rect other;
        const int what = draws_.below(10);
        tell("use " + std::to_string(what));
        switch (what) {
            case 0:
            case 1:
                EXPECT_EQ(ruler_.calibRef(number, draws_.chance(80) ? 0.0F : drawOddFloat(draws_)), 0);
                break;
            case 2:
                EXPECT_EQ(ruler_.ransacCalibRef(), 0);
                break;
            case 3:
                EXPECT_EQ(ruler_.stop(), 0);
                break;
            case 4:
                EXPECT_EQ(ruler_.getCameraHeight(number), ruler_.calibStatus ? 0 : 1);
                break;
            case 5:
                EXPECT_EQ(ruler_.getCalibStatus(flag), 0);
                break;
            case 6:
                ruler_ = Quorvel(ruler_);
                break;
            case 7:
                saveAndLoad(one, other);
                break;
            case 8:
                ruler_.setDebugMode(draws_.chance(50));
                break;
            default:
                restart();
                break;
        }
    }

    /// Only calls that write files may raise an exception, and only one of OpenCV's.
    void saveAndLoad(cv::Rect& one, cv::Rect& other) {
        try {
            ruler_.saveRulerParam("ruler.yml");
            ruler_.loadRulerParam(draws_.chance(80) ? "ruler.yml" : "garbage.yml", one, other);
            if (draws_.chance(5)) {
                ruler_.saveOfflineData();
            }
        } catch (const cv::Exception&) {
            tell("exception");
        }
    }

    void restart() {
        const bool offline = draws_.chance(30);
        ruler_ = Quorvel{scene_.focal,
                         scene_.focal,
                         draws_.chance(80) ? 32.0F : drawOddFloat(draws_),
                         24,
                         draws_.chance(80) ? scene_.size.width : drawOddInt(draws_),
                         scene_.size.height,
                         offline,
                         draws_.chance(50) ? "nowhere" : "param"};
    }

    void setSomething() {
        cv::Rect rect;
        const int what = draws_.below(7);
        tell("set " + std::to_string(what));
        switch (what) {
            case 0:
                ruler_.setProductType(
                    static_cast<ProductType>(draws_.chance(90) ? draws_.below(4) : drawOddInt(draws_)));
                break;
            case 1:
                ruler_.setCalibrationRoI(draws_.chance(50) ? cv::Rect(2, 2, 20, 20) : drawOddRect(draws_));
                break;
            case 2:
                ruler_.setEffectiveRegionInArea(draws_.chance(50) ? cv::Rect(cv::Point(), scene_.size)
                                                                  : drawOddRect(draws_));
                break;
            case 3:
                ruler_.setCalibrationRoI(draws_.chance(50) ? 1.0F : drawOddFloat(draws_), rect);
                break;
            case 4:
                ruler_.setEffectiveRegionInArea(draws_.chance(50) ? 1.0F : drawOddFloat(draws_), rect);
                break;
            case 5:
                ruler_.setFilterWeight(draws_.chance(50) ? -1.0F : drawOddFloat(draws_));
                break;
            default: {
                const bool enable = draws_.chance(50);
                ruler_.setCameraType(enable, draws_.chance(50) ? 5 : drawOddInt(draws_));
                break;
            }
        }
    }

    void writeSomething() {
        static const auto kFloats = membersOf<float>();
        static const auto kInts = membersOf<int>();
        static const auto kImages = rulerImages();
        static const auto kBuffers = rulerBuffers();
        const int what = draws_.below(10);
        tell("write " + std::to_string(what));
        switch (what) {
            case 0:
                ruler_.*draws_.oneOf(kFloats).pointer = drawOddFloat(draws_);
                break;
            case 1:
                ruler_.*draws_.oneOf(kInts).pointer = drawOddInt(draws_);
                break;
            case 2:
                ruler_.*draws_.oneOf(kImages).pointer = drawOddImage(draws_);
                break;
            case 3: {
                const cv::Mat other = ruler_.*draws_.oneOf(kImages).pointer;
                ruler_.*draws_.oneOf(kImages).pointer = other;
                break;
            }
            case 9:
                // A header of its own: what shares the pixels keeps them.
                (ruler_.*draws_.oneOf(kImages).pointer).data = nullptr;
                break;
            case 4: {
                const auto count = static_cast<std::size_t>(draws_.below(4));
                std::vector<cv::Mat>& buffer = ruler_.*draws_.oneOf(kBuffers).pointer;
                buffer.resize(count, drawOddImage(draws_));
                break;
            }
            case 5:
                ruler_.pointCloud =
                    drawOddCloud(draws_, ruler_.pointCloud.dims == 2 ? ruler_.pointCloud.size() : cv::Size(9, 9));
                break;
            case 6:
                ruler_.offlineMode = draws_.chance(30);
                break;
            case 7: {
                const cv::Vec3f normal = draws_.chance(60) ? drawNormal(draws_) : drawOddNormal(draws_);
                setPlane(ruler_, normal, 1000, draws_.below(20));
                break;
            }
            default:
                ruler_.calibStatus = draws_.chance(50);
                break;
        }
    }

    Draws draws_;
    DepthScene scene_;
    cv::Mat color_;
    cv::Mat depth_;
    Quorvel ruler_;
    std::string story_;
};

/// The results of a new ruler for one frame: calibration, measurement and a batch in every mode.
std::vector<MeasureResult> freshResults() {
    std::srand(9);
    Draws draws(9);
    DepthScene scene;
    scene.size = {640, 480};  // as many small pixels of surface as the fit of every frame needs
    scene.focal = 600;
    scene.noise = 2;
    const cv::Mat surface = scene.depth(draws);
    scene.blocks.push_back({{260, 190, 120, 100}, 200});
    const Batch batch = sceneBatch(scene, draws, 2);
    std::vector<MeasureResult> results;
    for (const ProductType mode : kMeasuringModes) {
        Quorvel ruler = scene.ruler();
        ruler.productType = mode;
        cv::Rect area;
        ruler.setCalibrationRoI(0.8F, area);
        ruler.setEffectiveRegionInArea(1.0F, area);
        float t = 0;
        EXPECT_TRUE(ruler.getCameraFrame(scene.color(), surface));
        EXPECT_EQ(ruler.calibRef(t, 0), 0);
        EXPECT_TRUE(ruler.getCameraFrame(batch.colors[0], batch.depths[0]));
        EXPECT_EQ(ruler.measureOnce(), 0);
        results.push_back(ruler.result);
        EXPECT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths));
        ruler.measureMultiple(50, 50, 50);
        results.push_back(ruler.result);
    }
    return results;
}

TEST(ShortLives, EndWellWhateverTheyWere) {
    const WorkingDirectory directory;
    const CapturedOutput output;
    std::ofstream("garbage.yml") << "%YAML:1.0\n---\n[ ] : {";
    const std::vector<MeasureResult> before = freshResults();
    ASSERT_GT(before.at(0).height, 150);
    for (unsigned seed = 0; seed < 2000; ++seed) {
        std::srand(seed);
        const std::string story = ShortLife(seed).live();
        ASSERT_FALSE(HasFailure()) << "life " << seed << ": " << story;
    }
    // The storage that the library keeps between calls has no influence on later results.
    const std::vector<MeasureResult> after = freshResults();
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_TRUE(sameResult(before[i], after[i])) << i;
    }
}

}  // namespace

}  // namespace quorvel::test
