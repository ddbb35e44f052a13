// SPDX-License-Identifier: Apache-2.0
#include "output_file.h"

#include <fstream>
#include <iostream>
#include <random>
#include <system_error>
#include <utility>

#ifndef _WIN32
#include <sys/stat.h>
#include <unistd.h>
#endif

#include "input_error.h"
#include "stream_file.h"

namespace quorvel::command {

namespace {

namespace fs = std::filesystem;

std::string freshName(const std::string& ending) {
    return ".quorvel-" + std::to_string(std::random_device()()) + ending;
}

/// Whether standard output goes to the file of this name: replacing it would cut the rest of the output off.
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

/// A rename would replace even a file that is protected against writing.
void requireReplaceable(const fs::path& place, const fs::path& named) {
    std::error_code ignored;
    if (fs::is_directory(place, ignored)) {
        throw InputError(named.string() + ": cannot be written; it is a folder, name a file");
    }
    if (fs::exists(place, ignored) && !std::fstream(place, std::ios::in | std::ios::out | std::ios::binary)) {
        throw InputError(named.string() + ": cannot be written; check its permissions");
    }
}

void writeBeside(const FileBeside& file, const fs::path& named, const std::string& bytes) {
    std::ofstream stream(file.path(), std::ios::binary);
    if (!stream) {
        throw InputError(named.string() + ": cannot be written; check the folder and its permissions");
    }
    stream << bytes;
    stream.close();
    if (!stream) {
        throw InputError(named.string() + ": cannot be written whole; check the space on the disk");
    }
}

}  // namespace

bool isWrittenStraight(const fs::path& path) {
    return isStream(path) || isStandardOutput(path);
}

fs::path fileBehindLinks(const fs::path& path) {
    constexpr int kMostLinks = 40;  // as many as the system follows
    fs::path file = path;
    std::error_code error;
    for (int i = 0; fs::is_symlink(fs::symlink_status(file, error)); ++i) {
        if (i == kMostLinks) {
            throw InputError(path.string() + ": is a link that leads to itself; remove it");
        }
        file = file.parent_path() / fs::read_symlink(file, error);
    }
    return file;
}

FileBeside::FileBeside(const fs::path& path, const std::string& ending)
    : named_(path), place_(fileBehindLinks(path)), fresh_(place_.parent_path() / freshName(ending)) {
    requireReplaceable(place_, named_);
}

FileBeside::~FileBeside() {
    if (!fresh_.empty()) {
        std::error_code ignored;
        fs::remove(fresh_, ignored);
    }
}

FileBeside::FileBeside(FileBeside&& other) noexcept
    : named_(std::move(other.named_)),
      place_(std::move(other.place_)),
      fresh_(std::exchange(other.fresh_, fs::path())) {}

void FileBeside::replace() {
    std::error_code error;
    if (const fs::file_status before = fs::status(place_, error); fs::exists(before)) {
        fs::permissions(fresh_, before.permissions(), error);
    }
    fs::rename(fresh_, place_, error);
    if (error) {
        throw InputError(named_.string() + ": cannot be replaced (" + error.message() +
                         "); check the folder and its permissions");
    }
    fresh_.clear();
}

void OutputFiles::add(const fs::path& path, const std::string& bytes) {
    if (isWrittenStraight(path)) {
        streams_.push_back({path, bytes});
        return;
    }
    FileBeside file(path);
    writeBeside(file, path, bytes);
    files_.push_back(std::move(file));
}

void OutputFiles::removeStale(const fs::path& path) {
    stale_.push_back(path);
}

void OutputFiles::commit() {
    for (FileBeside& file : files_) {
        file.replace();
    }
    for (const fs::path& path : stale_) {
        std::error_code ignored;
        fs::remove(path, ignored);
    }
    for (const StreamOutput& stream : streams_) {
        if (isStandardOutput(stream.path)) {
            // Written through the stream itself, the bytes stay in order with the rest; the command's end sees whether
            // they went through.
            std::cout << stream.bytes << std::flush;
        } else {
            writeStream(stream.path, stream.bytes);
        }
    }
}

void writeOutputFile(const fs::path& path, const std::string& bytes) {
    OutputFiles files;
    files.add(path, bytes);
    files.commit();
}

void requireWritable(const fs::path& path) {
    if (!isStream(path)) {
        writeBeside(FileBeside(path), path, {});
    }
}

}  // namespace quorvel::command
