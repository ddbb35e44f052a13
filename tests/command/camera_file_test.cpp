// SPDX-License-Identifier: Apache-2.0
#include "kit/input/camera_file.h"

#include <gtest/gtest.h>

#include "command_run.h"
#include "kit/input/input_error.h"

namespace quorvel::command {

using namespace kit;
namespace {

class CameraFile : public ::testing::Test {
protected:
    Camera readAs(const std::string& name, const std::string& text) const {
        folder_.write(name, text);
        return readCameraFile(folder_.file(name));
    }

    /// Message of the refusal, without the folder; "accepted" when there is none.
    std::string complaint(const std::string& text) const {
        try {
            readAs("camera", text);
        } catch (const InputError& error) {
            const std::string message = error.what();
            const std::string path = folder_.file("camera");
            EXPECT_EQ(message.rfind(path + ": ", 0), 0U) << "the message does not begin with the path: " << message;
            EXPECT_EQ(message.find('\n'), std::string::npos) << message;
            return message;
        }
        return "accepted";
    }

    static void expectCamera(const Camera& camera) {
        EXPECT_DOUBLE_EQ(camera.fx, 525.5);
        EXPECT_DOUBLE_EQ(camera.fy, 526.25);
        EXPECT_DOUBLE_EQ(camera.cx, 319.5);
        EXPECT_DOUBLE_EQ(camera.cy, 239.75);
        EXPECT_EQ(camera.width, 640);
        EXPECT_EQ(camera.height, 480);
    }

