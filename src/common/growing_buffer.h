// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>

namespace quorvel::internal {

/// Storage that a stage needs only while it runs, kept for the next call: fresh megabytes for every frame cost
/// more than the work done in them (their pages are mapped and zeroed each time). It grows to the largest need and
/// holds no value from one call to the next.
template <typename Value>
class GrowingBuffer {
public:
    /// \return room for `count` values, which hold anything; what was there before is gone when the storage grows
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

}  // namespace quorvel::internal
