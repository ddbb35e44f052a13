// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quorvel::internal {

/// The most that is read of a text file, bytes. The library's own files have some hundred.
constexpr std::size_t kLongestText = 65536;

/// Reads a text file, or its first kLongestText bytes. A word that would be cut at this bound is left out.
/// \param path in the platform's encoding, relative to the working directory
/// \return the text; nothing when the file cannot be opened or is not a regular file. Devices and pipes are not opened,
///         because they may never end or never answer.
std::optional<std::string> readTextFile(const std::string& path);

/// Reads a text file whole.
/// \return the text; nothing when readTextFile() gives nothing or the file is longer than kLongestText
std::optional<std::string> readWholeTextFile(const std::string& path);

/// Creates a folder whose parent exists, unless something of that name already exists.
void ensureFolder(const std::string& path);

/// Writes a value with six digits after the point, as printf's "%f" does in the C locale. A host that has switched
/// to a locale with a decimal comma still writes files that every other host can read.
std::string sixDecimals(float value);

/// Reads decimal numbers one after the other from a text, as scanf's "%f" and "%d" do in the C locale: white space
/// before a number is skipped, and the next read starts right after the number. A number that does not fit its type is
/// not read; for such a number scanf promises nothing.
class DecimalReader {
public:
    /// \param text must outlive the reader
    explicit DecimalReader(std::string_view text) : rest_(text) {}

    /// \param[out] value unchanged when no number follows, or one that does not fit a float; inf and nan are numbers
    /// \return whether a number was read
    bool read(float& value);
    /// \param[out] value unchanged when no whole number follows, or one that does not fit an int
    /// \return whether a number was read
    bool read(int& value);

    /// \return the word that is read next; empty at the end of the text
    std::string nextWord() const;
    /// \return whether a number that was just read was the whole of its word
    bool atWordEnd() const;
    /// \return whether only white space is left
    bool atEnd() const { return nextWord().empty(); }

private:
    std::string_view rest_;
};

}  // namespace quorvel::internal
