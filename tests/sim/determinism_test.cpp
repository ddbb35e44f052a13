// SPDX-License-Identifier: Apache-2.0
#include <cstdint>

#include <gtest/gtest.h>

#include "sim/presets.h"
#include "sim/render.h"
#include "sim/test_scenes.h"

namespace quorvel::sim {
namespace {

/// A scene in which every effect, a tilt, odd angles and both kinds of objects take part.
Scene everything() {
    Scene scene = preset("clutter");
    scene.surface.tiltXDeg = 11.3;
    scene.surface.tiltYDeg = -7.7;
    scene.surface.halfExtent = 600.0;
    scene.effects.flyingPixels = 0.5;
    scene.effects.axialNoise = 1.7;
    scene.effects.jitter = 0.9;
    scene.effects.quantisationStep = 1.3;
    scene.effects.dropout = 0.01;
    scene.effects.holeCount = 9;
    scene.effects.holeRadius = 7.0;
    return scene;
}

/// The 64-bit FNV-1a hash; 16-bit values are taken low byte first, on every machine.
class Fnv {
public:
    void add(std::uint32_t byte) { hash_ = (hash_ ^ byte) * 1099511628211ULL; }
    std::uint64_t value() const { return hash_; }

private:
    std::uint64_t hash_ = 14695981039346656037ULL;
};

std::uint64_t hashOfDepth(const cv::Mat& depth) {
    Fnv fnv;
    for (const std::uint16_t value : cv::Mat_<std::uint16_t>(depth)) {
        fnv.add(value & 0xFFU);
        fnv.add(static_cast<std::uint32_t>(value) >> 8U);
    }
    return fnv.value();
}

std::uint64_t hashOfColor(const cv::Mat& color) {
    Fnv fnv;
    for (const cv::Vec3b& value : cv::Mat_<cv::Vec3b>(color)) {
        fnv.add(value[0]);
        fnv.add(value[1]);
        fnv.add(value[2]);
    }
    return fnv.value();
}

TEST(Determinism, SameSceneSeedAndIndexGiveTheSameBytes) {
    const Frame first = render(everything(), 3);
    const Frame second = render(everything(), 3);
    EXPECT_EQ(countDifferent(first.depth, second.depth), 0);
    EXPECT_EQ(countDifferent(first.color, second.color), 0);
    EXPECT_EQ(countDifferent(first.depth, renderDepth(everything(), 3)), 0);
}

TEST(Determinism, AnotherIndexOrSeedGivesOtherNoise) {
    Scene scene = everything();
    const Frame frame = render(scene, 3);
    const Frame next = render(scene, 4);
    EXPECT_GT(countDifferent(frame.depth, next.depth), 100000);
    EXPECT_EQ(countDifferent(frame.color, next.color), 0) << "the colour has no noise";
    scene.seed = 12345;
    EXPECT_GT(countDifferent(frame.depth, renderDepth(scene, 3)), 100000);
}

TEST(Determinism, EmptyFrameIsTheSceneWithoutObjects) {
    Scene scene = everything();
    const Frame empty = renderEmpty(scene, 5);
    scene.boxes.clear();
    scene.cylinders.clear();
    const Frame bare = render(scene, 5);
    EXPECT_EQ(countDifferent(empty.depth, bare.depth), 0);
    EXPECT_EQ(countDifferent(empty.color, bare.color), 0);
}

// These numbers change whenever rendering changes on purpose; between platforms and builds they must not.
TEST(Determinism, FrameIsTheSameOnEveryPlatform) {
    const Frame frame = render(everything(), 3);
    EXPECT_EQ(hashOfDepth(frame.depth), 10370443059426127797ULL);
    EXPECT_EQ(hashOfColor(frame.color), 5531980928339749963ULL);
}

}  // namespace
}  // namespace quorvel::sim
