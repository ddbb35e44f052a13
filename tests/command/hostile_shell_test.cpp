// SPDX-License-Identifier: Apache-2.0
// Conditions that only a Unix system has: pipes without a program at the other end, devices, full disks, closed
// outputs, kills.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "shell_run.h"
#include "simulated_folder.h"
#include "support/ordinary_user.h"
#include "support/random.h"

namespace quorvel::command {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class HostileShell : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(folder_.calibrate("--mode kiosk").exitCode, 0);
        ASSERT_EQ(folder_
                      .run("param set line.yml --size 640x480 --calibration-area 0.5 --detect-area 0.5 "
                           "--ground-weight 0")
                      .exitCode,
                  0);
    }

    CommandRun shell(const std::string& line) const { return runShell(folder_, line); }

    /// \return names of unfinished files anywhere in the folder
    std::vector<std::string> leftovers() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::recursive_directory_iterator(folder_.path())) {
            if (entry.path().extension() == ".new") {
                names.push_back(entry.path().string());
            }
        }
        return names;
    }

    static void expectOneLine(const std::string& errors, const std::string& word) {
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << errors;
        EXPECT_THAT(errors, StartsWith("quorvel: "));
        EXPECT_THAT(errors, HasSubstr(word));
    }

    /// Runs the command where no file can grow.
    void expectFailureOnAFullDisk(const std::string& line, const std::string& named) const {
        const CommandRun run =
            shell("{ trap '' XFSZ; ulimit -f 0; $Q " + line + "; } 2>&1 | cat\nexit ${PIPESTATUS[0]}");
        EXPECT_EQ(run.exitCode, 2) << run.text();
        expectOneLine(run.output, named);
        EXPECT_THAT(leftovers(), ::testing::IsEmpty()) << line;
    }

    SimulatedFolder folder_{"parcel"};
    const std::string measure_ = "$Q measure --camera camera.json --depth depth.png --mode kiosk ";
};

TEST_F(HostileShell, PipesWithoutAWriterAreGivenUp) {
    // Side by side, since each is waited for a while.
    const CommandRun run = shell(
        "mkfifo pipe.yml\n"
        "run() { timeout 60 $Q \"$@\" > out.$n 2> err.$n; echo $? > code.$n; }\n"
        "n=1; run measure --camera camera.json --mode kiosk --depth pipe.yml &\n"
        "n=2; run measure --camera camera.json --mode kiosk --depth depth.png --color pipe.yml &\n"
        "n=3; run measure --camera pipe.yml --mode kiosk --depth depth.png &\n"
        "n=4; run measure --camera camera.json --mode kiosk --depth depth.png --params pipe.yml &\n"
        "n=5; run simulate --scene pipe.yml --out new &\n"
        "n=6; run param set pipe.yml --size 640x480 --ground-weight 0 &\n"
        "n=7; run calibrate --camera camera.json --mode kiosk --depth pipe.yml &\n"
        "wait\n"
        "rm param/cal.txt; mkfifo param/cal.txt\n"
        "n=8; run measure --camera camera.json --mode kiosk --depth depth.png\n"
        "n=9; run calibrate --camera camera.json --mode kiosk --depth empty_depth.png\n");
    for (const char* n : {"1", "2", "3", "4", "5", "6", "7", "8", "9"}) {
        EXPECT_EQ(folder_.read(std::string("code.") + n), "2\n") << n << run.text();
        EXPECT_EQ(folder_.read(std::string("out.") + n), "") << n;
        expectOneLine(folder_.read(std::string("err.") + n), n < std::string("8") ? "pipe.yml" : "cal.txt");
    }
}

TEST_F(HostileShell, PipesWithAWriterAreRead) {
    const std::string usual = shell(measure_ + "--json | jq .corners").output;
    const CommandRun run = shell(
        "mkfifo pipe\n"
        "(sleep 0.3; cat depth.png > pipe) &\n"
        "$Q measure --camera <(cat camera.json) --color <(cat color.png) --depth pipe --mode kiosk --json | jq "
        ".corners");
    EXPECT_EQ(run.output, usual) << run.text();
    EXPECT_EQ(run.errors, "");
    EXPECT_EQ(shell("cat depth.png | $Q measure --camera camera.json --depth /dev/stdin --mode kiosk --json | jq "
                    ".corners")
                  .output,
              usual);
}

