// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <ctime>
#include <string>

namespace quorvel::internal {

// What the standard library leaves to the platform. Paths are narrow strings as the platform's own calls take them,
// bytes on Linux and the active code page on Windows, like those of std::fstream and OpenCV; std::filesystem::path
// would read them otherwise there.

/// \return whether a file, a folder or anything else of this name exists
bool pathExists(const std::string& path);

/// \return whether a folder of this name exists
bool isFolder(const std::string& path);

/// \return whether this is a file of the disk, links followed: no folder, device or pipe, which may never end or never
///         answer
bool isPlainFile(const std::string& path);

/// Whether new content may take this place: nothing is there, or a plain file that this process may write.
bool mayReplace(const std::string& path);

/// \return the path that a chain of symbolic links ends at, whether or not something is there; the path itself when it
///         is no link
std::string linkTarget(const std::string& path);

/// Waits a moment for a file that somebody else has open. Only Windows lets one program keep others from opening or
/// replacing a file; virus scanners and whoever puts a file in its place do so for moments.
/// \param tries made so far without success
/// \return whether to try again: on Windows for a second in all, elsewhere never
bool awaitRelease(int tries);

/// Waits until a file's content is on the disk, so that a loss of power cannot take it.
/// \return whether it is
bool flushFile(const std::string& path);

/// Gives a file the permissions of another, where the platform has such.
void copyPermissions(const std::string& from, const std::string& to);

/// Puts a file in another's place in one step: who opens `to` meanwhile gets the old file or the new one.
/// \return whether it was done; else both are as they were
bool moveOver(const std::string& from, const std::string& to);

void removeFile(const std::string& path);

/// \return a number that no other running process has
unsigned long processNumber();

/// Creates a folder whose parent exists.
/// \return whether it was created; false also when something of that name was there already
bool makeFolder(const std::string& path);

/// \param time seconds since the epoch
/// \return the time in the local time zone as it is set at this moment; safe on several threads, unlike std::localtime
std::tm localTime(std::time_t time);

}  // namespace quorvel::internal
