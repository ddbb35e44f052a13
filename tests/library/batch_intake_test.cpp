// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/quorvel.h>

#include "image/kept_images.h"
#include "library/depth_scene.h"
#include "library/frame_draws.h"
#include "library/plain/batch.h"
#include "library/same_ruler.h"
#include "support/captured_output.h"
#include "support/same_bits.h"

namespace quorvel::test {

namespace {

const std::string kEmptyMessage = "Image data size is empty.\n";
const std::string kSizeMessage = "size not match\n";
const cv::Size kSize(64, 48);

/// The buffers that an intake fills; the spare ones stay empty.
const std::array<std::vector<cv::Mat> Quorvel::*, 7> kFilled{
    &Quorvel::colorFrameBuffer,         &Quorvel::depthFrameBuffer,      &Quorvel::pointCloudBuffer,
    &Quorvel::colorSmallBuffer,         &Quorvel::pointCloudSmallBuffer, &Quorvel::depthSmallBuffer,
    &Quorvel::pointCloudSmallCopyBuffer};

/// The images that the first frame of a batch replaces.
const std::array<cv::Mat Quorvel::*, 7> kCurrent{
    &Quorvel::colorImage, &Quorvel::depthImage, &Quorvel::pointCloud,         &Quorvel::pointCloudSmall,
    &Quorvel::colorSmall, &Quorvel::depthSmall, &Quorvel::pointCloudSmallCopy};

Quorvel smallRuler() {
    return {60, 61, 31, 25, kSize.width, kSize.height, false, ""};
}

/// A ruler with a single frame and a batch, to see what a refused batch leaves.
struct WithBatch {
    Draws draws{41};
    Quorvel ruler = smallRuler();
    Batch batch = drawBatch(draws, kSize, 3);

    WithBatch() {
        EXPECT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths));
        const cv::Mat color = drawColor(draws, kSize);
        EXPECT_TRUE(ruler.getCameraFrame(color, drawDepth(draws, kSize)));
        ruler.auxImage = cv::Mat(2, 2, CV_8UC1, cv::Scalar(5));
        ruler.result = {{{1, 2}}, 3, 4, 5, true, true, 6};
    }
};

/// Pushes a batch that must be refused; the ruler must be as before.
void expectRefusedUnchanged(Quorvel& ruler, const Batch& batch, const std::string& what) {
    const Quorvel before = detachedCopy(ruler);
    EXPECT_FALSE(ruler.getCameraMultipleFrame(batch.colors, batch.depths)) << what;
    EXPECT_TRUE(sameRuler(ruler, before)) << what;
}

TEST(BatchIntake, FillsSevenBuffersWithEveryFrame) {
    Draws draws(1);
    Quorvel ruler = smallRuler();
    const Batch batch = drawBatch(draws, kSize, 5);
    ruler.debugMode = true;
    const CapturedOutput output;
    EXPECT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths));
    EXPECT_EQ(output.text(), "");
    for (const auto buffer : kFilled) {
        EXPECT_EQ((ruler.*buffer).size(), 5U);
    }
    EXPECT_TRUE(ruler.spareBuffer1.empty());
    EXPECT_TRUE(ruler.spareBuffer2.empty());
    EXPECT_TRUE(ruler.spareBuffer3.empty());
    EXPECT_FALSE(ruler.calibStatus);
}

