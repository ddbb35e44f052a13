// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace quorvel::command {

/// While this object lives, Ctrl-C and a request to terminate, such as a job scheduler sends, are only noted. There
/// must be only one such object at a time.
class InterruptWatch {
public:
    InterruptWatch();
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;
    InterruptWatch(InterruptWatch&&) = delete;
    InterruptWatch& operator=(InterruptWatch&&) = delete;

    /// \return the number of the signal that came, 0 when none did; on any thread
    int signal() const;

private:
    using Handler = void (*)(int);
    Handler previousInterrupt_;
    Handler previousTermination_;
};

}  // namespace quorvel::command
