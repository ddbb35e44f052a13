// SPDX-License-Identifier: Apache-2.0
#include "files/text_file.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <fstream>
#include <ios>
#include <system_error>

#include "files/platform.h"

namespace quorvel::internal {

namespace {

/// \return the first bytes of a file, one more than kLongestText at most; nothing when it cannot be opened
std::optional<std::string> readStart(const std::string& path) {
    if (!isPlainFile(path)) {
        return std::nullopt;
    }
    std::ifstream file(path);
    for (int tries = 0; !file.is_open(); ++tries) {
        if (!isPlainFile(path) || !awaitRelease(tries)) {
            return std::nullopt;
        }
        file.open(path);
    }
    std::string text(kLongestText + 1, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

}  // namespace

std::optional<std::string> readTextFile(const std::string& path) {
    std::optional<std::string> text = readStart(path);
    if (text && text->size() > kLongestText) {
        const std::size_t lastSpace = text->find_last_of(" \t\n\v\f\r");
        text->resize(lastSpace == std::string::npos ? 0 : lastSpace);
    }
    return text;
}

std::optional<std::string> readWholeTextFile(const std::string& path) {
    std::optional<std::string> text = readStart(path);
    if (text && text->size() > kLongestText) {
        return std::nullopt;
    }
    return text;
}

void ensureFolder(const std::string& path) {
    if (!pathExists(path)) {
        makeFolder(path);
    }
}

namespace {

constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";
constexpr int kDecimals = 6;
/// The largest float has 39 digits before the point; sign, point and decimals come on top.
constexpr std::size_t kLongestNumber = 64;

void skipSpaceAndPlus(std::string_view& text) {
    const std::size_t start = text.find_first_not_of(kWhiteSpace);
    text.remove_prefix(start == std::string_view::npos ? text.size() : start);
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
}

template <typename Number>
bool readNumber(std::string_view& rest, Number& value) {
    skipSpaceAndPlus(rest);
    const char* const end = rest.data() + rest.size();
    const std::from_chars_result outcome = std::from_chars(rest.data(), end, value);
    rest.remove_prefix(static_cast<std::size_t>(outcome.ptr - rest.data()));
    return outcome.ec == std::errc();
}

}  // namespace

std::string sixDecimals(float value) {
    std::array<char, kLongestNumber> text{};
    const std::to_chars_result outcome = std::to_chars(text.data(), text.data() + text.size(),
                                                       static_cast<double>(value), std::chars_format::fixed, kDecimals);
    return {text.data(), outcome.ptr};
}

bool DecimalReader::read(float& value) {
    return readNumber(rest_, value);
}

bool DecimalReader::read(int& value) {
    return readNumber(rest_, value);
}

bool DecimalReader::atWordEnd() const {
    return rest_.empty() || kWhiteSpace.find(rest_.front()) != std::string_view::npos;
}

std::string DecimalReader::nextWord() const {
    const std::size_t start = rest_.find_first_not_of(kWhiteSpace);
    if (start == std::string_view::npos) {
        return {};
    }
    return std::string(rest_.substr(start, rest_.find_first_of(kWhiteSpace, start) - start));
}

}  // namespace quorvel::internal
