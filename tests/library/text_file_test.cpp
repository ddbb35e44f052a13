// SPDX-License-Identifier: Apache-2.0
#include "files/text_file.h"

#ifndef _WIN32
#include <sys/stat.h>
#endif

#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "files/platform.h"
#include "support/file_bytes.h"
#include "support/ordinary_user.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

using internal::ensureFolder;
using internal::isFolder;
using internal::kLongestText;
using internal::readTextFile;
using internal::readWholeTextFile;

TEST(ReadTextFile, HandsBackEveryCharacter) {
    const WorkingDirectory here;
    std::ofstream("a.txt", std::ios::binary) << "one\n\n two \tthree\n";
    EXPECT_EQ(readTextFile("a.txt"), "one\n\n two \tthree\n");
}

TEST(ReadTextFile, AnEmptyFileIsAnEmptyText) {
    const WorkingDirectory here;
    std::ofstream("empty.txt").close();
    EXPECT_EQ(readTextFile("empty.txt"), "");
}

TEST(ReadTextFile, AMissingFileIsNothing) {
    const WorkingDirectory here;
    EXPECT_FALSE(readTextFile("none.txt").has_value());
    EXPECT_FALSE(readTextFile("no/such/folder.txt").has_value());
    EXPECT_FALSE(readTextFile("").has_value());
}

TEST(ReadTextFile, AFolderIsNothing) {
    const WorkingDirectory here;
    std::filesystem::create_directory("folder");
    EXPECT_FALSE(readTextFile("folder").has_value());
}

TEST(ReadTextFile, NeedsThePermissionToRead) {
    const WorkingDirectory here;
    put("locked", "text");
    std::filesystem::permissions("locked", std::filesystem::perms::none);
    asOrdinaryUser([] {
        if (std::ifstream("locked").is_open()) {
            GTEST_SKIP() << "permissions to read mean nothing here";
        }
        EXPECT_FALSE(readTextFile("locked").has_value());
    });
}

TEST(ReadTextFile, LooksAtTheStartOfALongFileOnly) {
    const WorkingDirectory here;
    put("long.txt", "1 2" + std::string(10 * kLongestText, ' ') + "3");
    EXPECT_EQ(readTextFile("long.txt"), "1 2" + std::string(kLongestText - 3, ' '));
    EXPECT_FALSE(readWholeTextFile("long.txt").has_value());
}

TEST(ReadTextFile, LeavesOutAWordThatItsBoundCuts) {
    const WorkingDirectory here;
    put("cut.txt", std::string(kLongestText - 2, ' ') + "12345");
    EXPECT_EQ(readTextFile("cut.txt"), std::string(kLongestText - 3, ' ')) << "12345 must not become 123";
    put("word.txt", std::string(kLongestText + 1, '7'));
    EXPECT_EQ(readTextFile("word.txt"), "");
}

TEST(ReadTextFile, TakesATextAsLongAsItsBound) {
    const WorkingDirectory here;
    put("full.txt", std::string(kLongestText, '7'));
    EXPECT_EQ(readTextFile("full.txt"), std::string(kLongestText, '7'));
    EXPECT_EQ(readWholeTextFile("full.txt"), std::string(kLongestText, '7'));
}

#ifndef _WIN32

TEST(ReadTextFile, DoesNotWaitForAPipeNorReadADevice) {
    const WorkingDirectory here;
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    EXPECT_FALSE(readTextFile("pipe").has_value());
    EXPECT_FALSE(readTextFile("/dev/zero").has_value());
    std::filesystem::create_symlink("/dev/zero", "link");
    EXPECT_FALSE(readTextFile("link").has_value());
    EXPECT_FALSE(readWholeTextFile("link").has_value());
}

TEST(ReadTextFile, ALinkToNothingIsNothing) {
    const WorkingDirectory here;
    std::filesystem::create_symlink("none", "link");
    EXPECT_FALSE(readTextFile("link").has_value());
    put("none", "text");
    EXPECT_EQ(readTextFile("link"), "text");
}

#endif

TEST(EnsureFolder, CreatesAMissingFolder) {
    const WorkingDirectory here;
    ensureFolder("./param");
    EXPECT_TRUE(std::filesystem::is_directory("param"));
}

TEST(EnsureFolder, LeavesAFolderWithItsFiles) {
    const WorkingDirectory here;
    std::filesystem::create_directory("param");
    put("param/a.txt", "kept");
    ensureFolder("param");
    EXPECT_EQ(readTextFile("param/a.txt"), "kept");
}

TEST(EnsureFolder, LeavesAFileOfThatName) {
    const WorkingDirectory here;
    put("param", "a file");
    ensureFolder("param");
    EXPECT_EQ(readTextFile("param"), "a file");
}

TEST(EnsureFolder, CreatesNoMissingParents) {
    const WorkingDirectory here;
    ensureFolder("a/b");
    ensureFolder("");
    EXPECT_FALSE(std::filesystem::exists("a"));
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

}  // namespace

}  // namespace quorvel::test