TEST_F(HostileShell, EndlessDevicesAndHugeFilesAreRefused) {
    const CommandRun run = shell(
        "truncate -s 1T huge.yml || exit 99\n"
        "for file in /dev/null /dev/zero huge.yml; do\n"
        "  $Q measure --camera $file --depth depth.png --mode kiosk; echo $?\n"
        "  $Q param show $file; echo $?\n"
        "  $Q simulate --scene $file --out new; echo $?\n"
        "  $Q param show line.yml --camera $file; echo $?\n"
        "done\n"
        "for file in /dev/null huge.yml; do\n"
        "  $Q measure --camera camera.json --depth $file --mode kiosk; echo $?\n"
        "  $Q measure --camera camera.json --depth depth.png --color $file --mode kiosk; echo $?\n"
        "done\n"
        "rm param/cal.txt; ln -s /dev/zero param/cal.txt\n" +
        measure_ + "; echo $?\n");
    if (run.exitCode == 99) {
        GTEST_SKIP() << "this file system makes no sparse file of 1 TB";
    }
    EXPECT_EQ(run.output, std::string("2\n2\n2\n2\n2\n2\n2\n2\n2\n2\n2\n2\n2\n2\n2\n2\n2\n")) << run.text();
    EXPECT_EQ(run.errorLines(), 17) << run.text();
}

TEST_F(HostileShell, UnreadableFilesAreRefused) {
    test::asOrdinaryUser([&] {
        if (::access(QUORVEL_BINARY, X_OK) != 0) {
            GTEST_SKIP() << "an ordinary user may not run the program that root has built here";
        }
        const CommandRun run = shell("chmod 0 depth.png; " + measure_);
        EXPECT_EQ(run.exitCode, 2) << run.text();
        expectOneLine(run.errors, "depth.png");
    });
}

TEST_F(HostileShell, FullOrClosedStandardOutputIsAFailure) {
    const char* const capture = "capture --camera camera.json --depth depth.png --mode kiosk";
    ASSERT_EQ(folder_.run(capture).exitCode, 0);
    for (const char* arguments :
         {"--help", "--version", "measure --help", "measure --camera camera.json --depth depth.png --mode kiosk",
          "measure --camera camera.json --depth depth.png --mode kiosk --json",
          "measure --camera camera.json --depth depth.png depth.png --mode kiosk --tolerance 1,1,1",
          "calibrate --camera camera.json --depth empty_depth.png --mode kiosk", capture, "simulate --list",
          "simulate --preset parcel --out new", "replay log", "replay log --csv", "replay log --jsonl",
          "param show line.yml", "param set line.yml --ground-weight 0 --size 640x480",
          "bench --size 320x240 --seconds 0.01"}) {
        for (const char* output : {"> /dev/full", ">&-"}) {
            const CommandRun run = shell(std::string("$Q ") + arguments + " " + output);
            EXPECT_EQ(run.exitCode, 2) << run.text();
            EXPECT_EQ(run.errorLines(), 1) << run.text();
            EXPECT_THAT(run.errors, HasSubstr("standard output: cannot be written")) << run.text();
        }
    }
}

TEST_F(HostileShell, NoFileTakesThePlaceOfAClosedStream) {
    const std::string whole = shell(measure_ + "--overlay whole.png > report; cat whole.png").output;
    const CommandRun run = shell(measure_ + "--debug --overlay other.png <&- >&- 2>&-; echo $?; cat other.png");
    EXPECT_EQ(run.output, "2\n" + whole);
}

