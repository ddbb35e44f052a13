// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

namespace quorvel::internal {

/// Scratch memory that nobody uses at the moment.
///
/// Calls on different threads take turns without locks: a slot is emptied and filled by one atomic exchange. Not
/// thread_local: on 64-bit Windows GCC frees a thread's variables before it runs their destructors.
template <typename Scratch>
class IdleScratch {
public:
    static IdleScratch& instance() {
        static IdleScratch idle;
        return idle;
    }

    IdleScratch() = default;
    IdleScratch(const IdleScratch&) = delete;
    IdleScratch& operator=(const IdleScratch&) = delete;
    ~IdleScratch() {
        for (std::atomic<Scratch*>& slot : slots_) {
            const std::unique_ptr<Scratch> owned(slot.exchange(nullptr));
        }
    }

    std::unique_ptr<Scratch> take() {
        for (std::atomic<Scratch*>& slot : slots_) {
            std::unique_ptr<Scratch> found(slot.exchange(nullptr, std::memory_order_acquire));
            if (found) {
                return found;
            }
        }
        return std::make_unique<Scratch>();
    }

    /// What finds all slots filled is freed.
    void giveBack(std::unique_ptr<Scratch> scratch) {
        for (std::atomic<Scratch*>& slot : slots_) {
            Scratch* empty = nullptr;
            if (slot.compare_exchange_strong(empty, scratch.get(), std::memory_order_release,
                                             std::memory_order_relaxed)) {
                static_cast<void>(scratch.release());  // the slot owns it now
                return;
            }
        }
    }

private:
    /// More threads than this at work in one stage at a time allocate afresh.
    static constexpr std::size_t kSlots = 16;
    std::array<std::atomic<Scratch*>, kSlots> slots_{};
};

/// Scratch memory of a type of the stage's own, for as long as the value lives. It comes as its last user left it: only
/// its storage is of use.
template <typename Scratch>
class Borrowed {
public:
    Borrowed() : scratch_(IdleScratch<Scratch>::instance().take()) {}
    ~Borrowed() { IdleScratch<Scratch>::instance().giveBack(std::move(scratch_)); }
    Borrowed(const Borrowed&) = delete;
    Borrowed& operator=(const Borrowed&) = delete;

    Scratch& operator*() const { return *scratch_; }
    Scratch* operator->() const { return scratch_.get(); }

private:
    std::unique_ptr<Scratch> scratch_;
};

}  // namespace quorvel::internal
