// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

namespace quorvel::internal {

/// Writes a value with six digits after the point, as printf's "%f" does in the C locale. A host that has switched
/// to a locale with a decimal comma still writes files that every other host can read.
std::string sixDecimals(float value);

/// Reads decimal numbers one after the other from a text, as scanf's "%f" and "%d" do in the C locale: white space
/// before a number is skipped, and reading goes on right behind it. A number that its type cannot hold, for which scanf
/// promises nothing, counts as no number.
class DecimalReader {
public:
    /// \param text must outlive the reader
    explicit DecimalReader(std::string_view text) : rest_(text) {}

    /// \param[out] value left as it was when no number follows that float holds; inf and nan are numbers
    /// \return whether a number was read
    bool read(float& value);
    /// \param[out] value left as it was when no whole number that int holds follows
    /// \return whether a number was read
    bool read(int& value);

private:
    std::string_view rest_;
};

}  // namespace quorvel::internal
