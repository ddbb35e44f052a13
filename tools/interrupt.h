// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace quorvel::command {

/// While it lives, Ctrl-C and a request to terminate, as a job scheduler sends it, are only noted. One at a time.
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