TEST(BatchIntake, BackProjectsEveryFrameWithTheIntrinsicsOfEachScale) {
    // One pixel at (8, 4), 1000 mm in frame 1: full (8 - 32) * 1000 / 50 = -480, (4 - 24) * 1000 / 40 = -500; small
    // (2 - 8) * 1000 * 4 / 50 = -480, (1 - 6) * 1000 * 4 / 40 = -500. One at the principal point in frame 2.
    Quorvel ruler(50, 40, 32, 24, 64, 48, false, "");
    Batch batch;
    for (int i = 0; i < 3; ++i) {
        batch.colors.push_back(cv::Mat::zeros(kSize, CV_8UC3));
        batch.depths.push_back(cv::Mat::zeros(kSize, CV_16UC1));
    }
    batch.depths[1].at<ushort>(4, 8) = 1000;
    batch.depths[2].at<ushort>(24, 32) = 65535;
    ASSERT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths));
    EXPECT_EQ(cv::countNonZero(ruler.pointCloudBuffer[0].reshape(1)), 0);
    EXPECT_EQ(cv::countNonZero(ruler.pointCloudSmallBuffer[0].reshape(1)), 0);
    EXPECT_EQ(ruler.pointCloudBuffer[1].at<cv::Vec3f>(4, 8), cv::Vec3f(-480, -500, 1000));
    EXPECT_EQ(ruler.pointCloudSmallBuffer[1].at<cv::Vec3f>(1, 2), cv::Vec3f(-480, -500, 1000));
    EXPECT_EQ(cv::countNonZero(ruler.pointCloudBuffer[1].reshape(1)), 3);
    EXPECT_EQ(cv::countNonZero(ruler.pointCloudSmallBuffer[1].reshape(1)), 3);
    EXPECT_EQ(ruler.pointCloudBuffer[2].at<cv::Vec3f>(24, 32), cv::Vec3f(0, 0, 65535));
    EXPECT_EQ(ruler.pointCloudSmallBuffer[2].at<cv::Vec3f>(6, 8), cv::Vec3f(0, 0, 65535));
    EXPECT_EQ(cv::countNonZero(ruler.pointCloud.reshape(1)), 0) << "the first frame is the current one";
}

TEST(BatchIntake, AgreesWithThePlainFormForRandomBatches) {
    Draws draws(411);
    for (int run = 0; run < 120; ++run) {
        Quorvel ruler = drawRuler(draws);
        const cv::Size size(ruler.imageWidth, ruler.imageHeight);
        Quorvel byHand(ruler);
        for (int call = 0; call < 2; ++call) {
            const Batch batch = drawBatch(draws, size, draws.between(1, 5));
            ASSERT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths)) << "run " << run;
            plain::takeBatch(byHand, batch.colors, batch.depths);
            ASSERT_TRUE(sameRuler(ruler, byHand)) << "run " << run << ", call " << call << ", size " << size;
        }
    }
}

TEST(BatchIntake, MakesTheFirstFrameTheCurrentOneAsASingleIntakeDoes) {
    Draws draws(2);
    const Batch batch = drawBatch(draws, kSize, 3);
    Quorvel ruler = smallRuler();
    Quorvel single = smallRuler();
    ASSERT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths));
    ASSERT_TRUE(single.getCameraFrame(batch.colors[0], batch.depths[0]));
    EXPECT_TRUE(sameImages(ruler, single));
    EXPECT_TRUE(sameSettings(ruler, single));
}

TEST(BatchIntake, KeepsEveryDerivedImageInStorageOfItsOwn) {
    for (const int downScale : {1, 4}) {
        WithBatch w;
        w.ruler.downScale = downScale;
        ASSERT_TRUE(w.ruler.getCameraMultipleFrame(w.batch.colors, w.batch.depths));
        std::vector<const uchar*> storage;
        storage.reserve(7U + 7U * 3U);
        for (const auto image : kCurrent) {
            storage.push_back((w.ruler.*image).data);
        }
        for (const auto buffer : kFilled) {
            for (const cv::Mat& image : w.ruler.*buffer) {
                storage.push_back(image.data);
            }
        }
        ASSERT_EQ(storage.size(), 7U + 7U * 3U);
        for (std::size_t a = 0; a < storage.size(); ++a) {
            for (std::size_t b = a + 1; b < storage.size(); ++b) {
                EXPECT_NE(storage[a], storage[b]) << "images " << a << " and " << b << ", downScale " << downScale;
            }
        }
    }
}

TEST(BatchIntake, DoesNotShareTheSmallCloudWithItsCopy) {
    WithBatch w;
    ASSERT_TRUE(w.ruler.getCameraMultipleFrame(w.batch.colors, w.batch.depths));
    const Quorvel before = detachedCopy(w.ruler);
    for (std::size_t i = 0; i < 3; ++i) {
        w.ruler.pointCloudSmallBuffer[i].setTo(cv::Scalar::all(-1));
        EXPECT_TRUE(sameBits(w.ruler.pointCloudSmallCopyBuffer[i], before.pointCloudSmallCopyBuffer[i])) << i;
    }
    EXPECT_TRUE(sameImages(w.ruler, before)) << "the current frame shares nothing with the buffers either";
}

