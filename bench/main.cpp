// SPDX-License-Identifier: Apache-2.0
// Every work in both forms, as "NAME/POINT/FORM". Both forms are in this one program; with
// --benchmark_enable_random_interleaving=true their repetitions alternate at random.
#include <ctime>
#include <memory>

#include <benchmark/benchmark.h>
#include <opencv2/core.hpp>

#include "support/working_directory.h"
#include "work.h"

namespace quorvel::bench {

namespace {

/// Processor time of this thread, s. The time of other programs does not count.
double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

void measure(benchmark::State& state, const std::function<Run()>& make, double bytes) {
    const Run run = make();
    // Buffers that a run keeps are filled by its first call.
    run.prepare();
    run.call();
    for (auto _ : state) {
        run.prepare();
        const double start = threadSeconds();
        run.call();
        state.SetIterationTime(threadSeconds() - start);
    }
    state.counters["outcome"] = run.outcome();
    state.counters["bytes"] = bytes;
}

void addForm(const Work& work, const std::string& form, const std::function<Run()>& make) {
    const std::string name = work.name + "/" + work.point + "/" + form;
    benchmark::RegisterBenchmark(name.c_str(),
                                 [make, bytes = work.bytes](benchmark::State& state) { measure(state, make, bytes); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

}  // namespace

}  // namespace quorvel::bench

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    cv::setNumThreads(1);
    benchmark::AddCustomContext("opencv_version", CV_VERSION);
    for (const quorvel::bench::Work& work : quorvel::bench::allWorks()) {
        quorvel::bench::addForm(work, "plain", work.plain);
        quorvel::bench::addForm(work, "fast", work.fast);
    }
    const quorvel::test::WorkingDirectory files;  // of the calibrations
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
