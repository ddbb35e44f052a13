// SPDX-License-Identifier: Apache-2.0
#include "commands/standard_streams.h"

#include "kit/input/input_error.h"

#ifndef _WIN32
#include <fcntl.h>
#include <unistd.h>
#endif

namespace quorvel::command {

using namespace kit;

void claimStandardStreams() {
#ifndef _WIN32
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (::fcntl(stream, F_GETFD) == -1) {
            // The lowest free descriptor is this one. Opened for reading, it takes no output.
            static_cast<void>(::open("/dev/null", O_RDONLY));
        }
    }
#endif
}

void requireWritten(std::ostream& output) {
    output.flush();
    if (!output) {
        throw InputError(
            "standard output: cannot be written; check the space on the disk, and that the reading program still runs");
    }
}

}  // namespace quorvel::command
