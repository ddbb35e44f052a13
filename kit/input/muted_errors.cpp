// SPDX-License-Identifier: Apache-2.0
#include "kit/input/muted_errors.h"

#include <cstdio>
#include <fcntl.h>
#include <iostream>
#include <mutex>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace quorvel::kit {

namespace {

constexpr int kErrors = 2;  // descriptor of standard error on every platform
constexpr int kNone = -1;

#ifdef _WIN32
const char* const kNowhere = "NUL";
int openForWriting(const char* path) {
    return _open(path, _O_WRONLY);
}
int duplicate(int descriptor) {
    return _dup(descriptor);
}
void redirect(int from, int to) {
    static_cast<void>(_dup2(from, to));
}
void closeDescriptor(int descriptor) {
    static_cast<void>(_close(descriptor));
}
#else
const char* const kNowhere = "/dev/null";
int openForWriting(const char* path) {
    return ::open(path, O_WRONLY | O_CLOEXEC);
}
int duplicate(int descriptor) {
    return ::fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
}
void redirect(int from, int to) {
    static_cast<void>(::dup2(from, to));
}
void closeDescriptor(int descriptor) {
    static_cast<void>(::close(descriptor));
}
#endif

struct Muting {
    std::mutex mutex;
    int holders = 0;
    int original = kNone;  ///< the real standard error, while it is muted
};

Muting& muting() {
    static Muting state;
    return state;
}

void mute(Muting& state) {
    const int nowhere = openForWriting(kNowhere);
    state.original = duplicate(kErrors);
    if (nowhere != kNone && state.original != kNone) {
        redirect(nowhere, kErrors);
    }
    if (nowhere != kNone) {
        closeDescriptor(nowhere);
    }
}

void unmute(Muting& state) {
    if (state.original != kNone) {
        redirect(state.original, kErrors);
        closeDescriptor(state.original);
        state.original = kNone;
    }
}

}  // namespace

MutedErrors::MutedErrors() {
    Muting& state = muting();
    const std::lock_guard<std::mutex> lock(state.mutex);
    if (state.holders++ == 0) {
        mute(state);
    }
}

MutedErrors::~MutedErrors() {
    Muting& state = muting();
    const std::lock_guard<std::mutex> lock(state.mutex);
    if (--state.holders == 0) {
        unmute(state);
    }
}

void printPastMuting(const std::string& text) {
    Muting& state = muting();
    const std::lock_guard<std::mutex> lock(state.mutex);
    const bool muted = state.holders > 0;
    if (muted) {
        unmute(state);
    }
    std::cerr << text << std::flush;
    if (muted) {
        mute(state);
    }
}

}  // namespace quorvel::kit
