// SPDX-License-Identifier: Apache-2.0
#include "kit/output/output_file.h"

#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command_run.h"
#include "kit/input/input_error.h"

namespace quorvel::command {

using namespace kit;
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

class OutputFile : public ::testing::Test {
protected:
    /// \return the message of the refusal; empty when there is none
    template <typename Action>
    static std::string refusal(Action action) {
        try {
            action();
            return {};
        } catch (const InputError& error) {
            return error.what();
        }
    }

    std::size_t filesInFolder() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()));
    }

    fs::path file(const std::string& name) const { return folder_.path() / name; }

    TemporaryFolder folder_;
};

TEST_F(OutputFile, IsMadeOrReplaced) {
    writeOutputFile(file("new.bin"), std::string("a\0\r\n", 4));
    EXPECT_EQ(folder_.read("new.bin"), std::string("a\0\r\n", 4));
    writeOutputFile(file("new.bin"), "second");
    EXPECT_EQ(folder_.read("new.bin"), "second");
    EXPECT_EQ(filesInFolder(), 1U);
}

TEST_F(OutputFile, NothingIsInPlaceBeforeTheLastIsWritten) {
    folder_.write("one", "old");
    {
        OutputFiles files;
        files.add(file("one"), "new");
        files.add(file("two"), "new");
        EXPECT_EQ(folder_.read("one"), "old");
        EXPECT_FALSE(fs::exists(file("two")));
        EXPECT_THAT(refusal([&] { files.add(file("no/such/folder"), "new"); }), HasSubstr("cannot be written"));
    }
    EXPECT_EQ(folder_.read("one"), "old");
    EXPECT_EQ(filesInFolder(), 1U) << "the unfinished file is removed";
}

TEST_F(OutputFile, CommitPutsAllInPlaceAndRemovesTheStale) {
    folder_.write("one", "old");
    folder_.write("stale", "old");
    OutputFiles files;
    files.add(file("one"), "new");
    files.removeStale(file("stale"));
    files.add(file("two"), "new");
    EXPECT_TRUE(fs::exists(file("stale")));
    files.commit();
    EXPECT_EQ(folder_.read("one"), "new");
    EXPECT_EQ(folder_.read("two"), "new");
    EXPECT_EQ(filesInFolder(), 2U);
}

TEST_F(OutputFile, FolderIsRefused) {
    fs::create_directory(file("folder"));
    EXPECT_THAT(refusal([&] { writeOutputFile(file("folder"), "x"); }), HasSubstr("it is a folder"));
    EXPECT_THAT(refusal([&] { requireWritable(file("folder")); }), HasSubstr("it is a folder"));
    EXPECT_EQ(filesInFolder(), 1U);
}

TEST_F(OutputFile, ProbingChangesNothing) {
    folder_.write("one", "old");
    requireWritable(file("one"));
    requireWritable(file("two"));
    EXPECT_EQ(folder_.read("one"), "old");
    EXPECT_EQ(filesInFolder(), 1U);
    EXPECT_THAT(refusal([&] { requireWritable(file("no/such")); }), HasSubstr("cannot be written"));
}

#ifndef _WIN32

TEST_F(OutputFile, LinksStayAndTheirTargetIsReplaced) {
    folder_.write("target", "old");
    fs::create_symlink("target", file("link"));
    fs::create_symlink("link", file("link2"));
    fs::create_symlink("later", file("dangling"));
    writeOutputFile(file("link2"), "new");
    writeOutputFile(file("dangling"), "made");
    EXPECT_EQ(folder_.read("target"), "new");
    EXPECT_EQ(folder_.read("later"), "made");
    for (const char* link : {"link", "link2", "dangling"}) {
        EXPECT_TRUE(fs::is_symlink(file(link))) << link;
    }
    fs::create_symlink("loop", file("loop"));
    EXPECT_THAT(refusal([&] { writeOutputFile(file("loop"), "x"); }), HasSubstr("leads to itself"));
}

TEST_F(OutputFile, PermissionsStay) {
    folder_.write("one", "old");
    fs::permissions(file("one"), fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    writeOutputFile(file("one"), "new");
    EXPECT_EQ(fs::status(file("one")).permissions(),
              fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
}

TEST_F(OutputFile, DevicesAreWrittenStraight) {
    EXPECT_EQ(refusal([] { writeOutputFile("/dev/null", "x"); }), "");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_THAT(refusal([] { writeOutputFile("/dev/full", "x"); }), HasSubstr("/dev/full"));
}

#endif

}  // namespace
}  // namespace quorvel::command
