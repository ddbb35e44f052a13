// SPDX-License-Identifier: Apache-2.0
#include "sim/presets.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "sim/render.h"
#include "sim/test_scenes.h"
#include "sim/truth.h"

namespace quorvel::sim {
namespace {

class EveryPreset : public ::testing::TestWithParam<std::string> {};

TEST_P(EveryPreset, IsNamedAndDescribed) {
    EXPECT_EQ(preset(GetParam()).name, GetParam());
    const std::string description = presetDescription(GetParam());
    EXPECT_GT(description.size(), 15U);
    EXPECT_EQ(description.find('\n'), std::string::npos);
}

TEST_P(EveryPreset, ShowsItsTargetInTheMiddleOfThePicture) {
    const Scene scene = preset(GetParam());
    EXPECT_EQ(scene.camera.width, 640);
    EXPECT_EQ(scene.camera.height, 480);
    EXPECT_EQ(objectNearestMiddle(scene), 0) << "the target is the first object";
    Scene target = scene;
    target.boxes.resize(scene.boxes.empty() ? 0 : 1);
    target.cylinders.resize(scene.boxes.empty() ? 1 : 0);
    Scene empty = scene;
    empty.boxes.clear();
    empty.cylinders.clear();
    const cv::Mat raised = renderDepthExact(target) < renderDepthExact(empty);
    EXPECT_NE(raised.at<std::uint8_t>(240, 320), 0) << "the target covers the picture's middle";
    EXPECT_GT(cv::countNonZero(raised), 2500);
}

TEST_P(EveryPreset, SaysTrulyWhatIsInView) {
    const Scene scene = preset(GetParam());
    for (const ObjectTruth& truth : objectTruth(scene)) {
        EXPECT_EQ(truth.inView, GetParam() != "partly-out-of-view")
            << truth.shape << " at (" << truth.x << ", " << truth.y << ")";
    }
}

TEST_P(EveryPreset, RendersWithMildEffects) {
    const Scene scene = preset(GetParam());
    const Frame frame = render(scene);
    const double missing = cv::countNonZero(frame.depth == 0) / 307200.0;
    EXPECT_GT(missing, 0.0005);
    EXPECT_LT(missing, 0.01);
    EXPECT_GT(countDifferent(frame.depth, renderDepth(scene, 1)), 100000) << "frames carry noise";
    EXPECT_GT(countDifferent(frame.color, renderEmpty(scene).color), 2500) << "the colour shows the objects";
}

INSTANTIATE_TEST_SUITE_P(Presets, EveryPreset, ::testing::ValuesIn(presetNames()), [](const auto& parameter) {
    std::string name = parameter.param;
    for (char& letter : name) {
        letter = letter == '-' ? '_' : letter;
    }
    return name;
});

TEST(Presets, AreTheKnownNine) {
    const std::vector<std::string> expected{"parcel",   "small-box", "flat-box",      "tall-box",          "diagonal",
                                            "cylinder", "clutter",   "tilted-camera", "partly-out-of-view"};
    EXPECT_EQ(presetNames(), expected);
}

TEST(Presets, DescribedSizesAreTheTrueOnes) {
    const ObjectTruth parcel = objectTruth(preset("parcel")).at(0);
    EXPECT_EQ(cv::Vec3d(parcel.length, parcel.width, parcel.height), cv::Vec3d(300.0, 200.0, 150.0));
    const ObjectTruth flat = objectTruth(preset("flat-box")).at(0);
    EXPECT_EQ(cv::Vec3d(flat.length, flat.width, flat.height), cv::Vec3d(300.0, 220.0, 25.0));
    EXPECT_EQ(objectTruth(preset("diagonal")).at(0).yawDeg, 45.0);
    EXPECT_EQ(preset("tilted-camera").surface.tiltXDeg, 12.0);
    EXPECT_EQ(objectTruth(preset("cylinder")).at(0).shape, "cylinder");
    EXPECT_GE(objectTruth(preset("clutter")).size(), 5U);
}

TEST(Presets, UnknownNameIsAnsweredWithTheKnownOnes) {
    const std::string expected =
        "unknown preset 'crate'; known are parcel, small-box, flat-box, tall-box, diagonal, cylinder, clutter, "
        "tilted-camera, partly-out-of-view";
    try {
        preset("crate");
        FAIL() << "an unknown preset was built";
    } catch (const std::invalid_argument& error) {
        EXPECT_EQ(error.what(), expected);
    }
    EXPECT_THROW(presetDescription("crate"), std::invalid_argument);
}

}  // namespace
}  // namespace quorvel::sim
