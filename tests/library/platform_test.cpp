// SPDX-License-Identifier: Apache-2.0
#include "files/platform.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <quorvel/quorvel.h>

#include "files/text_file.h"
#include "files/whole_file.h"
#include "support/captured_output.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

using namespace internal;

/// A folder with a euro sign in the code page of western Windows; on Linux any byte is as good as another.
const std::string kBeyondAscii = "eur\x80";

TEST(Platform, TellsAFolderFromAFileAndFromNothing) {
    const WorkingDirectory here;
    std::ofstream("file") << "text";
    ASSERT_TRUE(makeFolder("folder"));
    EXPECT_TRUE(isFolder("folder"));
    EXPECT_TRUE(isFolder("./folder"));
    EXPECT_TRUE(isFolder("./folder/"));
    EXPECT_TRUE(isFolder("."));
    EXPECT_TRUE(pathExists("folder"));
    EXPECT_FALSE(isFolder("file"));
    EXPECT_TRUE(pathExists("file"));
    EXPECT_FALSE(isFolder("nothing"));
    EXPECT_FALSE(isFolder("file/nothing"));
    EXPECT_FALSE(pathExists("nothing"));
    EXPECT_FALSE(isFolder(""));
    EXPECT_FALSE(pathExists(""));
}

TEST(Platform, FollowsLinksToFolders) {
    const WorkingDirectory here;
    std::filesystem::create_directory("folder");
    std::error_code failed;
    std::filesystem::create_directory_symlink("folder", "link", failed);
    if (failed) {
        GTEST_SKIP() << "no links here: " << failed.message();
    }
    EXPECT_TRUE(isFolder("link"));
    std::filesystem::remove("folder");
    EXPECT_FALSE(isFolder("link")) << "a link to nothing";
}

TEST(Platform, MakesAFolderOnceAndOnlyBelowAParent) {
    const WorkingDirectory here;
    std::ofstream("file") << "text";
    EXPECT_TRUE(makeFolder("folder"));
    EXPECT_FALSE(makeFolder("folder"));
    EXPECT_FALSE(makeFolder("file"));
    EXPECT_FALSE(makeFolder("file/folder"));
    EXPECT_FALSE(makeFolder("no/parent"));
    EXPECT_FALSE(makeFolder(""));
}

TEST(Platform, ListsTheNamesOfAFolder) {
    const WorkingDirectory here;
    ASSERT_TRUE(makeFolder("folder"));
    std::ofstream("folder/a.txt") << "text";
    ASSERT_TRUE(makeFolder("folder/b"));
    std::vector<std::string> names = namesIn("folder/");
    std::sort(names.begin(), names.end());
    EXPECT_EQ(names, (std::vector<std::string>{".", "..", "a.txt", "b"}));
    names = namesIn("");
    EXPECT_NE(std::find(names.begin(), names.end(), "folder"), names.end()) << "the working directory";
    EXPECT_TRUE(namesIn("nothing/").empty());
}

TEST(Platform, TakesAPathApart) {
    EXPECT_EQ(folderOf("a/b/c.txt"), "a/b/");
    EXPECT_EQ(folderOf("/c.txt"), "/");
    EXPECT_EQ(folderOf("c.txt"), "");
    EXPECT_EQ(folderOf("a/"), "a/");
    EXPECT_EQ(folderOf(""), "");
}

TEST(Platform, KnowsItselfRunning) {
    EXPECT_TRUE(isRunning(processNumber()));
}

TEST(Platform, FoldersFilesAndImagesAgreeOnNamesBeyondAscii) {
    const WorkingDirectory here;
    ASSERT_TRUE(makeFolder(kBeyondAscii));
    EXPECT_TRUE(isFolder(kBeyondAscii));
    ASSERT_TRUE(writeWholeFile(kBeyondAscii + "/a.txt", "text\n", FileContent::Text));
    EXPECT_EQ(readTextFile(kBeyondAscii + "/a.txt"), "text\n");
    EXPECT_TRUE(pathExists(kBeyondAscii + "/a.txt"));
    ASSERT_TRUE(cv::imwrite(kBeyondAscii + "/a.png", cv::Mat::ones(2, 3, CV_8UC1)));
    EXPECT_EQ(cv::imread(kBeyondAscii + "/a.png", cv::IMREAD_UNCHANGED).size(), cv::Size(3, 2));
}

TEST(Platform, AnOfflineStartReadsAFolderBeyondAscii) {
    const WorkingDirectory here;
    ASSERT_TRUE(makeFolder(kBeyondAscii));
    std::ofstream(kBeyondAscii + "/para.txt")
        << "4\n10.0\n32.0\n24.0\n60.0\n60.0\n0.016667\n0.016667\n0.0\n0.0\n1.0\n900.0\n64\n48\n";
    ASSERT_TRUE(cv::imwrite(kBeyondAscii + "/color.png", cv::Mat::zeros(48, 64, CV_8UC3)));
    ASSERT_TRUE(cv::imwrite(kBeyondAscii + "/depth.tif", cv::Mat(48, 64, CV_16UC1, cv::Scalar(900))));
    const CapturedOutput silence;
    const Quorvel ruler(0.0F, 0.0F, 0.0F, 0.0F, 0, 0, true, kBeyondAscii);
    EXPECT_EQ(ruler.refPlaneOffset, 900.0F);
    EXPECT_EQ(ruler.depthImage.size(), cv::Size(64, 48));
}

}  // namespace

}  // namespace quorvel::test
