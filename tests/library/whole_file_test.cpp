// SPDX-License-Identifier: Apache-2.0
#include "common/whole_file.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <thread>

#include <gtest/gtest.h>

#include "support/file_bytes.h"
#include "support/ordinary_user.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

namespace fs = std::filesystem;

using internal::FileContent;
using internal::writeWholeFile;

/// \return the number of names in the working directory
std::ptrdiff_t namesHere() {
    return std::distance(fs::directory_iterator("."), fs::directory_iterator());
}

TEST(WriteWholeFile, WritesANewFileAndNothingBesideIt) {
    const WorkingDirectory here;
    EXPECT_TRUE(writeWholeFile("a.bin", std::string("x\0\n\xff", 4), FileContent::Binary));
    EXPECT_EQ(bytesOf("a.bin"), std::string("x\0\n\xff", 4));
    EXPECT_TRUE(writeWholeFile("empty", "", FileContent::Text));
    EXPECT_EQ(fs::file_size("empty"), 0U);
    EXPECT_EQ(namesHere(), 2);
}

TEST(WriteWholeFile, ReplacesALongerFile) {
    const WorkingDirectory here;
    put("a.txt", std::string(5000, 'x'));
    EXPECT_TRUE(writeWholeFile("a.txt", "short", FileContent::Text));
    EXPECT_EQ(bytesOf("a.txt"), "short");
    EXPECT_EQ(namesHere(), 1);
}

TEST(WriteWholeFile, LeavesWhatIsNoFileAlone) {
    const WorkingDirectory here;
    fs::create_directory("folder");
    EXPECT_FALSE(writeWholeFile("folder", "text", FileContent::Text));
    EXPECT_FALSE(writeWholeFile("none/a.txt", "text", FileContent::Text));
    EXPECT_FALSE(writeWholeFile("", "text", FileContent::Text));
    EXPECT_TRUE(fs::is_empty("folder"));
    EXPECT_EQ(namesHere(), 1);
}

TEST(WriteWholeFile, LeavesAWriteProtectedFileAlone) {
    const WorkingDirectory here;
    put("a.txt", "old");
    fs::permissions("a.txt", fs::perms::owner_read);
    asOrdinaryUser([] {
        EXPECT_FALSE(writeWholeFile("a.txt", "new", FileContent::Text));
        EXPECT_EQ(bytesOf("a.txt"), "old");
        EXPECT_EQ(namesHere(), 1);
    });
    fs::permissions("a.txt", fs::perms::owner_all);
}

TEST(WriteWholeFile, AReaderSeesTheOldContentOrTheNew) {
    const WorkingDirectory here;
    const std::string one(2000, '1');
    const std::string two(3000, '2');
    ASSERT_TRUE(writeWholeFile("a.txt", one, FileContent::Binary));
    std::atomic<bool> done{false};
    std::atomic<int> failed{0};
    std::thread writer([&] {
        for (int i = 0; i < 400; ++i) {
            failed += writeWholeFile("a.txt", i % 2 == 0 ? two : one, FileContent::Binary) ? 0 : 1;
        }
        done = true;
    });
    int reads = 0;
    int torn = 0;
    while (!done) {
        std::ifstream file("a.txt", std::ios::binary);
        if (file.is_open()) {
            const std::string seen{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
            torn += seen == one || seen == two ? 0 : 1;
            ++reads;
        }
#ifdef _WIN32
        // No file can be replaced there while it is open: a reader who never lets go of it keeps every writer out.
        file.close();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
#endif
    }
    writer.join();
    EXPECT_GT(reads, 0);
    EXPECT_EQ(torn, 0) << "of " << reads << " reads";
    EXPECT_EQ(failed, 0) << "a reader kept the writer from replacing the file";
    EXPECT_EQ(namesHere(), 1);
}

TEST(WriteWholeFile, TwoWritersNeverMix) {
    const WorkingDirectory here;
    const auto writeOften = [](char letter, std::size_t size) {
        for (int i = 0; i < 200; ++i) {
            writeWholeFile("a.txt", std::string(size, letter), FileContent::Binary);
        }
    };
    std::thread other(writeOften, 'x', 3000);
    writeOften('y', 2000);
    other.join();
    const std::string seen = bytesOf("a.txt");
    EXPECT_TRUE(seen == std::string(3000, 'x') || seen == std::string(2000, 'y')) << seen.substr(0, 20);
    EXPECT_EQ(namesHere(), 1);
}

#ifndef _WIN32

TEST(WriteWholeFile, WritesThroughLinksThatStay) {
    const WorkingDirectory here;
    fs::create_directory("data");
    put("data/real.txt", "old");
    fs::create_symlink("real.txt", "data/inner");
    fs::create_symlink("data/inner", "outer");
    EXPECT_TRUE(writeWholeFile("outer", "new", FileContent::Text));
    EXPECT_TRUE(fs::is_symlink("outer"));
    EXPECT_TRUE(fs::is_symlink("data/inner"));
    EXPECT_FALSE(fs::is_symlink("data/real.txt"));
    EXPECT_EQ(bytesOf("data/real.txt"), "new");
    const std::string absolute = fs::absolute("data/real.txt");
    fs::create_symlink(absolute, "absolute");
    EXPECT_TRUE(writeWholeFile("absolute", "newer", FileContent::Text));
    EXPECT_EQ(bytesOf("data/real.txt"), "newer");
}

TEST(WriteWholeFile, CreatesWhatADanglingLinkPointsTo) {
    const WorkingDirectory here;
    fs::create_symlink("later.txt", "link");
    fs::create_symlink("none/later.txt", "lost");
    EXPECT_TRUE(writeWholeFile("link", "new", FileContent::Text));
    EXPECT_TRUE(fs::is_symlink("link"));
    EXPECT_EQ(bytesOf("later.txt"), "new");
    EXPECT_FALSE(writeWholeFile("lost", "new", FileContent::Text));
    EXPECT_EQ(namesHere(), 3);
}

TEST(WriteWholeFile, ALinkThatEndsInAFolderLeadsNowhere) {
    const WorkingDirectory here;
    fs::create_directory("folder");
    fs::create_directory_symlink("folder", "link");
    EXPECT_FALSE(writeWholeFile("link", "new", FileContent::Text));
    EXPECT_TRUE(fs::is_empty("folder"));
    EXPECT_TRUE(fs::is_symlink("link"));
}

TEST(WriteWholeFile, LeavesDevicesAlone) {
    EXPECT_FALSE(writeWholeFile("/dev/null", "new", FileContent::Text));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST(WriteWholeFile, KeepsThePermissionsOfTheFileItReplaces) {
    const WorkingDirectory here;
    put("a.txt", "old");
    const fs::perms shared =
        fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read | fs::perms::group_write;
    fs::permissions("a.txt", shared);
    EXPECT_TRUE(writeWholeFile("a.txt", "new", FileContent::Text));
    EXPECT_EQ(fs::status("a.txt").permissions(), shared);
}

#endif

}  // namespace

}  // namespace quorvel::test
