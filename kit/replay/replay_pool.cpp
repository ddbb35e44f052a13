// SPDX-License-Identifier: Apache-2.0
#include "kit/replay/replay_pool.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace quorvel::kit {

namespace {

class Pool {
public:
    Pool(const std::vector<std::string>& folders, int jobs, const ReplayCalls& calls)
        : folders_(folders), calls_(calls), outcomes_(folders.size()) {
        for (; working_ < jobs; ++working_) {
            threads_.emplace_back([this] { work(); });
        }
    }
    ~Pool() {
        end();
        for (std::thread& thread : threads_) {
            thread.join();
        }
    }
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    Pool(Pool&&) = delete;
    Pool& operator=(Pool&&) = delete;

    /// Waits for the outcome of folder i.
    /// \return the outcome; nothing when the folder was not begun
    std::optional<ReplayOutcome> outcome(std::size_t i) {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [&] { return outcomes_[i].has_value() || working_ == 0; });
        return std::exchange(outcomes_[i], std::nullopt);
    }

private:
    void work() {
        while (const std::optional<std::size_t> i = claim()) {
            keep(*i, calls_.replay(folders_[*i]));
        }
        const std::lock_guard<std::mutex> lock(mutex_);
        --working_;
        changed_.notify_all();
    }

    std::optional<std::size_t> claim() {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (ended_ || next_ == folders_.size() || calls_.stopped()) {
            return std::nullopt;
        }
        return next_++;
    }

    void keep(std::size_t i, ReplayOutcome outcome) {
        const std::lock_guard<std::mutex> lock(mutex_);
        outcomes_[i] = std::move(outcome);
        changed_.notify_all();
    }

    void end() {
        const std::lock_guard<std::mutex> lock(mutex_);
        ended_ = true;
    }

    const std::vector<std::string>& folders_;
    const ReplayCalls& calls_;
    std::vector<std::optional<ReplayOutcome>> outcomes_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t next_ = 0;
    int working_ = 0;
    bool ended_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace

std::size_t replayAll(const std::vector<std::string>& folders, int jobs, const ReplayCalls& calls) {
    Pool pool(folders, jobs, calls);
    std::size_t taken = 0;
    while (taken < folders.size()) {
        const std::optional<ReplayOutcome> outcome = pool.outcome(taken);
        if (!outcome) {
            break;
        }
        calls.take(*outcome);
        ++taken;
    }
    return taken;
}

}  // namespace quorvel::kit
