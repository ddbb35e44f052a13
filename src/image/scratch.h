// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

namespace quorvel::internal {

/// Storage that a stage needs only while it runs, kept for the next call. So no frame asks the system for memory, and
/// no fresh pages have to be mapped and cleared: the intake of 2560 x 1440 takes 5 ms with kept storage and 25 ms with
/// fresh storage; 640 x 480 takes the same time with both. The storage grows to the largest size that was needed. No
/// value is used from one call to the next.
template <typename Value>
class GrowingBuffer {
public:
    /// \return room for `count` undefined values; old values are lost when the storage grows
    Value* atLeast(std::size_t count) {
        if (count > capacity_) {
            values_.reset();  // before the new storage, so that both never stand side by side
            capacity_ = 0;
            // Not make_unique, which would clear the storage. NOLINTNEXTLINE(cppcoreguidelines-owning-memory)
            values_.reset(new Value[count]);
            capacity_ = count;
        }
        return values_.get();
    }

private:
    std::unique_ptr<Value[]> values_;
    std::size_t capacity_ = 0;
};

/// Scratch memory that nobody uses at the moment.
///
/// Calls on different threads share the slots without locks: one atomic exchange empties or fills a slot. It is not
/// thread_local, because on 64-bit Windows GCC frees a thread's variables before it runs their destructors.
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

    /// Frees the scratch when all slots are full.
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
    /// When more threads than this are in one stage at the same time, the others allocate their own scratch.
    static constexpr std::size_t kSlots = 16;
    std::array<std::atomic<Scratch*>, kSlots> slots_{};
};

/// Scratch memory of a stage, borrowed for as long as this object lives. The stage defines the type. The values are
/// those that the last user left, so only the storage is useful. An image in it may be handed out with
/// createExclusive(): computeNormalMap() shows how.
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