TEST_F(HostileShell, PicturesGoIntoPipesAndDevices) {
    const std::string whole = shell(measure_ + "--overlay whole.png > report; cat whole.png").output;
    ASSERT_THAT(whole, HasSubstr("PNG"));
    EXPECT_EQ(shell(measure_ + "--overlay >(cat > piped.png) > report\n" +  // the reader may end after the command
                    "for i in {1..100}; do cmp -s piped.png whole.png && break; sleep 0.1; done; cat piped.png")
                  .output,
              whole);
    EXPECT_EQ(shell(measure_ + "--overlay /dev/null > report; echo $?; test -c /dev/null; echo $?").output, "0\n0\n");
    EXPECT_EQ(shell("ln -s /dev/null null.png; " + measure_ + "--overlay null.png > report; test -c null.png; echo $?")
                  .output,
              "0\n");
    EXPECT_THAT(shell(measure_ + "--overlay /dev/stdout | cat").output, StartsWith(whole));
    EXPECT_THAT(shell(measure_ + "--overlay /dev/stdout > both.png; cat both.png").output, HasSubstr("PNG"));
    EXPECT_THAT(shell(measure_ + "--overlay here.png > here.png; cat here.png").output,
                ::testing::AllOf(StartsWith(whole), HasSubstr("Measured (kiosk)")));
    const CommandRun full = shell(measure_ + "--overlay /dev/full");
    EXPECT_EQ(full.exitCode, 2) << full.text();
    expectOneLine(full.errors, "/dev/full");
    const CommandRun unread = shell("mkfifo unread.png; timeout 60 " + measure_ + "--overlay unread.png");
    EXPECT_EQ(unread.exitCode, 2) << unread.text();
    expectOneLine(unread.errors, "unread.png");
}

TEST_F(HostileShell, AFullDiskLeavesTheOldFiles) {
    const std::string frame = "--camera camera.json --depth depth.png --mode kiosk ";
    folder_.write("overlay.png", "old");
    fs::create_directory(folder_.path() / "stages");
    folder_.write("stages/01_color.png", "old");
    folder_.write("stages/05_surface_points.png", "old");
    expectFailureOnAFullDisk("measure " + frame + "--overlay overlay.png", "overlay.png");
    expectFailureOnAFullDisk("measure " + frame + "--overlay new.png --stages stages", "png");
    expectFailureOnAFullDisk("measure " + frame + "--stages stages", "01_color.png");
    EXPECT_EQ(folder_.read("overlay.png"), "old");
    EXPECT_EQ(folder_.read("stages/01_color.png"), "old");
    EXPECT_EQ(folder_.read("stages/05_surface_points.png"), "old");
    EXPECT_FALSE(fs::exists(folder_.path() / "new.png"));

    const std::string camera = folder_.read("camera.json");
    const std::string depth = folder_.read("depth.png");
    folder_.write("color_07.png", "old");
    expectFailureOnAFullDisk("simulate --preset clutter --frames 2 --out .", "png");
    EXPECT_EQ(folder_.read("camera.json"), camera);
    EXPECT_EQ(folder_.read("depth.png"), depth);
    EXPECT_EQ(folder_.read("color_07.png"), "old");

    const std::string params = folder_.read("line.yml");
    expectFailureOnAFullDisk("param set line.yml --size 640x480 --ground-weight 0.5", "line.yml");
    expectFailureOnAFullDisk(
        "param set new.yml --size 640x480 --calibration-area 0.5 --detect-area 0.5 --ground-weight 0", "new.yml");
    EXPECT_EQ(folder_.read("line.yml"), params);
    EXPECT_FALSE(fs::exists(folder_.path() / "new.yml"));

    expectFailureOnAFullDisk("capture " + frame, "log/");
    std::size_t captured = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder_.path() / "log")) {
        captured += entry.is_directory() ? 0 : 1;
    }
    EXPECT_EQ(captured, 0U) << "no part of a capture is left";
}

TEST_F(HostileShell, AFullDiskLeavesNoHalfCalibration) {
    fs::remove_all(folder_.path() / "param");
    expectFailureOnAFullDisk("calibrate --camera camera.json --depth empty_depth.png --mode kiosk", "param");
    expectFailureOnAFullDisk(
        "measure --camera camera.json --depth depth.png --mode kiosk --empty-depth empty_depth.png", "param");
    EXPECT_FALSE(fs::exists(folder_.path() / "param"));
}

