// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <future>
#include <thread>
#include <vector>

namespace quorvel::test {

/// Calls `work(0)` ... `work(threads - 1)` on as many threads, which are all let go at the same moment, and waits for
/// the last.
/// \param work must not throw; its calls share nothing but what the library promises to be shared
template <typename Work>
void atOnce(std::size_t threads, Work work) {
    std::promise<void> gate;
    const std::shared_future<void> opened = gate.get_future().share();
    std::vector<std::thread> running;
    for (std::size_t i = 0; i < threads; ++i) {
        running.emplace_back([&work, opened, i] {
            opened.wait();
            work(i);
        });
    }
    gate.set_value();
    for (std::thread& thread : running) {
        thread.join();
    }
}

}  // namespace quorvel::test
