// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace quorvel::internal {

// Operations that the standard library does not offer. Paths are narrow strings in the platform's encoding: bytes on
// Linux, the active code page on Windows. std::fstream and OpenCV read them in the same way. std::filesystem::path
// would decode them differently on Windows.

/// \return whether a file, a folder or anything else of this name exists
bool pathExists(const std::string& path);

/// \return whether a folder of this name exists
bool isFolder(const std::string& path);

/// \return whether this is a regular file, after following links. Folders, devices and pipes are not;
///         reading a device or a pipe may never end or never begin.
bool isPlainFile(const std::string& path);

/// \return whether a file may be put here: either nothing exists at this path, or a regular file that this process may
///         write
bool mayReplace(const std::string& path);

/// \return the path at the end of a chain of symbolic links, which need not exist; the path itself when it is not a
///         link; nothing when the links lead to themselves
std::optional<std::string> linkTarget(const std::string& path);

/// \return the path without its last name, with the separator at the end; empty for a name without a folder
std::string folderOf(const std::string& path);

/// \param folder as folderOf() gives it
/// \return the names in a folder; none when it cannot be read
std::vector<std::string> namesIn(const std::string& folder);

/// Waits a moment for a file that another program has open. Only on Windows one program can keep others from opening or
/// replacing a file. Virus scanners do so for moments, and so does a program that is just replacing the file.
/// \param tries made so far without success
/// \return whether to try again: on Windows for about a second in all, elsewhere never
bool awaitRelease(int tries);

/// Waits until a file's content is on the disk, so that a loss of power cannot take it.
/// \return whether the content is on the disk
bool flushFile(const std::string& path);

/// Gives a file the permissions of another file; does nothing on Windows.
void copyPermissions(const std::string& from, const std::string& to);

/// Renames the file `from` to `to` in one step and replaces the old `to`. A program that opens `to` at the same time
/// gets either the complete old file or the complete new one.
/// \return 0 when it was renamed; if not, both files are unchanged, and this is the number of the system's error, for
///         std::system_category()
int moveOver(const std::string& from, const std::string& to);

void removeFile(const std::string& path);

/// \return a number that no other running process has
unsigned long processNumber();

/// \return whether a process of this number is running; true also when the system does not tell
bool isRunning(unsigned long process);

/// Creates a folder whose parent exists.
/// \return whether it was created; false also when something of that name already exists
bool makeFolder(const std::string& path);

/// \param time seconds since the epoch
/// \return the time in the local time zone as it is set now; safe on several threads, unlike std::localtime
std::tm localTime(std::time_t time);

}  // namespace quorvel::internal
