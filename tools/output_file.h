// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// \file output_file.h
/// How every file of the command is written: beside the place it is for, and put there in one step when it is whole. A
/// reader finds the old file or the new one; when the disk is full, the program killed, or another output cannot be
/// written, the old one stays. What is under way is called ".quorvel-<number>.new".

namespace quorvel::command {

/// The file behind the symbolic links, which need not exist, so that replacing it leaves the links alone.
/// \throws InputError when the links lead to themselves
std::filesystem::path fileBehindLinks(const std::filesystem::path& path);

/// \return whether the output goes straight into what is of this name: a pipe, a device, or where standard output goes
bool isWrittenStraight(const std::filesystem::path& path);

/// A file on its way: a name beside the file it is to replace that nobody else uses. What is under the name is removed
/// with the object unless it has taken its place.
class FileBeside {
public:
    /// \param path of the file as the user named it, perhaps a link
    /// \param ending of the new name, for libraries that choose the format by it
    explicit FileBeside(const std::filesystem::path& path, const std::string& ending = ".new");
    ~FileBeside();
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;
    FileBeside(FileBeside&& other) noexcept;
    FileBeside& operator=(FileBeside&&) = delete;

    const std::filesystem::path& path() const { return fresh_; }

    /// Puts the file in its place, with the permissions of the one that was there.
    /// \throws InputError with one line that names the place
    void replace();

private:
    std::filesystem::path named_;
    std::filesystem::path place_;
    std::filesystem::path fresh_;
};

/// The files of one run. All are written before the first is put in its place.
class OutputFiles {
public:
    /// Writes the bytes beside the place; keeps them when it is a pipe or a device.
    /// \throws InputError with one line that names the path
    void add(const std::filesystem::path& path, const std::string& bytes);

    /// Has a file of an earlier run removed, once all new ones are in their places.
    void removeStale(const std::filesystem::path& path);

    /// Puts all files in their places and writes into the pipes and devices. Called once.
    /// \throws InputError with one line that names the path
    void commit();

private:
    struct StreamOutput {
        std::filesystem::path path;
        std::string bytes;
    };
    std::vector<FileBeside> files_;
    std::vector<StreamOutput> streams_;
    std::vector<std::filesystem::path> stale_;
};

/// Writes one file.
/// \throws InputError with one line that names the path
void writeOutputFile(const std::filesystem::path& path, const std::string& bytes);

/// \throws InputError when a file of this name could not be written or replaced; nothing is changed
void requireWritable(const std::filesystem::path& path);

}  // namespace quorvel::command
