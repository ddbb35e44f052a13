// SPDX-License-Identifier: Apache-2.0
// Damaged files as they occur in the field: cut off, edited, overwritten, too long, replaced by a folder or a device.

#ifndef _WIN32
#include <sys/stat.h>
#endif

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include <quorvel/quorvel.h>

#include "files/text_file.h"
#include "library/depth_scene.h"
#include "library/same_ruler.h"
#include "support/captured_output.h"
#include "support/file_bytes.h"
#include "support/same_bits.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

namespace fs = std::filesystem;

const std::string kLine = "0.010000 -0.020000 0.999750 1234.567017\n";

void putCalibration(const std::string& bytes) {
    fs::create_directory("param");
    put("param/cal.txt", bytes);
}

Quorvel kioskRuler() {
    Quorvel ruler = blockScene(100.0F).ruler();
    ruler.setProductType(KIOSK);
    return ruler;
}

/// \return the plane that a fresh kiosk ruler has after this calibration file: three components and the offset
cv::Vec4f loadedFrom(const std::string& bytes) {
    const WorkingDirectory here;
    putCalibration(bytes);
    const Quorvel ruler = kioskRuler();
    EXPECT_TRUE(ruler.calibStatus) << "the file opened: " << bytes.substr(0, 60);
    EXPECT_EQ(ruler.cameraHeight, ruler.refPlaneOffset);
    const cv::Vec3f& normal = ruler.refPlaneNormal;
    return {normal[0], normal[1], normal[2], ruler.refPlaneOffset};
}

/// \return random bytes, now and then only those that numbers are made of
std::string garbage(Draws& draws, int size) {
    const std::string digits = "0123456789+-.eE \n\tnaif,x";
    const bool numeric = draws.chance(50);
    std::string bytes;
    for (int i = 0; i < size; ++i) {
        bytes += numeric ? draws.oneOf(digits) : static_cast<char>(draws.below(256));
    }
    return bytes;
}

TEST(HostileCalibrationFile, CutOffAtEveryByteKeepsTheFieldsThatAreMissing) {
    const cv::Vec4f whole(0.01F, -0.02F, 0.99975F, 1234.567F);
    ASSERT_EQ(loadedFrom(kLine), whole);
    for (std::size_t size = 0; size < kLine.size(); ++size) {
        const cv::Vec4f plane = loadedFrom(kLine.substr(0, size));
        for (int field = 0; field < 4; ++field) {
            // A number that is cut off is read as the shorter number.
            const std::size_t starts[] = {0, 9, 19, 28};
            if (size <= starts[field]) {
                EXPECT_EQ(plane[field], 0.0F) << size << " bytes, field " << field;
            }
            EXPECT_LE(std::fabs(plane[field]), std::fabs(whole[field])) << size << " bytes, field " << field;
        }
        EXPECT_EQ(plane == whole, size >= kLine.size() - 4) << size << " bytes: floats have seven digits";
    }
}

TEST(HostileCalibrationFile, GarbageIsReadWithoutHarm) {
    Draws draws(41);
    const WorkingDirectory here;
    DepthScene scene = blockScene(100.0F);
    const cv::Mat depth = scene.depth(draws);
    for (int run = 0; run < 300; ++run) {
        putCalibration(garbage(draws, draws.below(200)));
        const CapturedOutput silence;
        Quorvel ruler = kioskRuler();
        ASSERT_TRUE(ruler.getCameraFrame(scene.color(), depth));
        const int status = ruler.measureOnce();
        ASSERT_TRUE(status == 0 || status == 1);
        if (status == 1) {
            ASSERT_TRUE(ruler.result.corners.empty());
        }
    }
}

TEST(HostileCalibrationFile, AGigabyteBehindTheLineIsNotRead) {
    const WorkingDirectory here;
    putCalibration(kLine);
    constexpr std::uintmax_t kGigabyte = 1U << 30U;
    fs::resize_file("param/cal.txt", kGigabyte);  // zeros, which take no room on most disks
    EXPECT_EQ(kioskRuler().refPlaneOffset, 1234.567F);
    put("param/cal.txt", "");
    fs::resize_file("param/cal.txt", kGigabyte);
    EXPECT_EQ(kioskRuler().refPlaneOffset, 0.0F);
}

