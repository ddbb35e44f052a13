// SPDX-License-Identifier: Apache-2.0
#include "common/text_file.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

#include <gtest/gtest.h>

#include "common/platform.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

using internal::canRead;
using internal::ensureFolder;
using internal::isFolder;
using internal::readTextFile;
using internal::writeTextFile;

TEST(IsFolder, TellsFoldersFromFilesAndNothing) {
    const WorkingDirectory here;
    std::filesystem::create_directory("folder");
    std::ofstream("file").close();
    EXPECT_TRUE(isFolder("folder"));
    EXPECT_TRUE(isFolder("./folder/"));
    EXPECT_TRUE(isFolder("."));
    EXPECT_FALSE(isFolder("file"));
    EXPECT_FALSE(isFolder("none"));
    EXPECT_FALSE(isFolder("file/none"));
    EXPECT_FALSE(isFolder(""));
}

TEST(IsFolder, FollowsLinks) {
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

TEST(CanRead, TellsFilesFromFoldersAndNothing) {
    const WorkingDirectory here;
    std::filesystem::create_directory("folder");
    std::ofstream("empty").close();
    std::ofstream("file") << "text";
    EXPECT_TRUE(canRead("file"));
    EXPECT_TRUE(canRead("empty"));
    EXPECT_FALSE(canRead("folder"));
    EXPECT_FALSE(canRead("."));
    EXPECT_FALSE(canRead("none"));
    EXPECT_FALSE(canRead("none/file"));
    EXPECT_FALSE(canRead("file/none"));
    EXPECT_FALSE(canRead(""));
    EXPECT_FALSE(std::filesystem::exists("none")) << "asking creates nothing";
}

TEST(CanRead, NeedsThePermissionToRead) {
    const WorkingDirectory here;
    std::ofstream("locked") << "text";
    std::filesystem::permissions("locked", std::filesystem::perms::none);
    if (std::ifstream("locked").is_open()) {
        GTEST_SKIP() << "this user may read every file";
    }
    EXPECT_FALSE(canRead("locked"));
}

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

TEST(WriteTextFile, ReplacesWhatWasThere) {
    const WorkingDirectory here;
    EXPECT_TRUE(writeTextFile("a.txt", "a long first text\n"));
    EXPECT_TRUE(writeTextFile("a.txt", "short\n"));
    EXPECT_EQ(readTextFile("a.txt"), "short\n");
}

TEST(WriteTextFile, SaysWhenTheFileCannotBeOpened) {
    const WorkingDirectory here;
    std::filesystem::create_directory("folder");
    EXPECT_FALSE(writeTextFile("missing/a.txt", "text"));
    EXPECT_FALSE(writeTextFile("folder", "text"));
    EXPECT_FALSE(std::filesystem::exists("missing"));
    EXPECT_TRUE(std::filesystem::is_directory("folder"));
}

TEST(EnsureFolder, CreatesAMissingFolder) {
    const WorkingDirectory here;
    ensureFolder("./param");
    EXPECT_TRUE(std::filesystem::is_directory("param"));
}

TEST(EnsureFolder, LeavesAFolderWithItsFiles) {
    const WorkingDirectory here;
    std::filesystem::create_directory("param");
    writeTextFile("param/a.txt", "kept");
    ensureFolder("param");
    EXPECT_EQ(readTextFile("param/a.txt"), "kept");
}

TEST(EnsureFolder, LeavesAFileOfThatName) {
    const WorkingDirectory here;
    writeTextFile("param", "a file");
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