TEST(BatchIntake, SharesTheHostsPixelsInTheFrameBuffersOnly) {
    WithBatch w;
    ASSERT_TRUE(w.ruler.getCameraMultipleFrame(w.batch.colors, w.batch.depths));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(w.ruler.colorFrameBuffer[i].data, w.batch.colors[i].data) << i;
        EXPECT_EQ(w.ruler.depthFrameBuffer[i].data, w.batch.depths[i].data) << i;
    }
    EXPECT_NE(w.ruler.colorImage.data, w.batch.colors[0].data);
    EXPECT_NE(w.ruler.depthImage.data, w.batch.depths[0].data);
}

TEST(BatchIntake, GivesTheCurrentFrameFreshStorage) {
    // A host that kept the images of the frame before keeps their pixels.
    WithBatch w;
    std::vector<cv::Mat> held;
    std::vector<cv::Mat> before;
    for (const auto image : kCurrent) {
        held.push_back(w.ruler.*image);
        before.push_back((w.ruler.*image).clone());
    }
    const Batch next = drawBatch(w.draws, kSize, 2);
    ASSERT_TRUE(w.ruler.getCameraMultipleFrame(next.colors, next.depths));
    for (std::size_t i = 0; i < held.size(); ++i) {
        EXPECT_TRUE(sameBits(held[i], before[i])) << "image " << i;
        EXPECT_NE(held[i].data, (w.ruler.*kCurrent.at(i)).data) << "image " << i;
    }
}

TEST(BatchIntake, DropsABatchThatWasNeverMeasured) {
    for (const int frames : {1, 2, 6}) {
        WithBatch w;
        const Batch next = drawBatch(w.draws, kSize, frames);
        ASSERT_TRUE(w.ruler.getCameraMultipleFrame(next.colors, next.depths));
        Quorvel fresh = smallRuler();
        ASSERT_TRUE(fresh.getCameraMultipleFrame(next.colors, next.depths));
        EXPECT_TRUE(sameBuffers(w.ruler, fresh)) << frames << " frames after 3";
    }
}

TEST(BatchIntake, EmptiesTheSpareBuffersWithTheOthers) {
    WithBatch w;
    w.ruler.spareBuffer1.resize(2);
    w.ruler.spareBuffer2.resize(1);
    w.ruler.spareBuffer3.resize(3);
    ASSERT_TRUE(w.ruler.getCameraMultipleFrame(w.batch.colors, w.batch.depths));
    EXPECT_TRUE(w.ruler.spareBuffer1.empty());
    EXPECT_TRUE(w.ruler.spareBuffer2.empty());
    EXPECT_TRUE(w.ruler.spareBuffer3.empty());
}

TEST(BatchIntake, LeavesTheThirdImageAndTheResult) {
    WithBatch w;
    const cv::Mat aux = w.ruler.auxImage.clone();
    const MeasureResult result = w.ruler.result;
    ASSERT_TRUE(w.ruler.getCameraMultipleFrame(w.batch.colors, w.batch.depths));
    EXPECT_TRUE(sameBits(w.ruler.auxImage, aux));
    EXPECT_TRUE(sameResult(w.ruler.result, result));
}

/// The buffers whose images the library makes.
const std::array<std::vector<cv::Mat> Quorvel::*, 5> kDerived{
    &Quorvel::pointCloudBuffer, &Quorvel::colorSmallBuffer, &Quorvel::pointCloudSmallBuffer, &Quorvel::depthSmallBuffer,
    &Quorvel::pointCloudSmallCopyBuffer};

/// Leaves images full of ones for the next intake.
void leaveOddStorage(const cv::Size& size, const cv::Size& smallSize, int frames) {
    for (int i = 0; i < frames; ++i) {
        for (const int type : {CV_8UC3, CV_16UC1, CV_32FC3}) {
            for (const cv::Size& form : {size, smallSize, smallSize}) {
                cv::Mat image(form, type);
                std::memset(image.data, 0xFF, image.total() * image.elemSize());
                internal::KeptImages::instance().giveBack(std::move(image));
            }
        }
    }
}

