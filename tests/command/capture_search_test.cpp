// SPDX-License-Identifier: Apache-2.0
#include "kit/input/capture_search.h"

#include <filesystem>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "command_run.h"

namespace quorvel::command {

using namespace kit;
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;

class CaptureSearch : public ::testing::Test {
protected:
    std::string make(const std::string& name) {
        fs::create_directories(folder_.path() / name);
        return (folder_.path() / name).make_preferred().string();
    }
    std::string makeCapture(const std::string& name) {
        const std::string path = make(name);
        folder_.write(name + "/para.txt", "");
        folder_.write(name + "/res.txt", "");
        return path;
    }

    TemporaryFolder folder_;
};

TEST_F(CaptureSearch, ACaptureIsItself) {
    const std::string path = makeCapture("any name");
    EXPECT_THAT(findCaptures(path), ElementsAre(path));
}

TEST_F(CaptureSearch, ATreeGivesItsCapturesInOrderOfTheirNames) {
    const std::string third = makeCapture("log/2026-11/2026-11-02-10-00-00");
    const std::string first = makeCapture("log/2026-09/2026-09-30-23-59-59");
    const std::string second = makeCapture("log/2026-11/2026-11-01-00-00-00");
    make("param");
    folder_.write("param/cal.txt", "");
    folder_.write("param/depth.tif", "");
    EXPECT_THAT(findCaptures(folder_.path().string()), ElementsAre(first, second, third));
}

TEST_F(CaptureSearch, OneOfTheTextFilesOrATimeStampMakesACapture) {
    const std::string a = make("tree/a");
    folder_.write("tree/a/res.txt", "");
    const std::string b = make("tree/b");
    folder_.write("tree/b/para.txt", "");
    const std::string stamped = make("tree/2026-11-16-02-31-32");
    make("tree/2026-11-16-02-31");
    EXPECT_THAT(findCaptures(folder_.file("tree")), ElementsAre(stamped, a, b));
}

TEST_F(CaptureSearch, WhatHoldsNoCaptureIsGivenBack) {
    const std::string empty = make("empty");
    EXPECT_THAT(findCaptures(empty), ElementsAre(empty));
    EXPECT_THAT(findCaptures("no such path"), ElementsAre("no such path"));
    folder_.write("file", "");
    EXPECT_THAT(findCaptures(folder_.file("file")), ElementsAre(folder_.file("file")));
}

TEST_F(CaptureSearch, ALoopOfLinksEnds) {
    const std::string capture = makeCapture("tree/capture");
    std::error_code error;
    fs::create_directory_symlink(folder_.path() / "tree", folder_.path() / "tree" / "loop", error);
    if (error) {
        GTEST_SKIP() << "no links here: " << error.message();
    }
    EXPECT_THAT(findCaptures(folder_.file("tree")), ElementsAre(capture));
}

TEST(ReadPathList, TakesALineForAPath) {
    std::istringstream list("one\n\nwith blank in it\r\n\r\nlast without end");
    EXPECT_THAT(readPathList(list), ElementsAre("one", "with blank in it", "last without end"));
    std::istringstream nothing("");
    EXPECT_THAT(readPathList(nothing), ElementsAre());
}

}  // namespace
}  // namespace quorvel::command
