// SPDX-License-Identifier: Apache-2.0
#include "measure_timing.h"

#include <array>
#include <cstddef>

#include "median.h"
#include "scratch_folder.h"
#include "stage_timing.h"
#include "stopwatch.h"
#include "stream_redirect.h"

namespace quorvel::command {

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

/// \param once adds the durations of one repetition to the samples that it is given; the first ones do not count,
///        buffers and caches are cold then
template <typename Once>
void repeat(PartSamples& samples, const Once& once) {
    PartSamples cold;
    once(cold);
    for (int i = 0; i < kRepetitions; ++i) {
        once(samples);
    }
}

void timeReading(const MeasureOptions& options, PartSamples& samples) {
    repeat(samples, [&options](PartSamples& into) {
        const Stopwatch watch;
        const MeasureInput input = readMeasureInput(options);
        into.add(Part::Reading, watch.milliseconds());
    });
}

/// \param ruler in its mode and with its calibration area
void timeCalibration(const Quorvel& ruler, const FramePair& empty, double offset, PartSamples& samples) {
    const ScratchFolder folder;
    Quorvel probe = ruler;
    probe.paramDir = folder.path();
    probe.calFilePath = folder.path() + "/cal.txt";
    probe.getCameraFrame(empty.color, empty.depth);
    repeat(samples, [&probe, offset](PartSamples& into) {
        float distance = 0.0F;
        const Stopwatch watch;
        probe.calibRef(distance, static_cast<float>(offset));
        into.add(Part::Calibrating, watch.milliseconds());
    });
}

void timeIntake(Quorvel& probe, const FramePair& frame, PartSamples& into) {
    const Stopwatch watch;
    probe.getCameraFrame(frame.color, frame.depth);
    into.add(Part::FrameIntake, watch.milliseconds());
    if (probe.productType == GROUND_TRACKING) {
        const Stopwatch fitWatch;
        probe.ransacCalibRef();
        into.add(Part::PlaneRefit, fitWatch.milliseconds());
    }
}

void addStages(const StageMilliseconds& stages, PartSamples& into) {
    into.add(Part::GroundRemoval, stages.groundRemoval);
    into.add(Part::HeightCut, stages.heightCut);
    into.add(Part::ObjectComponent, stages.objectComponent);
    if (stages.objectFound) {
        into.add(Part::ObjectWindow, stages.objectWindow);
        into.add(Part::SurfaceFilter, stages.surfaceFilter);
        into.add(Part::Footprint, stages.footprint);
    }
}

void timeFrame(const Quorvel& ruler, const FramePair& frame, bool planeFound, PartSamples& samples) {
    Quorvel probe = ruler;
    repeat(samples, [&ruler, &frame, &probe, planeFound](PartSamples& into) {
        timeIntake(probe, frame, into);
        if (!planeFound) {
            return;
        }
        usePlaneOf(ruler, probe);
        addStages(timeStages(probe), into);
        const Stopwatch watch;
        probe.measureOnce();
        into.add(Part::MeasureOnce, watch.milliseconds());
    });
}

}  // namespace

MeasureTiming timeMeasurement(const Quorvel& ruler, const MeasureInput& input, const MeasureOptions& options,
                              bool planeFound) {
    const SilentLibrary silence;
    PartSamples samples;
    timeReading(options, samples);
    if (input.empty) {
        timeCalibration(ruler, *input.empty, input.calibration.offset, samples);
    }
    if (planeFound || input.settings.mode == GROUND_TRACKING) {
        timeFrame(ruler, input.frames.front(), planeFound, samples);
    }
    return {kRepetitions, samples.medians()};
}

}  // namespace quorvel::command