TEST(HostileCalibrationFile, TakesEitherLineEndAndNone) {
    for (const std::string end : {"", "\n", "\r\n", "\r", "\n\n\n", " \t \n", "\nmore 5 6 7\n"}) {
        EXPECT_EQ(loadedFrom("0.01 -0.02 0.99975 1234.567" + end), cv::Vec4f(0.01F, -0.02F, 0.99975F, 1234.567F))
            << '"' << end << '"';
    }
    EXPECT_EQ(loadedFrom("0.01\r\n-0.02\r\n0.99975\r\n1234.567\r\n"), cv::Vec4f(0.01F, -0.02F, 0.99975F, 1234.567F));
}

TEST(HostileCalibrationFile, ADecimalCommaEndsTheReading) {
    EXPECT_EQ(loadedFrom("0,01 -0,02 0,99975 1234,567\n"), cv::Vec4f(0.0F, 0.0F, 0.0F, 0.0F));
}

TEST(HostileCalibrationFile, AFolderOrNothingInItsPlaceIsNoCalibration) {
    const WorkingDirectory here;
    fs::create_directories("param/cal.txt");
    EXPECT_FALSE(kioskRuler().calibStatus);
#ifndef _WIN32
    fs::remove("param/cal.txt");
    fs::create_symlink("nowhere", "param/cal.txt");
    EXPECT_FALSE(kioskRuler().calibStatus) << "a link to nothing";
    fs::remove("param/cal.txt");
    fs::create_symlink("/dev/zero", "param/cal.txt");
    EXPECT_FALSE(kioskRuler().calibStatus) << "a device without end";
#endif
}

#ifndef _WIN32

TEST(HostileCalibrationFile, PipesWithoutAWriterAreNotWaitedFor) {
    const WorkingDirectory here;
    fs::create_directory("param");
    ASSERT_EQ(mkfifo("param/cal.txt", 0600), 0);
    ASSERT_EQ(mkfifo("param/bg.bmp", 0600), 0);
    EXPECT_FALSE(kioskRuler().calibStatus);
    EXPECT_EQ(kioskRuler().productType, KIOSK);
}

#endif

/// A stored plane that is not usable, and the reason that a measurement prints.
struct BadPlane {
    std::string line;
    std::string reason;
};

const std::vector<BadPlane> kBadPlanes{
    {"nan 0 1 1000", "it is not four finite numbers"},
    {"0 0 1 nan", "it is not four finite numbers"},
    {"0 0 inf 1000", "it is not four finite numbers"},
    {"0 0 1 inf", "it is not four finite numbers"},
    {"0 0 2 1000", "the length of its normal is not 1"},
    {"0 0 0.98 1000", "the length of its normal is not 1"},
    {"1 1 1 1000", "the length of its normal is not 1"},
    {"0 0 1", "its distance from the camera is not positive"},
    {"0 0 1 0", "its distance from the camera is not positive"},
    {"0 0 1 -1000", "its distance from the camera is not positive"},
    {"0 0 -1 1000", "a normal along the optical axis has to be exactly 0 0 1"},
    {"0 0 0.999 1000", "a normal along the optical axis has to be exactly 0 0 1"},
};

TEST(HostileCalibrationFile, AnUnusablePlaneIsLoadedAndRefusedByEveryMeasurement) {
    const WorkingDirectory here;
    Draws draws(42);
    DepthScene scene = blockScene(100.0F);
    const cv::Mat depth = scene.depth(draws);
    for (const BadPlane& bad : kBadPlanes) {
        putCalibration(bad.line);
        for (const ProductType mode : {KIOSK, GROUND_GROWING, GROUND_TRACKING}) {
            Quorvel ruler = kioskRuler();
            EXPECT_TRUE(ruler.calibStatus) << bad.line;
            ASSERT_TRUE(ruler.getCameraFrame(scene.color(), depth));
            ruler.productType = mode;  // not by the setter, so that GROUND_TRACKING fits no plane
            ruler.debugMode = true;
            ruler.filterWeight = -1.0F;
            const CapturedOutput output;
            EXPECT_EQ(ruler.measureOnce(), 1) << bad.line << " in mode " << mode;
            EXPECT_TRUE(ruler.result.corners.empty());
            EXPECT_EQ(ruler.result.height, 0.0F);
            EXPECT_NE(output.text().find("The reference plane cannot be measured from: " + bad.reason),
                      std::string::npos)
                << bad.line << ": " << output.text();
        }
    }
}

