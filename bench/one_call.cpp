// SPDX-License-Identifier: Apache-2.0
// One call of a work, for callgrind: its instructions alone are counted.
//   valgrind --tool=callgrind --instr-atstart=no build/release/bin/quorvel_one_call measureOnce/640x480/fast
#include <iostream>
#include <string>
#include <valgrind/callgrind.h>

#include <opencv2/core.hpp>

#include "support/working_directory.h"
#include "work.h"

namespace quorvel::bench {

namespace {

/// The call before the counted one fills the buffers that later calls use again.
void callCounted(const Run& run) {
    run.prepare();
    run.call();
    run.prepare();
    CALLGRIND_START_INSTRUMENTATION;
    run.call();
    CALLGRIND_STOP_INSTRUMENTATION;
}

/// \return whether a work of this name exists
bool callNamed(const std::string& wanted) {
    for (const Work& work : allWorks()) {
        const std::string name = work.name + "/" + work.point + "/";
        if (wanted == name + "plain" || wanted == name + "fast") {
            const test::WorkingDirectory files;  // of the calibrations
            const Run run = wanted == name + "plain" ? work.plain() : work.fast();
            callCounted(run);
            std::cout << run.outcome() << '\n';
            return true;
        }
    }
    return false;
}

}  // namespace

}  // namespace quorvel::bench

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: quorvel_one_call NAME/POINT/plain|fast\n";
        return 2;
    }
    cv::setNumThreads(1);
    if (!quorvel::bench::callNamed(argv[1])) {
        std::cerr << argv[1] << ": there is no such work; quorvel_bench --benchmark_list_tests lists them\n";
        return 2;
    }
    return 0;
}
