// SPDX-License-Identifier: Apache-2.0
#include "files/whole_file.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#ifndef _WIN32
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include "files/platform.h"
#include "support/file_bytes.h"
#include "support/ordinary_user.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

namespace fs = std::filesystem;

using internal::FileContent;
using internal::StagedFile;
using internal::WriteProblem;
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
        // On Windows a file cannot be replaced while it is open, so a reader that keeps it open would stop every
        // writer.
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

TEST(WriteWholeFile, WritesNamesAsLongAsFileSystemsTake) {
    const WorkingDirectory here;
    const std::string name(250, 'n');
    EXPECT_TRUE(writeWholeFile(name, "new", FileContent::Text));
    EXPECT_EQ(bytesOf(name), "new");
    EXPECT_EQ(namesHere(), 1);
}

/// The number of a process that has run and ended.
unsigned long endedProcess() {
#ifdef _WIN32
    return 4294967292UL;  // numbers are given out from the low end
#else
    const pid_t child = fork();
    if (child == 0) {
        _exit(0);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    return static_cast<unsigned long>(child);
#endif
}

TEST(WriteWholeFile, RemovesWhatEndedProcessesHaveLeftBesideThePlace) {
    const WorkingDirectory here;
    fs::create_directory("folder");
    const std::string ended = std::to_string(endedProcess());
    const std::string longName(250, 'n');
    put("a.txt." + ended + "-0.new", "part");
    put("a.txt." + ended + "-4711.new", "");
    put("folder/b.-1.txt." + ended + "-3.new", "part");
    put(longName.substr(0, 200) + "." + ended + "-3.new", "part");
    EXPECT_TRUE(writeWholeFile("a.txt", "new", FileContent::Text));
    EXPECT_EQ(namesHere(), 3) << "the two beside a.txt, and no other";
    EXPECT_TRUE(writeWholeFile("folder/b.-1.txt", "new", FileContent::Text));
    EXPECT_EQ(std::distance(fs::directory_iterator("folder"), fs::directory_iterator()), 1);
    EXPECT_TRUE(writeWholeFile(longName, "new", FileContent::Text));
    EXPECT_EQ(namesHere(), 3) << "a.txt, folder and the long name";
}

TEST(WriteWholeFile, LeavesWhatOthersStillWriteOrHaveNamed) {
    const WorkingDirectory here;
    const std::string ended = std::to_string(endedProcess());
    const std::string own = std::to_string(internal::processNumber());
#ifdef _WIN32
    const std::string& living = own;
#else
    const std::string living = std::to_string(getppid());
#endif
    const std::vector<std::string> names{"a.txt." + own + "-0.new",
                                         "a.txt." + living + "-1.new",
                                         "b.txt." + ended + "-0.new",
                                         "xa.txt." + ended + "-0.new",
                                         "a.txt." + ended + "-0.newer",
                                         "a.txt." + ended + "-0",
                                         "a.txt." + ended + ".new",
                                         "a.txt." + ended + "-.new",
                                         "a.txt.-0.new",
                                         "a.txt.-" + ended + "-0.new",
                                         "a.txt.0" + ended + "-0.new",
                                         "a.txt." + ended + "-00.new",
                                         "a.txt." + ended + "-x.new",
                                         "a.txt.+" + ended + "-0.new",
                                         "a.txt.0-0.new",
                                         "a.txt.99999999999999999999-0.new",
                                         "a.txt.9999999999-0.new",
                                         "a.txt.new",
                                         ".new"};
    for (const std::string& name : names) {
        put(name, "kept");
    }
    fs::create_directory("a.txt." + ended + "-7.new");
    EXPECT_TRUE(writeWholeFile("a.txt", "new", FileContent::Text));
    for (const std::string& name : names) {
        EXPECT_EQ(bytesOf(name), "kept") << name;
    }
    EXPECT_TRUE(fs::exists("a.txt." + ended + "-7.new")) << "writers leave no folders";
    EXPECT_EQ(namesHere(), static_cast<std::ptrdiff_t>(names.size()) + 2);
}

TEST(StagedFile, IsInPlaceOnceItIsCommitted) {
    const WorkingDirectory here;
    put("one", "old");
    {
        StagedFile one("one");
        StagedFile two("two");
        EXPECT_EQ(one.stage("new", FileContent::Binary), WriteProblem::None);
        EXPECT_EQ(two.stage("new", FileContent::Binary), WriteProblem::None);
        EXPECT_EQ(bytesOf("one"), "old");
        EXPECT_FALSE(fs::exists("two"));
        StagedFile moved(std::move(one));
        EXPECT_EQ(moved.commit(), WriteProblem::None);
        EXPECT_EQ(moved.systemError(), 0);
        EXPECT_EQ(bytesOf("one"), "new");
    }
    EXPECT_EQ(namesHere(), 1) << "the file that was not committed must be gone";
}

TEST(StagedFile, SaysWhyItIsNotWritten) {
    const WorkingDirectory here;
    fs::create_directory("folder");
    EXPECT_EQ(StagedFile("folder").stage("x", FileContent::Binary), WriteProblem::Folder);
    EXPECT_EQ(StagedFile("none/a").stage("x", FileContent::Binary), WriteProblem::NotStarted);
    StagedFile late("late");
    ASSERT_EQ(late.stage("x", FileContent::Binary), WriteProblem::None);
    fs::create_directory("late");
    put("late/a", "kept");
    EXPECT_EQ(late.commit(), WriteProblem::NotReplaced);
    EXPECT_NE(late.systemError(), 0);
    EXPECT_EQ(bytesOf("late/a"), "kept");
    put("protected", "old");
    fs::permissions("protected", fs::perms::owner_read);
    asOrdinaryUser([] {
        EXPECT_EQ(StagedFile("protected").stage("x", FileContent::Binary), WriteProblem::Protected);
        EXPECT_EQ(bytesOf("protected"), "old");
    });
    fs::permissions("protected", fs::perms::owner_all);
#ifndef _WIN32
    EXPECT_EQ(StagedFile("/dev/null").stage("x", FileContent::Binary), WriteProblem::Protected);
    EXPECT_EQ(StagedFile("/dev/full").stage("x", FileContent::Binary), WriteProblem::Protected);
    fs::create_symlink("loop", "loop");
    EXPECT_EQ(StagedFile("loop").stage("x", FileContent::Binary), WriteProblem::EndlessLinks);
#endif
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

TEST(WriteWholeFile, LinksThatLeadToThemselvesStay) {
    const WorkingDirectory here;
    fs::create_symlink("there", "here");
    fs::create_symlink("here", "there");
    EXPECT_FALSE(writeWholeFile("here", "new", FileContent::Text));
    EXPECT_TRUE(fs::is_symlink("here"));
    EXPECT_TRUE(fs::is_symlink("there"));
    EXPECT_EQ(namesHere(), 2);
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
