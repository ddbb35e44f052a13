// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>
#include <map>
#include <string>

#include <quorvel/quorvel.h>

namespace quorvel::test {

/// Writes what a ruler holds, exactly: floats as their bits, images as a hash of type, size and pixels. A NaN is
/// written as one and the same NaN, since neither its sign nor its payload is a result.
class MemberRecord {
public:
    /// What members() writes: the members that measuring writes, as the records of older versions have them, or all.
    enum class Members { kMeasured, kAll };

    /// \param out open until this object is gone
    explicit MemberRecord(std::ostream& out, Members members = Members::kMeasured)
        : out_(out), everything_(members == Members::kAll) {}

    /// Starts a ruler: the next members() writes every member.
    void begin(const std::string& title);
    /// Writes what a call returned or printed.
    void value(const std::string& name, const std::string& text);
    void value(const std::string& name, float number);
    void value(const std::string& name, int number);
    /// Writes a line for every member that has changed since the last call.
    /// \param call what was called before
    void members(const std::string& call, const Quorvel& ruler);

private:
    void member(const std::string& name, const std::string& text);

    std::ostream& out_;
    bool everything_;
    std::map<std::string, std::string> last_;
};

/// \return type, size and the 64-bit FNV-1a hash of the pixels, row by row
std::string imageText(const cv::Mat& image);

}  // namespace quorvel::test
