// SPDX-License-Identifier: Apache-2.0
#include "kit/measure/measure_timing.h"

#include <array>
#include <cstddef>

#include "kit/measure/median.h"
#include "kit/measure/stopwatch.h"
#include "kit/output/scratch_folder.h"

namespace quorvel::kit {

namespace {

constexpr int kRepetitions = 20;

enum class Part : std::size_t {
    Reading,
    Calibrating,
    FrameIntake,
    PlaneRefit,
    GroundRemoval,
    HeightCut,
    ObjectComponent,
    ObjectWindow,
    SurfaceFilter,
    Footprint,
    MeasureOnce
};

struct PartName {
    const char* name;
    const char* key;
};

/// In the order of Part.
constexpr std::array<PartName, 11> kNames{{{"reading", "reading"},
                                           {"calibrating", "calibrating"},
                                           {"frame intake", "frameIntake"},
                                           {"plane re-fit", "planeRefit"},
                                           {"ground removal", "groundRemoval"},
                                           {"height cut", "heightCut"},
                                           {"object component", "objectComponent"},
                                           {"object window", "objectWindow"},
                                           {"surface filter", "surfaceFilter"},
                                           {"footprint", "footprint"},
                                           {"measureOnce", "measureOnce"}}};

/// The durations of every part, one a repetition.
class PartSamples {
public:
    void add(Part part, double milliseconds) { samples_[static_cast<std::size_t>(part)].push_back(milliseconds); }

    std::vector<TimedPart> medians() const {
        std::vector<TimedPart> parts;
        for (std::size_t i = 0; i < kNames.size(); ++i) {
            const std::vector<double>& values = samples_[i];
            parts.push_back({kNames[i].name, kNames[i].key, {}});
            if (!values.empty()) {
                parts.back().milliseconds = median(values);
            }
        }
        return parts;
    }

private:
    std::array<std::vector<double>, kNames.size()> samples_;
};

/// \param once adds the durations of one repetition to the samples that it is given. The first repetition is not
///        counted, because its buffers and caches are cold.
template <typename Once>
void repeat(PartSamples& samples, const Once& once) {
    PartSamples cold;
    once(cold);
    for (int i = 0; i < kRepetitions; ++i) {
        once(samples);
    }
}

void timeReading(const std::function<void()>& read, PartSamples& samples) {
    repeat(samples, [&read](PartSamples& into) {
        const Stopwatch watch;
        read();
        into.add(Part::Reading, watch.milliseconds());
    });
}

/// \param ruler in its mode and with its calibration area
void timeCalibration(const Ruler& ruler, const FramePair& empty, double offset, PartSamples& samples) {
    const ScratchFolder folder;
    Ruler probe = ruler;
    probe.useParameterFolder(folder.path());
    probe.takeFrame(empty.color, empty.depth);
    repeat(samples, [&probe, offset](PartSamples& into) {
        const Stopwatch watch;
        probe.fitPlane(static_cast<float>(offset));
        probe.storeCalibration();
        into.add(Part::Calibrating, watch.milliseconds());
    });
}

void timeIntake(Ruler& probe, const FramePair& frame, PartSamples& into) {
    const Stopwatch watch;
    probe.takeFrame(frame.color, frame.depth);
    into.add(Part::FrameIntake, watch.milliseconds());
    if (probe.state().mode == GROUND_TRACKING) {
        const Stopwatch fitWatch;
        probe.refitPlane();
        into.add(Part::PlaneRefit, fitWatch.milliseconds());
    }
}

void addStages(const internal::MeasureAccount& account, PartSamples& into) {
    const internal::StageTimes& stages = *account.times;
    into.add(Part::GroundRemoval, stages.groundRemoval);
    into.add(Part::HeightCut, stages.heightCut);
    into.add(Part::ObjectComponent, stages.component);
    if (internal::hasRecord(account)) {
        into.add(Part::ObjectWindow, stages.window);
        into.add(Part::SurfaceFilter, stages.surfaceFilter);
        into.add(Part::Footprint, stages.footprint);
    }
}

void timeFrame(const Ruler& ruler, const FramePair& frame, bool planeFound, PartSamples& samples) {
    Ruler probe = ruler;
    internal::AccountDetail detail;
    detail.times = true;
    repeat(samples, [&](PartSamples& into) {
        timeIntake(probe, frame, into);
        if (!planeFound) {
            return;
        }
        probe.usePlaneOf(ruler);
        const Stopwatch watch;
        const std::optional<internal::MeasureAccount> account = probe.measure(detail);
        into.add(Part::MeasureOnce, watch.milliseconds());
        if (account && account->times) {
            addStages(*account, into);
        }
    });
}

}  // namespace

MeasureTiming timeMeasurement(const Ruler& ruler, const TimedRun& run) {
    Ruler quiet = ruler;
    quiet.keepQuiet();
    PartSamples samples;
    timeReading(run.read, samples);
    if (run.empty != nullptr) {
        timeCalibration(quiet, *run.empty, run.offset, samples);
    }
    if (run.planeFound || quiet.state().mode == GROUND_TRACKING) {
        timeFrame(quiet, run.frame, run.planeFound, samples);
    }
    return {kRepetitions, samples.medians()};
}

}  // namespace quorvel::kit