TEST_F(HostileShell, ARealFullDiskDoesTheSame) {
    const CommandRun run = shell(
        "mkdir disk && mount -t tmpfs -o size=128k quorvel-test disk 2> why || { cat why; exit 99; }\n"
        "trap 'umount disk' EXIT\n"
        "echo old > disk/overlay.png\n"
        "cat /dev/zero > disk/filler 2> /dev/null\n" +
        measure_ +
        "--overlay disk/overlay.png\n"
        "code=$?\n"
        "cat disk/overlay.png; ls -A disk\n"
        "exit $code");
    if (run.exitCode == 99) {
        GTEST_SKIP() << "no file system can be mounted here: " << run.output;
    }
    EXPECT_EQ(run.exitCode, 2) << run.text();
    EXPECT_EQ(run.output, "old\nfiller\noverlay.png\n");
    expectOneLine(run.errors, "disk/overlay.png: cannot be written whole");
}

/// Runs the program in the folder until it ends or is killed.
class Victim {
public:
    Victim(const fs::path& folder, std::vector<std::string> arguments) : pid_(::fork()) {
        if (pid_ == 0) {
            arguments.insert(arguments.begin(), QUORVEL_BINARY);
            std::vector<char*> argv;
            for (std::string& argument : arguments) {
                argv.push_back(argument.data());
            }
            argv.push_back(nullptr);
            if (::chdir(folder.c_str()) == 0 && std::freopen("/dev/null", "w", stdout) != nullptr) {
                ::execv(QUORVEL_BINARY, argv.data());
            }
            ::_exit(127);
        }
    }

    /// \return whether the program was still running when it was killed
    bool killAfter(std::chrono::microseconds delay) const {
        std::this_thread::sleep_for(delay);
        ::kill(pid_, SIGKILL);
        return WIFSIGNALED(ending());
    }

    bool endsWell() const {
        const int status = ending();
        return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }

private:
    int ending() const {
        int status = 0;
        ::waitpid(pid_, &status, 0);
        return status;
    }

    pid_t pid_;
};

TEST_F(HostileShell, AKillLeavesTheOldFileOrTheNewOne) {
#ifdef __SANITIZE_ADDRESS__
    constexpr int kRuns = 30;  // of 0.7 seconds each there
#else
    constexpr int kRuns = 120;
#endif
    constexpr int kMostRuns = 8 * kRuns;
    const auto arguments = [](const std::string& area) {
        return std::vector<std::string>{"measure", "--camera", "camera.json", "--depth", "depth.png", "--mode",
                                        "kiosk",   "--json",   "--area",      area,      "--overlay", "overlay.png"};
    };
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(Victim(folder_.path(), arguments("0.5")).endsWell());
    const std::string one = folder_.read("overlay.png");
    ASSERT_TRUE(Victim(folder_.path(), arguments("0.6")).endsWell());
    const std::string other = folder_.read("overlay.png");
    const auto duration =
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - start) / 2;
    ASSERT_NE(one, other);

    std::atomic<bool> ended{false};
    std::atomic<int> torn{0};
    std::atomic<int> reads{0};
    std::thread reader([&] {
        while (!ended) {
            const std::string seen = folder_.read("overlay.png");
            ++reads;
            torn += seen == one || seen == other ? 0 : 1;
        }
    });
    test::Draws draws(7);
    // The picture is written late in a run; a few runs may end before their kill. A machine that others use as well may
    // become faster or slower than it was: then the kills come earlier or later, and go on.
    double pace = 1.0;
    int runs = 0;
    int killed = 0;
    while (runs < kRuns || (runs < kMostRuns && (killed < kRuns / 4 || killed == runs))) {
        if (runs > 0 && runs % kRuns == 0) {
            pace *= killed == runs ? 2.0 : 0.5;
        }
        const Victim victim(folder_.path(), arguments(runs % 2 == 0 ? "0.5" : "0.6"));
        const auto after =
            static_cast<std::int64_t>(pace * draws.uniform(0.25, 1.25) * static_cast<double>(duration.count()));
        killed += victim.killAfter(std::chrono::microseconds(after)) ? 1 : 0;
        ++runs;
    }
    ended = true;
    reader.join();
    EXPECT_EQ(torn, 0) << "of " << reads << " reads";
    EXPECT_GT(reads, runs);
    EXPECT_GE(killed, kRuns / 4);
    EXPECT_LT(killed, runs) << "the kills came before the picture was written";
}

}  // namespace
}  // namespace quorvel::command
