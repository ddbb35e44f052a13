// SPDX-License-Identifier: Apache-2.0
#include "kit/output/output_file.h"

#include <iostream>
#include <optional>
#include <system_error>
#include <utility>

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "files/platform.h"
#include "kit/input/input_error.h"
#include "kit/input/stream_file.h"

namespace quorvel::kit {

namespace {

namespace fs = std::filesystem;

/// Whether standard output goes to the file of this name. Replacing that file would lose the rest of the output.
bool isStandardOutput([[maybe_unused]] const fs::path& path) {
#ifdef _WIN32
    return false;
#else
    struct stat named {};
    struct stat output {};
    return ::stat(path.c_str(), &named) == 0 && ::fstat(STDOUT_FILENO, &output) == 0 && named.st_dev == output.st_dev &&
           named.st_ino == output.st_ino;
#endif
}

/// What the user reads about a problem, after the name of the file.
std::string problemText(internal::WriteProblem problem, int systemError) {
    switch (problem) {
        case internal::WriteProblem::None:
            break;
        case internal::WriteProblem::EndlessLinks:
            return ": is a link that leads to itself; remove it";
        case internal::WriteProblem::Folder:
            return ": cannot be written; it is a folder, name a file";
        case internal::WriteProblem::Protected:
            return ": cannot be written; check its permissions";
        case internal::WriteProblem::NotStarted:
            return ": cannot be written; check the folder and its permissions";
        case internal::WriteProblem::NotWhole:
            return ": cannot be written whole; check the space on the disk";
        case internal::WriteProblem::NotReplaced:
            return ": cannot be replaced (" + std::system_category().message(systemError) +
                   "); check the folder and its permissions";
    }
    return {};
}

/// \param systemError of the staged file, for NotReplaced
/// \throws InputError with one line that names the path, unless there is no problem
void requireWritten(internal::WriteProblem problem, const std::string& path, int systemError = 0) {
    if (problem != internal::WriteProblem::None) {
        throw InputError(path + problemText(problem, systemError));
    }
}

}  // namespace

bool isWrittenStraight(const fs::path& path) {
    return isStream(path) || isStandardOutput(path);
}

fs::path fileBehindLinks(const fs::path& path) {
    const std::optional<std::string> file = internal::linkTarget(path.string());
    requireWritten(file ? internal::WriteProblem::None : internal::WriteProblem::EndlessLinks, path.string());
    return file.value_or(std::string());
}

void OutputFiles::add(const fs::path& path, const std::string& bytes, FileContent kind) {
    if (isWrittenStraight(path)) {
        streams_.push_back({path, bytes});
        return;
    }
    internal::StagedFile file(path.string());
    requireWritten(file.stage(bytes, kind), path.string());
    files_.push_back({path, std::move(file)});
}

void OutputFiles::removeStale(const fs::path& path) {
    stale_.push_back(path);
}

void OutputFiles::commit() {
    std::vector<std::string> places;
    for (auto& [named, file] : files_) {
        const internal::WriteProblem problem = file.commit();
        requireWritten(problem, named.string(), file.systemError());
        places.push_back(file.place());
    }
    internal::removeLeftovers(places);
    for (const fs::path& path : stale_) {
        std::error_code ignored;
        fs::remove(path, ignored);
    }
    for (const StreamOutput& stream : streams_) {
        if (isStandardOutput(stream.path)) {
            // Written with std::cout, so that the bytes stay in order with the rest of the output. The command checks
            // at its end whether everything was written.
            std::cout << stream.bytes << std::flush;
        } else {
            writeStream(stream.path, stream.bytes);
        }
    }
}

void writeOutputFile(const fs::path& path, const std::string& bytes, FileContent kind) {
    OutputFiles files;
    files.add(path, bytes, kind);
    files.commit();
}

void requireWritable(const fs::path& path) {
    if (!isStream(path)) {
        internal::StagedFile probe(path.string());
        requireWritten(probe.stage({}, FileContent::Binary), path.string());
    }
}

}  // namespace quorvel::kit