TEST(BatchIntake, OverwritesAllOfTheStorageThatItUsesAgain) {
    Draws draws(412);
    for (int run = 0; run < 30; ++run) {
        const cv::Size size(draws.between(8, 70), draws.between(8, 50));
        Quorvel ruler(60, 61, 31, 25, size.width, size.height, false, "");
        ruler.downScale = draws.between(1, 4);
        Quorvel byHand(ruler);
        leaveOddStorage(size, {size.width / ruler.downScale, size.height / ruler.downScale}, 3);
        const std::size_t before = internal::KeptImages::instance().bytes();
        const Batch batch = drawBatch(draws, size, 3);
        ASSERT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths));
        EXPECT_LT(internal::KeptImages::instance().bytes(), before) << "none of it was used";
        plain::takeBatch(byHand, batch.colors, batch.depths);
        ASSERT_TRUE(sameRuler(ruler, byHand)) << "run " << run << ", size " << size;
    }
}

TEST(BatchIntake, UsesTheStorageOfTheBatchBefore) {
    WithBatch w;
    std::set<const uchar*> before;
    for (const auto buffer : kDerived) {
        for (const cv::Mat& image : w.ruler.*buffer) {
            before.insert(image.data);
        }
    }
    ASSERT_TRUE(w.ruler.getCameraMultipleFrame(w.batch.colors, w.batch.depths));
    for (const auto buffer : kDerived) {
        for (const cv::Mat& image : w.ruler.*buffer) {
            EXPECT_EQ(before.count(image.data), 1U);
        }
    }
}

TEST(BatchIntake, LeavesTheImagesThatAHostTookFromTheBuffers) {
    WithBatch w;
    std::vector<cv::Mat> held;
    std::vector<cv::Mat> pixels;
    for (const auto buffer : kDerived) {
        for (const cv::Mat& image : w.ruler.*buffer) {
            held.push_back(image);
            pixels.push_back(image.clone());
        }
    }
    Quorvel other = smallRuler();
    for (int round = 0; round < 3; ++round) {
        const Batch next = drawBatch(w.draws, kSize, 4);
        ASSERT_TRUE(w.ruler.getCameraMultipleFrame(next.colors, next.depths));
        ASSERT_TRUE(other.getCameraMultipleFrame(next.colors, next.depths));
        w.ruler.measureMultiple(5, 5, 5);
        other.measureMultiple(5, 5, 5);
        for (std::size_t i = 0; i < held.size(); ++i) {
            ASSERT_TRUE(sameBits(held[i], pixels[i])) << "image " << i << ", round " << round;
        }
    }
}

TEST(BatchIntake, KeepsNoMoreStorageWithEveryBatchOfDroppedFrames) {
    // The ruler is the last to hold the frames: the current images own the storage of the last one.
    Draws draws(414);
    const DepthScene scene = blockScene(200);
    Quorvel ruler = scene.ruler();
    ruler.productType = KIOSK;
    setPlane(ruler, {0, 0, 1}, scene.distance, 5);
    ruler.effectiveRegion = cv::Rect(cv::Point(0, 0), scene.size);
    const auto measureBatch = [&] {
        const std::vector<cv::Mat> colors{scene.color(), scene.color()};
        const cv::Mat first = scene.depth(draws);
        ASSERT_TRUE(ruler.getCameraMultipleFrame(colors, {first, scene.depth(draws)}));
    };
    std::size_t warm = 0;
    for (int run = 0; run < 20; ++run) {
        measureBatch();
        ASSERT_EQ(ruler.measureMultiple(50, 50, 50), 0) << "run " << run;
        warm = run == 2 ? internal::KeptImages::instance().bytes() : warm;
    }
    EXPECT_EQ(internal::KeptImages::instance().bytes(), warm);
}

TEST(BatchIntake, LeavesTheFramesOfTheHost) {
    WithBatch w;
    const Batch before = w.batch.clone();
    for (int round = 0; round < 3; ++round) {
        const Batch next = drawBatch(w.draws, kSize, 3);
        ASSERT_TRUE(w.ruler.getCameraMultipleFrame(next.colors, next.depths));
        for (std::size_t i = 0; i < before.colors.size(); ++i) {
            ASSERT_TRUE(sameBits(w.batch.colors[i], before.colors[i])) << i;
            ASSERT_TRUE(sameBits(w.batch.depths[i], before.depths[i])) << i;
        }
    }
}

