// SPDX-License-Identifier: Apache-2.0
#include "kit/input/stream_file.h"

#include <array>
#include <chrono>
#include <fstream>
#include <system_error>
#include <thread>

#ifndef _WIN32
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>
#endif

#include "kit/input/input_error.h"

namespace quorvel::kit {

namespace {

constexpr std::size_t kBlock = 65536;  // bytes, what a pipe holds

[[noreturn]] void refuseReading(const std::filesystem::path& path) {
    throw InputError(path.string() + ": is a pipe or a device that cannot be read; check its permissions");
}

[[noreturn]] void refuseWriting(const std::filesystem::path& path) {
    throw InputError(path.string() + ": is a pipe or a device that cannot be written; check its permissions, and the " +
                     "space behind it");
}

}  // namespace

bool isStream(const std::filesystem::path& path) {
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::status(path, ignored);
    return std::filesystem::exists(status) && std::filesystem::is_other(status);
}

#ifdef _WIN32

std::string readStream(const std::filesystem::path& path, std::size_t most) {
    std::ifstream file(path, std::ios::binary);
    std::array<char, kBlock> block{};
    std::string bytes;
    while (file && bytes.size() <= most) {
        file.read(block.data(), block.size());
        bytes.append(block.data(), static_cast<std::size_t>(file.gcount()));
    }
    if (!file.eof() && bytes.size() <= most) {
        refuseReading(path);
    }
    return bytes;
}

void writeStream(const std::filesystem::path& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::app);
    file << bytes;
    file.close();
    if (!file) {
        refuseWriting(path);
    }
}

#else

namespace {

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) {
            ::close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor(Descriptor&&) = delete;
    Descriptor& operator=(Descriptor&&) = delete;

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }

private:
    int number_;
};

/// How long this program waits for the program at the other end of a named pipe, which may be started a little later.
class Patience {
public:
    /// Waits a moment.
    /// \return whether there is time left to try again
    bool waits() {
        constexpr std::chrono::milliseconds kMoment(10);
        constexpr std::chrono::seconds kLongest(3);
        std::this_thread::sleep_for(kMoment);
        return std::chrono::steady_clock::now() - start_ < kLongest;
    }

private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

/// Waits until the other end has taken or given something.
void awaitReady(int descriptor, short event) {
    pollfd request{descriptor, event, 0};
    static_cast<void>(::poll(&request, 1, -1));
}

bool isTemporary(int error) {
    return error == EAGAIN || error == EINTR;
}

/// Opens the pipe once a program has opened its other end for reading.
int openForWriting(const std::filesystem::path& path) {
    Patience patience;
    while (true) {
        const int number = ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY);
        if (number >= 0 || errno != ENXIO) {
            return number;
        }
        if (!patience.waits()) {
            throw InputError(path.string() + ": is a pipe that no program reads; start the reader first");
        }
    }
}

}  // namespace

std::string readStream(const std::filesystem::path& path, std::size_t most) {
    // Without O_NONBLOCK the opening itself would wait for a writer, perhaps for ever.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (!file.isOpen()) {
        refuseReading(path);
    }
    std::array<char, kBlock> block{};
    std::string bytes;
    Patience patience;
    while (bytes.size() <= most) {
        const ssize_t count = ::read(file.number(), block.data(), block.size());
        if (count > 0) {
            bytes.append(block.data(), static_cast<std::size_t>(count));
        } else if (count < 0 && isTemporary(errno)) {
            awaitReady(file.number(), POLLIN);
        } else if (count < 0) {
            refuseReading(path);
        } else if (!bytes.empty() || !std::filesystem::is_fifo(path)) {
            return bytes;
        } else if (!patience.waits()) {
            // Reading from a pipe that nobody has opened for writing gives an end of file at once.
            throw InputError(path.string() + ": is a pipe that no program writes into; start the writer first");
        }
    }
    return bytes;
}

void writeStream(const std::filesystem::path& path, const std::string& bytes) {
    const Descriptor file(openForWriting(path));
    if (!file.isOpen()) {
        refuseWriting(path);
    }
    for (std::size_t written = 0; written < bytes.size();) {
        const ssize_t count = ::write(file.number(), bytes.data() + written, bytes.size() - written);
        if (count >= 0) {
            written += static_cast<std::size_t>(count);
        } else if (isTemporary(errno)) {
            awaitReady(file.number(), POLLOUT);
        } else {
            refuseWriting(path);
        }
    }
}

#endif

}  // namespace quorvel::kit