    TemporaryFolder folder_;
};

constexpr const char* kOwnJson =
    R"({"fx": 525.5, "fy": 526.25, "cx": 319.5, "cy": 239.75, "width": 640, "height": 480})";

TEST_F(CameraFile, OwnJson) {
    const Camera camera = readAs("camera.json", kOwnJson);
    expectCamera(camera);
    EXPECT_FALSE(camera.distorted);
}

TEST_F(CameraFile, WrittenFileReadsBack) {
    const Camera camera = readAs("camera.json", kOwnJson);
    folder_.write("again.json", cameraFileText(camera));
    expectCamera(readCameraFile(folder_.file("again.json")));
}

class FileStorageFormat : public CameraFile, public ::testing::WithParamInterface<const char*> {};

TEST_P(FileStorageFormat, CalibrationFileReads) {
    const std::string path = folder_.file(std::string("calibration.") + GetParam());
    {
        cv::FileStorage storage(path, cv::FileStorage::WRITE);
        storage << "image_width" << 640 << "image_height" << 480;
        storage << "camera_matrix" << cv::Mat(cv::Matx33d(525.5, 0, 319.5, 0, 526.25, 239.75, 0, 0, 1));
        storage << "distortion_coefficients" << cv::Mat(cv::Matx<double, 5, 1>(0.1, 0, 0, 0, 0));
    }
    const Camera camera = readCameraFile(path);
    expectCamera(camera);
    EXPECT_TRUE(camera.distorted);
}

INSTANTIATE_TEST_SUITE_P(All, FileStorageFormat, ::testing::Values("yml", "yaml", "xml", "json"));

TEST_F(CameraFile, CalibrationFileWithoutDistortion) {
    EXPECT_FALSE(readAs("c.yml",
                        "%YAML:1.0\n---\nimage_width: 640\nimage_height: 480\ncamera_matrix: "
                        "!!opencv-matrix\n   rows: 3\n   cols: 3\n   dt: f\n   data: [ 500., 0., 320., 0., "
                        "500., 240., 0., 0., 1. ]\n")
                     .distorted);
}

TEST_F(CameraFile, CameraInfoWithMatrix) {
    const Camera camera = readAs("info.yaml",
                                 "image_width: 640\nimage_height: 480\ncamera_name: depth\n"
                                 "camera_matrix:\n  rows: 3\n  cols: 3\n"
                                 "  data: [525.5, 0.0, 319.5, 0.0, 526.25, 239.75, 0.0, 0.0, 1.0]\n"
                                 "distortion_model: plumb_bob\n"
                                 "distortion_coefficients:\n  rows: 1\n  cols: 5\n  data: [0.0, 0.0, 0.0, 0.0, 0.0]\n");
    expectCamera(camera);
    EXPECT_FALSE(camera.distorted);
}

TEST_F(CameraFile, CameraInfoWithFlatListAndDistortion) {
    const Camera camera = readAs("info.yaml",
                                 "height: 480\nwidth: 640\nD: [0.1, -0.2, 0.0, 0.0, 0.0]\n"
                                 "K: [525.5, 0.0, 319.5, 0.0, 526.25, 239.75, 0.0, 0.0, 1.0]\n");
    expectCamera(camera);
    EXPECT_TRUE(camera.distorted);
}

TEST_F(CameraFile, CameraInfoAsJson) {
    expectCamera(readAs("info.json", R"({"height": 480, "width": 640, "k": [525.5,0,319.5,0,526.25,239.75,0,0,1]})"));
}

TEST_F(CameraFile, WrongFilesAreRefusedWithTheReason) {
    const struct {
        const char* text;
        const char* reason;
    } cases[] = {
        {"", "is empty"},
        {"{\"fx\": 1,", "not valid JSON at byte"},
        {R"({"fx":1e999,"fy":1,"cx":1,"cy":1,"width":640,"height":480})", "holds a number that is too large"},
        {R"({"fy":1,"cx":1,"cy":1,"width":640,"height":480})", "has no \"fx\""},
        {R"({"fx":"1","fy":1,"cx":1,"cy":1,"width":640,"height":480})", "\"fx\" is not a number"},
        {R"({"fx":1,"fy":1,"cx":1,"cy":1,"width":640.5,"height":480})", "\"width\" is not a whole number"},
        {R"({"fx":1,"fy":1,"cx":1,"cy":1,"width":640,"height":480,"focal":3})", "unknown key \"focal\""},
        {R"({"fx":0,"fy":1,"cx":1,"cy":1,"width":640,"height":480})", "the focal lengths are 0.000"},
        {R"({"fx":1,"fy":-1,"cx":1,"cy":1,"width":640,"height":480})", "the focal lengths are"},
        {R"({"fx":1,"fy":1,"cx":1,"cy":1,"width":8,"height":480})", "the picture size is 8 x 480"},
        {"%YAML:1.0\n---\nimage_width: 640\n", "has no 3 x 3 \"camera_matrix\""},
        {"%YAML:1.0\n---\ncamera_matrix: !!opencv-matrix\n   rows: 30000\n   cols: 30000\n   dt: d\n   data: [ 1. ]\n",
         "has no 3 x 3 \"camera_matrix\""},
        {"%YAML:1.0\n---\n  : [ {\n", "is not a valid calibration file"},
        {"<?xml version=\"1.0\"?>\n<opencv_storage><image_width>", "is not a valid calibration file"},
        {"<?xml version=", "is not a valid calibration file (it ends too early)"},
        {"<", "is not a valid calibration file (it ends too early)"},
        {"%YAML:1.0\n---\nimage_width: 640\n ...\n--\n",
         "is not a valid calibration file (it continues after its end)"},
        {"image_width: 640\nimage_height: 480\n", "has no camera matrix"},
        {"image_width: 640\nimage_height: 480\nK: [1, 2, 3]\n", "has 3 numbers instead of 9"},
        {"image_height: 480\nK: [1,0,1,0,1,1,0,0,1]\n", "has no \"image_width\""},
        {"image_width: wide\nimage_height: 480\nK: [1,0,1,0,1,1,0,0,1]\n", "line 1 cannot be understood"},
        {"a: [1, 2\nb: }", "cannot be understood"},
        {"just some words\n", "is not a camera file"},
        {"image_width: 640\nimage_height: 480\nK: [.nan,0,1,0,1,1,0,0,1]\n", "the focal lengths are nan"},
    };
    for (const auto& [text, reason] : cases) {
        const std::string message = complaint(text);
        EXPECT_NE(message.find(reason), std::string::npos) << "for\n"
                                                           << text << "\nexpected " << reason << " in\n"
                                                           << message;
    }
}

TEST_F(CameraFile, ZeroByteInATagIsRefused) {
    const std::string text("<?xml version=\0\n<opencv_storage>\n</opencv_storage>\n", 51);
    EXPECT_NE(complaint(text).find("is not a valid calibration file (it ends too early)"), std::string::npos);
}

TEST_F(CameraFile, ValueWithoutANameIsRefused) {
    const std::string text = "%YAML:1.0\n---\nimage_width: 640\ncamera_matrix:\n   rows: 3\n   ://s: 3\n";
    EXPECT_NE(complaint(text).find("is not a valid calibration file (it has a value without a name)"),
              std::string::npos);
}

TEST_F(CameraFile, MissingFileIsRefused) {
    EXPECT_THROW(readCameraFile(folder_.file("nothing.json")), InputError);
    EXPECT_THROW(readCameraFile(folder_.path().string()), InputError);
}

}  // namespace
}  // namespace quorvel::command