TEST(BatchIntake, NeverKeepsTheFramesOfTheHost) {
    // Frames that only the ruler holds when the batch is dropped.
    Draws draws(413);
    Quorvel ruler = smallRuler();
    {
        const Batch batch = drawBatch(draws, kSize, 3).clone();
        ASSERT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths));
    }
    const std::size_t before = internal::KeptImages::instance().bytes();
    ruler.productType = GROUND_GROWING;
    ASSERT_EQ(ruler.measureMultiple(5, 5, 5), 1) << "a mode that measures none drops the batch";
    constexpr std::size_t kDerivedBytes = 3 * (64 * 48 * 12 + 16 * 12 * (3 + 2 + 12 + 12));
    EXPECT_EQ(internal::KeptImages::instance().bytes(), before + kDerivedBytes);
}

TEST(BatchIntake, AcceptsTheRulersOwnImagesAsABatch) {
    WithBatch w;
    const cv::Mat color = w.ruler.colorImage.clone();
    const cv::Mat depth = w.ruler.depthImage.clone();
    ASSERT_TRUE(w.ruler.getCameraMultipleFrame({w.ruler.colorImage, w.batch.colors[0]},
                                               {w.ruler.depthImage, w.batch.depths[0]}));
    EXPECT_TRUE(sameBits(w.ruler.colorFrameBuffer[0], color));
    EXPECT_TRUE(sameBits(w.ruler.depthFrameBuffer[0], depth));
    EXPECT_TRUE(sameBits(w.ruler.depthImage, depth));
    ASSERT_TRUE(w.ruler.getCameraMultipleFrame(w.ruler.colorFrameBuffer, w.ruler.depthFrameBuffer))
        << "its own buffers, which the call empties";
    EXPECT_EQ(w.ruler.depthSmallBuffer.size(), 2U);
    EXPECT_TRUE(sameBits(w.ruler.depthImage, depth));
}

TEST(BatchIntake, SaysThatTheVectorsDifferInLengthWhateverTheDebugMode) {
    for (const auto& [colors, depths] : {std::pair<int, int>{3, 2}, {2, 3}, {1, 0}, {0, 1}, {0, 7}}) {
        for (const bool debug : {false, true}) {
            for (const bool offline : {false, true}) {
                WithBatch w;
                w.ruler.debugMode = debug;
                w.ruler.offlineMode = offline;
                const Batch batch{drawBatch(w.draws, kSize, colors).colors, drawBatch(w.draws, kSize, depths).depths};
                const CapturedOutput output;
                expectRefusedUnchanged(w.ruler, batch, std::to_string(colors) + " and " + std::to_string(depths));
                EXPECT_EQ(output.text(), kSizeMessage) << "debugMode " << debug << ", offlineMode " << offline;
            }
        }
    }
}

/// Checks one line of text that starts as given when debug is on, and no text otherwise.
void expectOneLine(const std::string& text, const std::string& start, bool debug, const std::string& what) {
    if (!debug) {
        EXPECT_EQ(text, "") << what;
        return;
    }
    EXPECT_EQ(text.rfind(start, 0), 0U) << what << ": " << text;
    EXPECT_EQ(text.find('\n'), text.size() - 1) << what << ", one line: " << text;
}

TEST(BatchIntake, RefusesABatchWithoutFrames) {
    for (const bool debug : {false, true}) {
        WithBatch w;
        w.ruler.debugMode = debug;
        const CapturedOutput output;
        expectRefusedUnchanged(w.ruler, {}, "no frame");
        expectOneLine(output.text(), "Batch refused: it holds no frame", debug, "no frame");
    }
}

TEST(BatchIntake, RefusesEveryBatchInOfflineMode) {
    for (const bool debug : {false, true}) {
        WithBatch w;
        w.ruler.debugMode = debug;
        w.ruler.offlineMode = true;
        const CapturedOutput output;
        expectRefusedUnchanged(w.ruler, w.batch, "good frames");
        expectOneLine(output.text(), "Batch refused: in offline mode", debug, "good frames");
        expectRefusedUnchanged(w.ruler, {{cv::Mat()}, {cv::Mat()}}, "empty frames");
        expectRefusedUnchanged(w.ruler, {}, "no frame");
    }
}

