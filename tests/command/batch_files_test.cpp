// SPDX-License-Identifier: Apache-2.0
#include "kit/input/batch_files.h"

#include <gtest/gtest.h>

#include "command_run.h"
#include "kit/input/input_error.h"

namespace quorvel::command {

using namespace kit;
namespace {

using Pairs = std::vector<std::pair<std::string, std::string>>;

class BatchFiles : public ::testing::Test {
protected:
    void makeFiles(const std::vector<std::string>& names) const {
        for (const std::string& name : names) {
            folder_.write(name, "x");
        }
    }

    /// File names of the pairs that are found, in order.
    Pairs found() const {
        Pairs pairs;
        for (const FrameFiles& files : findFrames(folder_.path().string())) {
            EXPECT_EQ(std::filesystem::path(files.depth).parent_path(), folder_.path());
            EXPECT_EQ(std::filesystem::path(files.color).parent_path(), folder_.path());
            pairs.emplace_back(std::filesystem::path(files.color).filename().string(),
                               std::filesystem::path(files.depth).filename().string());
        }
        return pairs;
    }

    /// Message with which the folder is refused; empty when it is not.
    std::string refusal() const {
        try {
            findFrames(folder_.path().string());
        } catch (const InputError& error) {
            return error.what();
        }
        return {};
    }

    void expectRefusal(const std::vector<std::string>& words) const {
        const std::string message = refusal();
        EXPECT_FALSE(message.empty()) << "the folder was taken";
        for (const std::string& word : words) {
            EXPECT_NE(message.find(word), std::string::npos) << "expected \"" << word << "\" in " << message;
        }
    }

    TemporaryFolder folder_;
};

TEST_F(BatchFiles, WordMayStandAnywhereInTheName) {
    makeFiles({"00_color.png", "00_depth.png", "depth_x1.png", "color_x1.png", "a-depth-9.png", "a-colour-9.png"});
    EXPECT_EQ(found(), (Pairs{{"color_x1.png", "depth_x1.png"},
                              {"00_color.png", "00_depth.png"},
                              {"a-colour-9.png", "a-depth-9.png"}}));
}

TEST_F(BatchFiles, EndingsMayDifferAndCaseDoesNotCount) {
    makeFiles({"Color_1.JPG", "depth_1.tif", "color_2.jpeg", "DEPTH_2.tiff"});
    EXPECT_EQ(found(), (Pairs{{"Color_1.JPG", "depth_1.tif"}, {"color_2.jpeg", "DEPTH_2.tiff"}}));
}

TEST_F(BatchFiles, NumbersSortAsNumbers) {
    makeFiles({"color_10.png", "depth_10.png", "color_9.png", "depth_9.png", "color_002.png", "depth_002.png",
               "color_100.png", "depth_100.png"});
    EXPECT_EQ(found(), (Pairs{{"color_002.png", "depth_002.png"},
                              {"color_9.png", "depth_9.png"},
                              {"color_10.png", "depth_10.png"},
                              {"color_100.png", "depth_100.png"}}));
}

TEST_F(BatchFiles, NumbersLongerThanAnIntegerAndNumbersEqualButForZerosHaveAnOrder) {
    makeFiles({"color_99999999999999999999999.png", "depth_99999999999999999999999.png",
               "color_100000000000000000000000.png", "depth_100000000000000000000000.png", "color_1.png", "depth_1.png",
               "color_01.png", "depth_01.png", "color_0.png", "depth_0.png"});
    EXPECT_EQ(found(), (Pairs{{"color_0.png", "depth_0.png"},
                              {"color_01.png", "depth_01.png"},
                              {"color_1.png", "depth_1.png"},
                              {"color_99999999999999999999999.png", "depth_99999999999999999999999.png"},
                              {"color_100000000000000000000000.png", "depth_100000000000000000000000.png"}}));
}

TEST_F(BatchFiles, EmptyFramesOtherFilesAndFoldersAreLeftOut) {
    makeFiles({"color_1.png", "depth_1.png", "empty_color.png", "Empty_depth.png", "composed_empty_depth.png",
               "overlay.png", "camera.json", "depth.txt"});
    std::filesystem::create_directory(folder_.path() / "color_2.png");
    EXPECT_EQ(found(), (Pairs{{"color_1.png", "depth_1.png"}}));
}

TEST_F(BatchFiles, PlainPairCountsOnlyWithoutNumberedOnes) {
    makeFiles({"color.png", "depth.png"});
    EXPECT_EQ(found(), (Pairs{{"color.png", "depth.png"}}));
    makeFiles({"color_00.png", "depth_00.png"});
    EXPECT_EQ(found(), (Pairs{{"color_00.png", "depth_00.png"}}));
}

TEST_F(BatchFiles, PictureWithoutPartnerIsNamed) {
    makeFiles({"color_00.png", "depth_00.png", "color_01.png"});
    expectRefusal({"color_01.png", "no depth image"});
    std::filesystem::remove(folder_.path() / "color_01.png");
    makeFiles({"depth_01.png"});
    expectRefusal({"depth_01.png", "no colour image"});
}

TEST_F(BatchFiles, AmbiguousNamesAreRefused) {
    makeFiles({"color_00.png", "depth_00.png", "depth_00.tif"});
    expectRefusal({"depth_00.png and ", "depth_00.tif", "same picture"});
    std::filesystem::remove(folder_.path() / "depth_00.tif");
    makeFiles({"depth_in_color.png"});
    expectRefusal({"depth_in_color.png", "both colour and depth"});
}

TEST_F(BatchFiles, FolderWithoutPairs) {
    makeFiles({"picture.png", "empty_color.png", "empty_depth.png"});
    expectRefusal({"--batch", "holds no pair", "color_00.png and depth_00.png"});
}

TEST_F(BatchFiles, MissingFolder) {
    EXPECT_THROW(findFrames(folder_.file("nothing")), InputError);
}

TEST(PairFiles, KthColorBelongsToKthDepth) {
    const auto files = pairFiles({"a", "b"}, {"c", "d"});
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[0].color + files[0].depth, "ac");
    EXPECT_EQ(files[1].color + files[1].depth, "bd");
}

TEST(PairFiles, NoColorAtAllIsFine) {
    const auto files = pairFiles({}, {"c", "d"});
    ASSERT_EQ(files.size(), 2U);
    EXPECT_EQ(files[1].color, "");
    EXPECT_EQ(files[1].depth, "d");
}

TEST(PairFiles, OtherNumbersAreRefused) {
    EXPECT_THROW(pairFiles({"a"}, {"c", "d"}), InputError);
    EXPECT_THROW(pairFiles({"a", "b"}, {"c"}), InputError);
    EXPECT_THROW(pairFiles({"a"}, {}), InputError);
    EXPECT_THROW(pairFiles({}, {}), InputError);
}

}  // namespace
}  // namespace quorvel::command
