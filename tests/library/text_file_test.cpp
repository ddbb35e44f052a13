// SPDX-License-Identifier: Apache-2.0
#include "common/text_file.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "support/working_directory.h"

namespace quorvel::test {

namespace {

using internal::ensureFolder;
using internal::readTextFile;
using internal::writeTextFile;

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
