// SPDX-License-Identifier: Apache-2.0
#include "numbers/member_record.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <set>
#include <utility>
#include <vector>

#include "support/members.h"

namespace quorvel::test {

namespace {

constexpr std::uint32_t kOneNan = 0x7fc00000U;

std::uint32_t bitsOf(float number) {
    if (number != number) {
        return kOneNan;
    }
    std::uint32_t bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

std::string hex(std::uint64_t number, int digits) {
    std::string text(static_cast<std::size_t>(digits), '0');
    for (auto digit = text.rbegin(); digit != text.rend(); ++digit) {
        *digit = "0123456789abcdef"[number % 16];
        number /= 16;
    }
    return text;
}

/// 64-bit FNV-1a.
class Hash {
public:
    void add(std::uint8_t byte) { state_ = (state_ ^ byte) * 0x100000001b3ULL; }
    void add(const std::uint8_t* bytes, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            add(bytes[i]);
        }
    }
    void add(float number) {
        const std::uint32_t bits = bitsOf(number);
        for (unsigned shift = 0; shift < 32; shift += 8) {
            add(static_cast<std::uint8_t>(bits >> shift));
        }
    }
    std::uint64_t value() const { return state_; }

private:
    std::uint64_t state_ = 0xcbf29ce484222325ULL;
};

std::string text(float number) {
    return hex(bitsOf(number), 8);
}

std::string text(int number) {
    return std::to_string(number);
}

std::string text(const cv::Mat& image) {
    return imageText(image);
}

std::string text(const cv::Point& point) {
    return text(point.x) + ' ' + text(point.y);
}

std::string text(const cv::Point2f& point) {
    return text(point.x) + ' ' + text(point.y);
}

std::string text(const cv::Rect& region) {
    return text(region.tl()) + ' ' + text(region.width) + ' ' + text(region.height);
}

std::string text(const cv::Vec3f& v) {
    return text(v[0]) + ' ' + text(v[1]) + ' ' + text(v[2]);
}

std::string text(const std::string& characters) {
    return characters;
}

template <typename Entry>
std::string text(const std::vector<Entry>& entries) {
    std::string all = text(static_cast<int>(entries.size())) + " entries";
    for (const Entry& entry : entries) {
        all += "; " + text(entry);
    }
    return all;
}

/// Names and values, in the order in which they are written.
using Lines = std::vector<std::pair<std::string, std::string>>;

template <typename Value>
void addLines(Lines& lines, const std::string& name, const Value& value) {
    lines.emplace_back(name, text(value));
}

void addLines(Lines& lines, const std::string& name, const MeasureResult& result) {
    forEachField([&](const char* field, auto pointer) { addLines(lines, name + '.' + field, result.*pointer); });
}

void addLines(Lines& lines, const std::string& name, const cv::Point (&points)[3]) {
    for (int i = 0; i < 3; ++i) {
        addLines(lines, name + '[' + std::to_string(i) + ']', points[i]);
    }
}

Lines::iterator find(Lines& lines, const std::string& name) {
    return std::find_if(lines.begin(), lines.end(), [&](const auto& line) { return line.first == name; });
}

/// Moves a line forward.
void moveBefore(Lines& lines, const std::string& place, const std::string& name) {
    const auto from = find(lines, name);
    std::rotate(find(lines, place), from, from + 1);
}

/// What no call of number_record writes.
bool isLeftOut(const std::string& name) {
    static const std::set<std::string> kNames{"auxImage",       "calibImage", "reservedValue",
                                              "offlineMode",    "paramDir",   "calFilePath",
                                              "backgroundPath", "offlineDir", "debugMode"};
    return name.rfind("spare", 0) == 0 || kNames.count(name) != 0;
}

}  // namespace

std::string imageText(const cv::Mat& image) {
    Hash hash;
    for (int row = 0; row < image.rows; ++row) {
        if (image.depth() == CV_32F) {
            for (int i = 0; i < image.cols * image.channels(); ++i) {
                hash.add(image.ptr<float>(row)[i]);
            }
        } else {
            hash.add(image.ptr(row), static_cast<std::size_t>(image.cols) * image.elemSize());
        }
    }
    return "type " + text(image.type()) + ", " + text(image.cols) + " x " + text(image.rows) + ", " +
           hex(hash.value(), 16);
}

void MemberRecord::begin(const std::string& title) {
    last_.clear();
    out_ << "# " << title << '\n';
}

void MemberRecord::value(const std::string& name, const std::string& text) {
    out_ << "  " << name << ": " << text << '\n';
}

void MemberRecord::value(const std::string& name, float number) {
    value(name, text(number));
}

void MemberRecord::value(const std::string& name, int number) {
    value(name, text(number));
}

void MemberRecord::member(const std::string& name, const std::string& text) {
    std::string& last = last_[name];
    if (last != text) {
        out_ << "    " << name << " = " << text << '\n';
        last = text;
    }
}

void MemberRecord::members(const std::string& call, const Quorvel& ruler) {
    out_ << "  after " << call << '\n';
    Lines lines;
    forEachMember([&](const std::string& name, auto pointer) {
        if (everything_ || !isLeftOut(name)) {
            addLines(lines, name, ruler.*pointer);
        }
    });
    // Records of older versions have these here.
    moveBefore(lines, "calibrationRoI", "refPlaneOffset");
    moveBefore(lines, "fx", "cameraTypeSet");
    moveBefore(lines, "productType", "minObjectPixels");
    for (const auto& [name, text] : lines) {
        member(name, text);
    }
}

}  // namespace quorvel::test