TEST(BatchIntake, KeepsTheFramesUpToAnEmptyOne) {
    for (const std::size_t at : {0U, 1U, 2U}) {
        for (const int which : {1, 2, 3}) {
            for (const bool debug : {false, true}) {
                WithBatch w;
                w.ruler.debugMode = debug;
                w.ruler.productType = GROUND_TRACKING;
                Batch batch = drawBatch(w.draws, kSize, 3);
                if ((which & 1) != 0) {
                    batch.colors[at].release();
                }
                if ((which & 2) != 0) {
                    batch.depths[at].release();
                }
                Quorvel expected = detachedCopy(w.ruler);
                for (const auto& [name, buffer] : rulerBuffers()) {
                    (expected.*buffer).clear();
                }
                expected.colorImage = batch.colors[0].clone();
                expected.depthImage = batch.depths[0].clone();
                for (std::size_t i = 0; i <= at; ++i) {
                    expected.colorFrameBuffer.push_back(batch.colors[i]);
                    expected.depthFrameBuffer.push_back(batch.depths[i]);
                }
                const CapturedOutput output;
                EXPECT_FALSE(w.ruler.getCameraMultipleFrame(batch.colors, batch.depths)) << "frame " << at;
                EXPECT_EQ(output.text(), debug ? kEmptyMessage : "");
                EXPECT_TRUE(sameRuler(w.ruler, expected)) << "frame " << at << ", images " << which;
            }
        }
    }
}

TEST(BatchIntake, ClonesTheFirstFrameOfABatchWithAnEmptyOne) {
    WithBatch w;
    const cv::Mat heldColor = w.ruler.colorImage;
    const cv::Mat before = heldColor.clone();
    ASSERT_FALSE(w.ruler.getCameraMultipleFrame({w.batch.colors[0], cv::Mat()}, {w.batch.depths[0], cv::Mat()}));
    EXPECT_NE(w.ruler.colorImage.data, w.batch.colors[0].data);
    EXPECT_NE(w.ruler.depthImage.data, w.batch.depths[0].data);
    EXPECT_TRUE(sameBits(heldColor, before));
}

TEST(BatchIntake, TakesAGoodBatchAfterOneWithAnEmptyFrame) {
    WithBatch w;
    ASSERT_FALSE(w.ruler.getCameraMultipleFrame({w.batch.colors[0], cv::Mat()}, {w.batch.depths[0], cv::Mat()}));
    ASSERT_TRUE(w.ruler.getCameraMultipleFrame(w.batch.colors, w.batch.depths));
    Quorvel fresh = smallRuler();
    ASSERT_TRUE(fresh.getCameraMultipleFrame(w.batch.colors, w.batch.depths));
    EXPECT_TRUE(sameBuffers(w.ruler, fresh));
}

TEST(BatchIntake, RefusesAMismatchedFrameAnywhereAndChangesNothing) {
    const std::array<int, 3> cube{2, 48, 64};
    const std::vector<std::pair<bool, cv::Mat>> misfits{
        {true, cv::Mat(48, 64, CV_8UC1)},         {true, cv::Mat(48, 64, CV_8UC4)},
        {true, cv::Mat(48, 63, CV_8UC3)},         {true, cv::Mat(64, 48, CV_8UC3)},
        {true, cv::Mat(3, cube.data(), CV_8UC3)}, {false, cv::Mat(49, 64, CV_16UC1)},
        {false, cv::Mat(48, 65, CV_16UC1)},       {false, cv::Mat(48, 64, CV_16SC1)},
        {false, cv::Mat(48, 64, CV_16UC3)},       {false, cv::Mat(48, 64, CV_32FC1)},
        {false, cv::Mat(48, 64, CV_8UC1)},        {false, cv::Mat(3, cube.data(), CV_16UC1)},
        {false, cv::Mat(48, 0, CV_16UC1)},
    };
    for (std::size_t misfit = 0; misfit < misfits.size(); ++misfit) {
        for (const std::size_t at : {0U, 1U, 2U}) {
            for (const bool debug : {false, true}) {
                WithBatch w;
                w.ruler.debugMode = debug;
                w.ruler.productType = GROUND_TRACKING;
                Batch batch = drawBatch(w.draws, kSize, 3);
                (misfits[misfit].first ? batch.colors : batch.depths)[at] = misfits[misfit].second;
                const std::string what = "misfit " + std::to_string(misfit) + " at " + std::to_string(at);
                const CapturedOutput output;
                expectRefusedUnchanged(w.ruler, batch, what);
                expectOneLine(output.text(), "Batch refused because of frame " + std::to_string(at), debug, what);
            }
        }
    }
}