TEST(HostileCalibrationFile, ABatchIsRefusedOnAnUnusablePlane) {
    const WorkingDirectory here;
    Draws draws(43);
    DepthScene scene = blockScene(100.0F);
    const cv::Mat depth = scene.depth(draws);
    for (const BadPlane& bad : kBadPlanes) {
        putCalibration(bad.line);
        const CapturedOutput silence;
        Quorvel ruler = kioskRuler();
        ASSERT_TRUE(ruler.getCameraMultipleFrame({scene.color(), scene.color()}, {depth, depth}));
        EXPECT_EQ(ruler.measureMultiple(1000.0F, 1000.0F, 1000.0F), 1) << bad.line;
        EXPECT_TRUE(ruler.result.corners.empty()) << bad.line;
        EXPECT_TRUE(ruler.depthFrameBuffer.empty()) << bad.line;
    }
}

TEST(HostileCalibrationFile, LoadingAnUnusablePlaneSaysSoInDebugMode) {
    const WorkingDirectory here;
    for (const BadPlane& bad : kBadPlanes) {
        putCalibration(bad.line);
        Quorvel ruler = blockScene(100.0F).ruler();
        ruler.debugMode = true;
        const CapturedOutput output;
        ruler.setProductType(KIOSK);
        EXPECT_NE(output.text().find("The plane in ./param/cal.txt cannot be measured from: " + bad.reason),
                  std::string::npos)
            << bad.line << ": " << output.text();
    }
}

TEST(HostileCalibrationFile, AnEditedPlaneOfFewDecimalsIsMeasuredFrom) {
    const WorkingDirectory here;
    Draws draws(44);
    DepthScene scene = blockScene(100.0F);
    const cv::Mat depth = scene.depth(draws);
    for (const std::string line : {"0 0 1 1000", "0.01 0 1 1000", "0.001 0.001 0.995 1000"}) {
        putCalibration(line);
        const CapturedOutput silence;
        Quorvel ruler = kioskRuler();
        ASSERT_TRUE(ruler.getCameraFrame(scene.color(), depth));
        ruler.setEffectiveRegionInArea(cv::Rect(0, 0, 64, 48));
        ruler.filterWeight = -1.0F;
        EXPECT_EQ(ruler.measureOnce(), 0) << line;
        EXPECT_EQ(ruler.result.corners.size(), 8U) << line;
    }
}

/// A capture of the block scene in "./capture", as an offline start reads it.
void putCapture(const std::string& parameters) {
    fs::create_directory("capture");
    put("capture/para.txt", parameters);
    Draws draws(45);
    DepthScene scene = blockScene(100.0F);
    cv::imwrite("capture/color.png", scene.color());
    cv::imwrite("capture/depth.tif", scene.depth(draws));
}

const std::string kParameters =
    "4\n10.000000\n32.000000\n24.000000\n60.000000\n60.000000\n0.016667\n0.016667\n0.000000\n0.000000\n1.000000\n"
    "1000.000000\n64\n48\n";

Quorvel offlineRuler() {
    const CapturedOutput silence;
    return {60.0F, 60.0F, 32.0F, 24.0F, 64, 48, true, "capture"};
}

TEST(HostileCapture, ParametersCutOffAtEveryByteLeadToTheNormalStartOrToAReplay) {
    const WorkingDirectory here;
    putCapture(kParameters);
    ASSERT_TRUE(offlineRuler().calibStatus);
    const std::size_t lastNumber = kParameters.size() - 3;
    for (std::size_t size = 0; size < kParameters.size(); ++size) {
        put("capture/para.txt", kParameters.substr(0, size));
        const Quorvel ruler = offlineRuler();
        EXPECT_TRUE(ruler.offlineMode);
        EXPECT_EQ(ruler.calibStatus, size > lastNumber) << size << " bytes";
        EXPECT_EQ(ruler.reservedValue, size > lastNumber ? 0 : 50) << size << " bytes";
        if (size == lastNumber + 1) {
            EXPECT_EQ(ruler.imageHeight, 4) << "what is left of 48";
            EXPECT_TRUE(ruler.pointCloud.empty()) << "its images do not have that size";
        }
    }
}

