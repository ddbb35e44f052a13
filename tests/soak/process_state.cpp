// SPDX-License-Identifier: Apache-2.0
#include "soak/process_state.h"

#ifdef __linux__
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#ifdef __GLIBC__
#include <malloc.h>
#endif
#include <unistd.h>
#else
#include <chrono>
#endif

namespace quorvel::soak {

#ifdef __linux__

std::optional<double> residentBytes() {
#ifdef __GLIBC__
    malloc_trim(0);
#endif
    std::ifstream file("/proc/self/statm");
    double size = 0;
    double resident = 0;
    if (!(file >> size >> resident)) {
        return std::nullopt;
    }
    return resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}

std::optional<int> openDescriptors() {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    // One of them is the iterator's own.
    return static_cast<int>(std::distance(begin(entries), end(entries))) - 1;
}

double secondsWorked() {
    std::timespec worked{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &worked);
    return static_cast<double>(worked.tv_sec) + static_cast<double>(worked.tv_nsec) * 1e-9;
}

#else

std::optional<double> residentBytes() {
    return std::nullopt;
}

std::optional<int> openDescriptors() {
    return std::nullopt;
}

double secondsWorked() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

#endif

}  // namespace quorvel::soak
