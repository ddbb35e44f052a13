// SPDX-License-Identifier: Apache-2.0
// The public calls on a noisy parcel, 640 x 480, with the measured sizes beside the times.
#include <benchmark/benchmark.h>

#include "bench_scene.h"
#include "library/plain/object_chain.h"

namespace quorvel::bench {

namespace {

void push(Quorvel& ruler) {
    ruler.getCameraFrame(benchScene().occupied.color, benchScene().occupied.depth);
}

void reportSizes(benchmark::State& state, const Quorvel& ruler) {
    state.counters["length_mm"] = static_cast<double>(ruler.result.length);
    state.counters["width_mm"] = static_cast<double>(ruler.result.width);
    state.counters["height_mm"] = static_cast<double>(ruler.result.height);
}

void intake(benchmark::State& state) {
    Quorvel ruler = calibratedRuler(KIOSK);
    for (auto _ : state) {
        push(ruler);
    }
}
BENCHMARK(intake)->Unit(benchmark::kMillisecond);

template <typename Measure>
void measuring(benchmark::State& state, Measure measure) {
    Quorvel ruler = calibratedRuler(KIOSK);
    for (auto _ : state) {
        state.PauseTiming();
        push(ruler);
        state.ResumeTiming();
        measure(ruler);
    }
    reportSizes(state, ruler);
}

void measureOnceFast(benchmark::State& state) {
    measuring(state, [](Quorvel& ruler) { ruler.measureOnce(); });
}
void measureOncePlain(benchmark::State& state) {
    measuring(state, [](Quorvel& ruler) { test::plain::measureOnce(ruler); });
}
BENCHMARK(measureOnceFast)->Unit(benchmark::kMillisecond);
BENCHMARK(measureOncePlain)->Unit(benchmark::kMillisecond);

void trackingFrame(benchmark::State& state) {
    Quorvel ruler = benchRuler(GROUND_TRACKING);
    for (auto _ : state) {
        push(ruler);
        ruler.measureOnce();
    }
    reportSizes(state, ruler);
}
BENCHMARK(trackingFrame)->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace quorvel::bench