TEST(HostileCapture, GarbageForParametersDoesNoHarm) {
    Draws draws(46);
    const WorkingDirectory here;
    putCapture(kParameters);
    for (int run = 0; run < 300; ++run) {
        std::string text = kParameters;
        for (int edits = draws.between(1, 6); edits > 0; --edits) {
            const auto where = static_cast<std::size_t>(draws.below(static_cast<int>(text.size())));
            const auto count = static_cast<std::size_t>(draws.below(4));
            text.replace(where, count, garbage(draws, draws.below(6)));
        }
        put("capture/para.txt", text);
        const CapturedOutput silence;
        Quorvel ruler = offlineRuler();
        const bool taken = ruler.getCameraFrame(cv::Mat(), cv::Mat());
        EXPECT_EQ(taken, ruler.calibStatus && ruler.imageWidth == 64 && ruler.imageHeight == 48 &&
                             ruler.downScale > 0 && ruler.downScale <= 48)
            << text;
        ruler.measureOnce();
    }
}

TEST(HostileCapture, HugeAndNegativeSizesAreRefusedWithTheFrame) {
    const WorkingDirectory here;
    putCapture(kParameters);
    const std::string camera = "10\n32\n24\n60\n60\n0.016667\n0.016667\n0\n0\n1\n1000\n";
    for (const std::string size : {"2147483647\n2147483647\n", "-64\n-48\n", "-2147483648\n48\n", "0\n0\n"}) {
        for (const std::string scale : {"4\n", "0\n", "-1\n", "2147483647\n", "-2147483648\n"}) {
            put("capture/para.txt", scale + camera + size);
            Quorvel ruler = offlineRuler();
            EXPECT_TRUE(ruler.calibStatus);
            EXPECT_FALSE(ruler.getCameraFrame(cv::Mat(), cv::Mat())) << scale << size;
            EXPECT_TRUE(ruler.pointCloud.empty());
            EXPECT_EQ(ruler.measureOnce(), 1);
        }
    }
}

TEST(HostileCapture, ImagesCutOffOrOfAnotherKindRefuseTheFrame) {
    const WorkingDirectory here;
    putCapture(kParameters);
    for (const std::string name : {"capture/color.png", "capture/depth.tif"}) {
        const std::string bytes = bytesOf(name);
        for (const std::size_t size : {std::size_t{0}, std::size_t{7}, std::size_t{20}, std::size_t{40}}) {
            put(name, bytes.substr(0, size));
            EXPECT_TRUE(offlineRuler().pointCloud.empty()) << name << " of " << size << " bytes";
        }
        put(name, "no image at all");
        EXPECT_TRUE(offlineRuler().pointCloud.empty()) << name;
        fs::remove(name);
        fs::create_directory(name);
        EXPECT_TRUE(offlineRuler().pointCloud.empty()) << name << " is a folder";
        fs::remove(name);
        EXPECT_TRUE(offlineRuler().pointCloud.empty()) << name << " is missing";
        put(name, bytes);
        EXPECT_FALSE(offlineRuler().pointCloud.empty()) << name << " is there again";
    }
    cv::imwrite("capture/depth.tif", cv::Mat(48, 64, CV_8UC1, cv::Scalar(100)));
    EXPECT_TRUE(offlineRuler().pointCloud.empty()) << "8-bit depth";
}

