// SPDX-License-Identifier: Apache-2.0
// Long use of the library in one process: memory and open files must stay where they are, a frame must take as long as
// at the beginning, and the same input must give the same bits at the end.
//   soak FRAMES [LARGEST_SLOWDOWN]
// Returns 1, and says why, when one of them does not hold.
#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <iomanip>
#include <iostream>
#include <optional>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

#include <opencv2/core/utils/logger.hpp>

#include "soak/process_state.h"
#include "soak/workload.h"
#include "support/quarantine.h"
#include "support/working_directory.h"

namespace quorvel::soak {

namespace {

constexpr int kTenths = 10;
constexpr int kLeastFrames = 1000;
/// Frames from one calibration of all stations to the next.
constexpr int kPassFrames = 100;
constexpr double kMebi = 1024.0 * 1024.0;
/// Scratch images keep the size of the last calibration's picture, which is 0.9 MiB between the two cameras. One small
/// point cloud in a thousand frames that is not freed comes to 45 MiB in 200000 frames.
constexpr double kLargestGrowth = 2.0 * kMebi;
/// Other work on the machine slows frames down as well; a list that grows and is searched in every frame does so
/// without end.
constexpr double kDefaultSlowdown = 1.5;

/// Silences std::cout, because the library prints a line for every frame without an object.
class SilencedOutput {
public:
    SilencedOutput() : previous_(std::cout.rdbuf(&nowhere_)) {}
    ~SilencedOutput() { std::cout.rdbuf(previous_); }
    SilencedOutput(const SilencedOutput&) = delete;
    SilencedOutput& operator=(const SilencedOutput&) = delete;

    /// \return what still writes to where the output went
    std::streambuf* previous() const { return previous_; }

private:
    class Nowhere : public std::streambuf {
        int_type overflow(int_type character) override { return traits_type::not_eof(character); }
    };
    Nowhere nowhere_;
    std::streambuf* previous_;
};

/// How the process is at the end of a tenth.
struct Sample {
    std::optional<double> resident;  ///< bytes
    std::optional<int> descriptors;
    double medianSeconds = 0.0;  ///< of the tenth's single shots
};

struct Totals {
    int frames = 0;
    int measured = 0;
    int refused = 0;
    int exceptions = 0;

    void add(const PassOutcome& pass) {
        frames += pass.frames;
        measured += pass.measured;
        refused += pass.refused;
        exceptions += pass.exceptions;
    }
};

double median(std::vector<double>& values) {
    if (values.empty()) {
        throw std::logic_error("a tenth without a single shot");
    }
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void printSample(std::ostream& out, int tenth, const Totals& totals, const Sample& sample) {
    out << "tenth " << std::setw(2) << tenth << ": " << totals.frames << " frames";
    if (sample.resident) {
        out << ", resident " << *sample.resident / kMebi << " MiB";
    }
    if (sample.descriptors) {
        out << ", " << *sample.descriptors << " open files";
    }
    out << ", median frame " << sample.medianSeconds * 1e3 << " ms" << std::endl;
}

/// Prints a check and counts it when it fails.
class Checks {
public:
    explicit Checks(std::ostream& out) : out_(out) {}

    void check(const std::string& what, bool good) {
        out_ << (good ? "good: " : "FAILED: ") << what << std::endl;
        failed_ += good ? 0 : 1;
    }
    int failed() const { return failed_; }

private:
    std::ostream& out_;
    int failed_ = 0;
};

std::string text(double value) {
    std::ostringstream stream;
    stream << std::fixed << std::setprecision(2) << value;
    return stream.str();
}

/// The first tenth still belongs to the warm-up of the C library's and OpenCV's own memory.
void checkSamples(const std::vector<Sample>& samples, double largestSlowdown, Checks& checks) {
    const Sample& warm = samples.front();
    const Sample& last = samples.back();
    if (warm.resident && last.resident && !test::kKeepsFreedMemory) {
        const double growth = *last.resident - *warm.resident;
        checks.check("resident memory moved by " + text(growth / kMebi) + " MiB since the first tenth, allowed are " +
                         text(kLargestGrowth / kMebi),
                     growth <= kLargestGrowth);
    }
    if (warm.descriptors && last.descriptors) {
        checks.check(std::to_string(*last.descriptors) + " open files, " + std::to_string(*warm.descriptors) +
                         " after the first tenth",
                     *last.descriptors == *warm.descriptors);
    }
    const double slowdown = last.medianSeconds / samples[1].medianSeconds;
    checks.check("the last tenth's median frame takes " + text(slowdown) +
                     " times that of the second tenth, allowed are " + text(largestSlowdown),
                 slowdown <= largestSlowdown);
}

int soak(int frames, double largestSlowdown, std::ostream& out) {
    Workload workload;
    Totals totals;
    std::vector<Sample> samples;
    // Filled once, so that its own pages do not count as growth.
    std::vector<double> seconds(static_cast<std::size_t>(frames));
    const auto keepSeconds = [&seconds](double worked) { seconds.push_back(worked); };
    const unsigned firstSeed = 1;
    unsigned seed = firstSeed;
    const PassOutcome first = workload.run(firstSeed, kPassFrames, [](double) {});
    const int warmUp = first.frames + workload.showEveryScene();
    out << "warm-up: " << warmUp << " frames" << std::endl;
    for (int tenth = 1; tenth <= kTenths; ++tenth) {
        seconds.clear();
        while (totals.frames < static_cast<double>(frames) * tenth / kTenths) {
            totals.add(workload.run(++seed, kPassFrames, keepSeconds));
        }
        samples.push_back({residentBytes(), openDescriptors(), median(seconds)});
        printSample(out, tenth, totals, samples.back());
    }
    const PassOutcome last = workload.run(firstSeed, kPassFrames, [](double) {});
    out << totals.frames << " frames pushed, " << totals.measured << " with a box, " << totals.refused << " refused, "
        << totals.exceptions << " unreadable parameter files" << std::endl;
    Checks checks(out);
    checkSamples(samples, largestSlowdown, checks);
    checks.check("the last pass gives the bits of the first", last.digest == first.digest);
    checks.check("another pass gives others", workload.run(seed, kPassFrames, [](double) {}).digest != first.digest);
    checks.check("more than half of the frames have a box", 2 * totals.measured > totals.frames);
    checks.check("some frames were refused and some files unreadable", totals.refused > 0 && totals.exceptions > 0);
    return checks.failed() == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

int run(const std::vector<std::string>& arguments) {
    const int frames = arguments.empty() ? 0 : std::stoi(arguments[0]);
    const double largestSlowdown = arguments.size() > 1 ? std::stod(arguments[1]) : kDefaultSlowdown;
    if (frames < kLeastFrames) {
        std::cerr << "usage: soak FRAMES [LARGEST_SLOWDOWN]; at least " << kLeastFrames << " frames\n";
        return 2;
    }
    cv::setNumThreads(1);
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    const test::WorkingDirectory directory;
    const SilencedOutput silenced;
    std::ostream out(silenced.previous());
    out << std::fixed << std::setprecision(3);
    return soak(frames, largestSlowdown, out);
}

}  // namespace

}  // namespace quorvel::soak

int main(int argc, char** argv) {
    try {
        return quorvel::soak::run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << "soak: " << error.what() << '\n';
        return 2;
    }
}
