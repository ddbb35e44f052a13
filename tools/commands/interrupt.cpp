// SPDX-License-Identifier: Apache-2.0
#include "commands/interrupt.h"

#include <atomic>
#include <csignal>

namespace quorvel::command {

namespace {

std::atomic<int>& noted() {
    static std::atomic<int> number{0};
    return number;
}
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may only touch lock-free atomics");

void note(int number) {
    noted() = number;
    // Some platforms remove a handler when it runs, so it is set again. The signal may come twice: "timeout" sends it
    // to the process and to its group.
    static_cast<void>(std::signal(number, note));
}

}  // namespace

InterruptWatch::InterruptWatch()
    : previousInterrupt_(std::signal(SIGINT, note)), previousTermination_(std::signal(SIGTERM, note)) {
    noted() = 0;
}

InterruptWatch::~InterruptWatch() {
    static_cast<void>(std::signal(SIGINT, previousInterrupt_));
    static_cast<void>(std::signal(SIGTERM, previousTermination_));
}

int InterruptWatch::signal() const {
    return noted();
}

}  // namespace quorvel::command
