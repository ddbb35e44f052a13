// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <gtest/gtest.h>

#include "sim/presets.h"
#include "sim/render.h"
#include "sim/scene_json.h"
#include "sim/test_scenes.h"

namespace quorvel::sim {
namespace {

/// A path for one test's file, which is removed with the test.
class SceneFile : public ::testing::Test {
protected:
    SceneFile()
        : path_(::testing::TempDir() + "quorvel_sim_" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".json") {}
    ~SceneFile() override { std::remove(path_.c_str()); }
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

std::string readMessage(const std::string& path) {
    return messageOf([&] { readScene(path); });
}

TEST_F(SceneFile, IsReadBackUnchanged) {
    const Scene scene = preset("clutter");
    writeScene(path(), scene);
    EXPECT_EQ(sceneToJson(readScene(path())), sceneToJson(scene));
}

TEST_F(SceneFile, MissingFileIsNamed) {
    EXPECT_EQ(readMessage(path()), path() + ": cannot be read; check that the file exists and may be read");
}

TEST_F(SceneFile, FolderIsNoFile) {
    const std::string folder = ::testing::TempDir();
    EXPECT_EQ(readMessage(folder), folder + ": cannot be read; check that the file exists and may be read");
}

TEST_F(SceneFile, MessageBeginsWithThePath) {
    std::ofstream(path()) << R"({"seed": "one"})";
    EXPECT_EQ(readMessage(path()), path() + ": seed: expected a whole number of at most 32 bits, found \"one\"");
}

TEST_F(SceneFile, UnwritablePathIsNamed) {
    const std::string nowhere = path() + ".folder/scene.json";
    try {
        writeScene(nowhere, Scene());
        FAIL() << "a file in a missing folder was written";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), nowhere + ": cannot be written; check that the folder exists and may be written to");
    }
}

TEST_F(SceneFile, BadSceneLeavesNoFile) {
    Scene scene;
    scene.camera.fx = -1.0;
    EXPECT_THROW(writeScene(path(), scene), std::invalid_argument);
    EXPECT_FALSE(std::ifstream(path()).is_open());
}

TEST(SceneExample, InTheSimulatorsPageCanBeRendered) {
    std::ifstream file(SIM_README_PATH);
    const std::string page{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const std::string opening = "```json\n";
    const std::size_t begin = page.find(opening);
    ASSERT_NE(begin, std::string::npos) << "no JSON example in " << SIM_README_PATH;
    const std::size_t end = page.find("```", begin + opening.size());
    ASSERT_NE(end, std::string::npos);
    const Scene scene = sceneFromJson(page.substr(begin + opening.size(), end - begin - opening.size()));
    EXPECT_EQ(scene.boxes.size(), 1U);
    EXPECT_EQ(scene.cylinders.size(), 1U);
    EXPECT_GT(cv::countNonZero(render(scene).depth), 300000);
}

}  // namespace
}  // namespace quorvel::sim