TEST(BatchIntake, SaysWhatWasExpectedAndWhatCame) {
    WithBatch w;
    w.ruler.debugMode = true;
    w.batch.depths[2] = cv::Mat(31, 77, CV_32FC1);
    const CapturedOutput output;
    EXPECT_FALSE(w.ruler.getCameraMultipleFrame(w.batch.colors, w.batch.depths));
    for (const std::string part : {"frame 2", "64 x 48", "CV_16UC1", "77 x 31", "CV_32FC1"}) {
        EXPECT_NE(output.text().find(part), std::string::npos) << part << " in: " << output.text();
    }
}

TEST(BatchIntake, RefusesBatchesWithoutAUsableDownScale) {
    for (const int downScale : {0, -1, -4, 49, 1000}) {
        WithBatch w;
        w.ruler.downScale = downScale;
        expectRefusedUnchanged(w.ruler, w.batch, "downScale " + std::to_string(downScale));
    }
}

TEST(BatchIntake, RefusesBatchesOfAnUnconfiguredRuler) {
    Quorvel ruler(60, 60, 32, 24, 64, 48, true, "no-such-folder");
    ASSERT_EQ(ruler.downScale, 0);
    Draws draws(6);
    expectRefusedUnchanged(ruler, drawBatch(draws, kSize, 2), "in offline mode");
    // A host that clears the mode still has no frame size.
    ruler.offlineMode = false;
    expectRefusedUnchanged(ruler, drawBatch(draws, kSize, 2), "without a frame size");
}

TEST(BatchIntake, NeverWritesTheHostsPixels) {
    // Windows of larger matrices included, and the scale at which small and full images are of one size.
    Draws draws(7);
    for (int run = 0; run < 40; ++run) {
        const DepthScene scene = blockScene(200);
        Batch batch = sceneBatch(scene, draws, 3);
        std::vector<cv::Mat> parents;
        for (std::vector<cv::Mat>* images : {&batch.colors, &batch.depths}) {
            for (cv::Mat& image : *images) {
                cv::Mat parent(image.rows + 4, image.cols + 6, image.type(), cv::Scalar::all(77));
                cv::Mat window = parent(cv::Rect(3, 2, image.cols, image.rows));
                image.copyTo(window);
                image = run % 2 == 0 ? window : image;
                parents.push_back(run % 2 == 0 ? parent : image);
            }
        }
        std::vector<cv::Mat> before;
        before.reserve(parents.size());
        for (const cv::Mat& parent : parents) {
            before.push_back(parent.clone());
        }
        Quorvel ruler = scene.ruler();
        ruler.downScale = draws.chance(50) ? 1 : 4;
        ruler.productType = draws.chance(50) ? KIOSK : GROUND_TRACKING;
        const bool measureSingle = draws.chance(50);
        const CapturedOutput output;
        ASSERT_TRUE(ruler.getCameraMultipleFrame(batch.colors, batch.depths));
        setPlane(ruler, {0, 0, 1}, scene.distance, 5);
        ruler.effectiveRegion = cv::Rect(cv::Point(0, 0), scene.size);
        if (measureSingle) {
            ruler.measureOnce();
        }
        EXPECT_EQ(ruler.measureMultiple(1, 1, 1), 0);
        // The current frame now shares the host's last one: neither intake may write into it.
        const Batch next = drawBatch(draws, scene.size, 2);
        ASSERT_TRUE(draws.chance(50) ? ruler.getCameraFrame(next.colors[0], next.depths[0])
                                     : ruler.getCameraMultipleFrame(next.colors, next.depths));
        for (std::size_t i = 0; i < parents.size(); ++i) {
            ASSERT_TRUE(sameBits(parents[i], before[i])) << "run " << run << ", image " << i;
        }
    }
}