/// A PNG whose header claims a size.
std::string pngClaiming(std::uint32_t width, std::uint32_t height) {
    std::vector<uchar> small;
    cv::imencode(".png", cv::Mat(4, 4, CV_8UC3, cv::Scalar::all(7)), small);
    std::string bytes(small.begin(), small.end());
    for (int i = 0; i < 4; ++i) {
        bytes[16 + static_cast<std::size_t>(i)] = static_cast<char>(width >> (24 - 8 * i) & 0xFFU);
        bytes[20 + static_cast<std::size_t>(i)] = static_cast<char>(height >> (24 - 8 * i) & 0xFFU);
    }
    // The checksum over type and content of the header, bit by bit.
    std::uint32_t sum = 0xFFFFFFFFU;
    for (std::size_t i = 12; i < 29; ++i) {
        sum ^= static_cast<uchar>(bytes[i]);
        for (int bit = 0; bit < 8; ++bit) {
            sum = sum >> 1U ^ ((sum & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    for (int i = 0; i < 4; ++i) {
        bytes[29 + static_cast<std::size_t>(i)] = static_cast<char>(~sum >> (24 - 8 * i) & 0xFFU);
    }
    return bytes;
}

TEST(HostileCapture, AnImageThatClaimsAHugeSizeIsNoImage) {
    const WorkingDirectory here;
    putCapture(kParameters);
    put("capture/color.png", pngClaiming(4, 4));
    ASSERT_EQ(offlineRuler().colorImage.size(), cv::Size(4, 4)) << "the header is made as it should be";
    put("capture/color.png", pngClaiming(2000000, 2000000));
    EXPECT_NO_THROW({ EXPECT_TRUE(offlineRuler().colorImage.empty()); });
}

/// Loads into a ruler, and checks that nothing of it changes unless the load succeeds.
/// \return "true", "false" or "raised"
std::string outcomeOfLoading(const std::string& path) {
    Quorvel ruler = blockScene(100.0F).ruler();
    const Quorvel before = ruler;
    cv::Rect calibration(1, 2, 3, 4);
    cv::Rect detection(5, 6, 7, 8);
    std::string outcome;
    try {
        outcome = ruler.loadRulerParam(path, calibration, detection) ? "true" : "false";
    } catch (const cv::Exception&) {
        outcome = "raised";
    }
    if (outcome != "true") {
        EXPECT_TRUE(sameRuler(ruler, before)) << path;
        EXPECT_EQ(calibration, cv::Rect(1, 2, 3, 4)) << path;
        EXPECT_EQ(detection, cv::Rect(5, 6, 7, 8)) << path;
    }
    return outcome;
}

TEST(HostileParameterFile, CutOffAtEveryByteIsAnErrorOrLacksItsKeys) {
    const WorkingDirectory here;
    Quorvel ruler = blockScene(100.0F).ruler();
    ruler.filterWeight = 0.25F;
    for (const std::string path : {"ruler.yml", "ruler.xml", "ruler.json"}) {
        ASSERT_TRUE(ruler.saveRulerParam(path));
        const std::string whole = internal::readTextFile(path).value_or("");
        ASSERT_EQ(outcomeOfLoading(path), "true");
        int raised = 0;
        for (std::size_t size = 0; size < whole.size(); ++size) {
            put(path, whole.substr(0, size));
            const std::string outcome = outcomeOfLoading(path);
            EXPECT_NE(outcome, "false") << path << " of " << size << " bytes opens";
            raised += outcome == "raised" ? 1 : 0;
        }
        EXPECT_GT(raised, 0) << path;
    }
}

TEST(HostileParameterFile, GarbageIsAnErrorOrLacksItsKeys) {
    const WorkingDirectory here;
    Draws draws(47);
    for (const std::string start :
         {"", "%YAML:1.0\n---\n", "{ \"Detect_Area\": ", "<?xml version=\"1.0\"?>\n<opencv_storage>\n"}) {
        for (int run = 0; run < 200; ++run) {
            put("ruler.yml", start + garbage(draws, draws.below(100)));
            EXPECT_NE(outcomeOfLoading("ruler.yml"), "false");
        }
    }
}

std::string repeated(const std::string& text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i) {
        result += text;
    }
    return result;
}

TEST(HostileParameterFile, AYamlValueWithoutANameIsAnErrorOfOpenCv) {
    const WorkingDirectory here;
    put("ruler.yml", "%YAML:1.0\n---\nCalibration_Area:\n   rows: 3\n   ://s: 3\n");
    EXPECT_EQ(outcomeOfLoading("ruler.yml"), "raised") << "the parser itself raises std::length_error";
    Quorvel ruler = blockScene(100.0F).ruler();
    cv::Rect area;
    std::string message;
    try {
        ruler.loadRulerParam("ruler.yml", area, area);
    } catch (const cv::Exception& error) {
        message = error.what();
    }
    EXPECT_NE(message.find("ruler.yml has a value without a name"), std::string::npos) << message;
}

TEST(HostileParameterFile, NestingThatWouldUseUpTheStackIsNotGivenToAParser) {
    const WorkingDirectory here;
    const std::string yaml = "%YAML:1.0\n---\n";
    const std::string xml = "<?xml version=\"1.0\"?>\n<opencv_storage>\n";
    for (const std::string& text :
         {"{ \"a\": " + repeated("[", 60000), repeated("{\"a\":", 12000), yaml + "a: " + repeated("[", 60000),
          yaml + "a: " + repeated("{a: ", 15000), yaml + repeated("-", 60000), yaml + repeated("a: ", 20000),
          xml + repeated("<a>", 20000)}) {
        put("ruler.yml", text);
        EXPECT_EQ(outcomeOfLoading("ruler.yml"), "false") << text.substr(0, 60);
    }
}

TEST(HostileParameterFile, ADocumentWithCommentsAndOtherKeysIsRead) {
    const WorkingDirectory here;
    std::string text = "%YAML:1.0\n---\n";
    for (int i = 0; i < 300; ++i) {
        text += "# ---------------------------------------------- [" + std::to_string(i) + "] what? <and> why: {so}\n";
    }
    put("ruler.yml", text + "Other: [ 1, 2, 3 ]\nGround_Weight: 0.5\nDetect_Area: [ 1, 2, 3, 4 ]\n");
    EXPECT_EQ(outcomeOfLoading("ruler.yml"), "true");
}

TEST(HostileParameterFile, GigabytesAreNotRead) {
    const WorkingDirectory here;
    ASSERT_TRUE(blockScene(100.0F).ruler().saveRulerParam("ruler.yml"));
    constexpr std::uintmax_t kGigabyte = 1U << 30U;
    fs::resize_file("ruler.yml", kGigabyte);
    EXPECT_EQ(outcomeOfLoading("ruler.yml"), "false");
}

TEST(HostileParameterFile, NaNAndHugeNumbersDoNoHarm) {
    const WorkingDirectory here;
    for (const std::string number :
         {".nan", ".inf", "-.inf", "1e999", "-1e999", "99999999999999999999", "0,5", "1e-999"}) {
        std::string area = "[ ";
        for (int i = 0; i < 4; ++i) {
            area += number + (i < 3 ? ", " : " ]\n");
        }
        put("ruler.yml",
            "%YAML:1.0\n---\nCalibration_Area: " + area + "Detect_Area: " + area + "Ground_Weight: " + number + "\n");
        EXPECT_NE(outcomeOfLoading("ruler.yml"), "false") << number;
    }
}

#ifndef _WIN32

TEST(HostileParameterFile, LinksDevicesAndPipes) {
    const WorkingDirectory here;
    Quorvel ruler = blockScene(100.0F).ruler();
    fs::create_symlink("nowhere.yml", "link.yml");
    EXPECT_EQ(outcomeOfLoading("link.yml"), "false") << "a link to nothing";
    EXPECT_TRUE(ruler.saveRulerParam("link.yml")) << "what it points to is created";
    EXPECT_TRUE(fs::is_symlink("link.yml"));
    EXPECT_EQ(outcomeOfLoading("nowhere.yml"), "true");
    EXPECT_EQ(outcomeOfLoading("/dev/zero"), "false");
    EXPECT_FALSE(ruler.saveRulerParam("/dev/null"));
    EXPECT_TRUE(fs::is_character_file("/dev/null")) << "a device must never be replaced by a file";
}

#endif

TEST(HostileParameterFile, CompressedNamesAreRefused) {
    const WorkingDirectory here;
    EXPECT_FALSE(blockScene(100.0F).ruler().saveRulerParam("ruler.yml.gz"));
    EXPECT_TRUE(fs::is_empty("."));
}

}  // namespace

}  // namespace quorvel::test
