// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "files/whole_file.h"

/// \file output_file.h
/// How every file of the command is written: under another name in the same folder first, then renamed to its own name
/// in one step when it is complete and on the disk, as the library writes its own files. A reader finds the old file or
/// the new file. The old file stays when the disk is full, when the program is killed, or when another output cannot be
/// written.

namespace quorvel::kit {

using internal::FileContent;

/// The file that symbolic links lead to, which need not exist. Replacing this file does not change the links.
/// \throws InputError when the links lead to themselves
std::filesystem::path fileBehindLinks(const std::filesystem::path& path);

/// \return whether the output is written directly: into a pipe, a device, or the file that standard output goes to
bool isWrittenStraight(const std::filesystem::path& path);

/// The files of one run. All are written completely before the first one replaces an old file.
class OutputFiles {
public:
    /// Writes the bytes into a new file beside the old one; for a pipe or a device it only keeps them.
    /// \throws InputError with one line that names the path
    void add(const std::filesystem::path& path, const std::string& bytes, FileContent kind = FileContent::Binary);

    /// Notes a file of an earlier run that commit() removes after all new files are in place.
    void removeStale(const std::filesystem::path& path);

    /// Replaces the old files, removes what killed runs left beside them, and writes into the pipes and devices. To be
    /// called once.
    /// \throws InputError with one line that names the path
    void commit();

private:
    struct StreamOutput {
        std::filesystem::path path;
        std::string bytes;
    };
    struct NamedFile {
        std::filesystem::path named;  ///< as the user gave it, perhaps a link
        internal::StagedFile file;
    };
    std::vector<NamedFile> files_;
    std::vector<StreamOutput> streams_;
    std::vector<std::filesystem::path> stale_;
};

/// Writes one file.
/// \throws InputError with one line that names the path
void writeOutputFile(const std::filesystem::path& path, const std::string& bytes,
                     FileContent kind = FileContent::Binary);

/// \throws InputError when a file of this name could not be written or replaced; nothing is changed
void requireWritable(const std::filesystem::path& path);

}  // namespace quorvel::kit