TEST(BatchIntake, LeavesRoomForASingleFrameAfterwards) {
    WithBatch w;
    ASSERT_TRUE(w.ruler.getCameraMultipleFrame(w.batch.colors, w.batch.depths));
    const Batch host = w.batch.clone();
    const Quorvel before = detachedCopy(w.ruler);
    const cv::Mat color = drawColor(w.draws, kSize);
    const cv::Mat depth = drawDepth(w.draws, kSize);
    ASSERT_TRUE(w.ruler.getCameraFrame(color, depth));
    Quorvel single = smallRuler();
    ASSERT_TRUE(single.getCameraFrame(color, depth));
    EXPECT_TRUE(sameBits(w.ruler.depthImage, depth));
    EXPECT_TRUE(sameBits(w.ruler.pointCloud, single.pointCloud));
    EXPECT_TRUE(sameBits(w.ruler.depthSmall, single.depthSmall));
    EXPECT_TRUE(sameBuffers(w.ruler, before)) << "a single frame leaves the batch";
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(sameBits(w.batch.colors[i], host.colors[i])) << i;
        EXPECT_TRUE(sameBits(w.batch.depths[i], host.depths[i])) << i;
    }
}

TEST(BatchIntake, FitsThePlaneToTheFirstFrameOnlyInGroundTracking) {
    DepthScene scene;
    scene.size = {400, 320};
    scene.focal = 380;
    scene.noise = 1;
    Draws draws(9);
    const cv::Mat nearDepth = scene.depth(draws);
    scene.distance = 1400;
    const cv::Mat farDepth = scene.depth(draws);
    for (const ProductType type : {KIOSK, GROUND_GROWING, KIOSK_LOW_OBJECT}) {
        Quorvel ruler = scene.ruler();
        ruler.productType = type;
        EXPECT_TRUE(ruler.getCameraMultipleFrame({scene.color(), scene.color()}, {nearDepth, farDepth}));
        EXPECT_FALSE(ruler.calibStatus) << type;
        EXPECT_EQ(ruler.refPlaneNormal, cv::Vec3f(0, 0, 0)) << type;
    }
    Quorvel ruler = scene.ruler();
    ruler.productType = GROUND_TRACKING;
    std::srand(5);
    EXPECT_TRUE(ruler.getCameraMultipleFrame({scene.color(), scene.color()}, {nearDepth, farDepth}));
    EXPECT_TRUE(ruler.calibStatus);
    EXPECT_NEAR(ruler.refPlaneOffset, 1000, 2) << "of the first frame, the second is 1400 mm away";
    Quorvel single = scene.ruler();
    single.productType = GROUND_TRACKING;
    std::srand(5);
    EXPECT_TRUE(single.getCameraFrame(scene.color(), nearDepth));
    EXPECT_TRUE(sameSettings(ruler, single)) << "the same draws on the same frame";
}

TEST(BatchIntake, CountsAsCalibratedInGroundTrackingEvenWhenTheFitFails) {
    // Too few points for a fit: the plane stays as it was.
    WithBatch w;
    w.ruler.productType = GROUND_TRACKING;
    w.ruler.refPlaneNormal = {0, 0, 1};
    w.ruler.refPlaneOffset = 500;
    EXPECT_TRUE(w.ruler.getCameraMultipleFrame(w.batch.colors, w.batch.depths));
    EXPECT_TRUE(w.ruler.calibStatus);
    EXPECT_EQ(w.ruler.refPlaneNormal, cv::Vec3f(0, 0, 1));
    EXPECT_EQ(w.ruler.refPlaneOffset, 500.0F);
}

TEST(BatchIntake, LooksForEmptyFramesBeforeItChecksTheOthers) {
    // As for a single frame, an empty image is reported before any other defect.
    WithBatch w;
    w.ruler.debugMode = true;
    const cv::Mat odd(2, 3, CV_32FC1, cv::Scalar(1));
    const CapturedOutput output;
    EXPECT_FALSE(w.ruler.getCameraMultipleFrame({odd, cv::Mat()}, {w.batch.depths[0], cv::Mat()}));
    EXPECT_EQ(output.text(), kEmptyMessage);
    EXPECT_TRUE(sameBits(w.ruler.colorImage, odd));
    EXPECT_TRUE(w.ruler.pointCloudBuffer.empty());
}

}  // namespace

}  // namespace quorvel::test
