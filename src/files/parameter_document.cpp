// SPDX-License-Identifier: Apache-2.0
#include "files/parameter_document.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace quorvel::internal {

namespace {

constexpr std::string_view kSpace = " \t\r";

/// Takes the first line off a text.
std::string_view nextLine(std::string_view& text) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return line;
}

bool startsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

bool isClosedXml(std::string_view document) {
    constexpr std::string_view kEnd = "</opencv_storage>";
    const std::size_t last = document.find_last_not_of(" \t\r\n");
    return last != std::string_view::npos && last + 1 >= kEnd.size() &&
           document.substr(last + 1 - kEnd.size(), kEnd.size()) == kEnd;
}

/// \param line begins with its first character that is no space
bool isYamlKey(std::string_view line) {
    constexpr std::string_view kNameStart = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_\"";
    return kNameStart.find(line.front()) != std::string_view::npos && line.find(':') != std::string_view::npos;
}

/// \param body of a YAML document, behind its "---"
std::string yamlProblem(std::string_view body) {
    std::size_t keyColumn = std::string_view::npos;
    bool ended = false;
    while (!body.empty()) {
        const std::string_view line = nextLine(body);
        const std::size_t column = line.find_first_not_of(kSpace);
        if (column == std::string_view::npos || line[column] == '#') {
            continue;
        }
        if (ended) {
            return "continues after its end";
        }
        if (startsWith(line, "...")) {
            ended = line.find_first_not_of(kSpace, 3) == std::string_view::npos;
            if (ended) {
                continue;
            }
        }
        keyColumn = std::min(keyColumn, column);
        if (column == keyColumn && !isYamlKey(line.substr(column))) {
            return "is not made of names and values";
        }
    }
    return {};
}

/// \return the text after the header; the header ends with "---" or before the first line that is neither directive nor
///         comment
std::string_view yamlBody(std::string_view document) {
    while (!document.empty()) {
        std::string_view rest = document;
        const std::string_view line = nextLine(rest);
        if (startsWith(line, "---") && line.find_first_not_of(kSpace, 3) == std::string_view::npos) {
            return rest;
        }
        const bool header =
            startsWith(line, "%") || startsWith(line, "#") || line.find_first_not_of(kSpace) == std::string_view::npos;
        if (!header) {
            return document;
        }
        document = rest;
    }
    return document;
}

}  // namespace

bool isTooDeep(const std::string& text) {
    constexpr std::ptrdiff_t kMostBrackets = 1000;
    constexpr std::size_t kLongestLine = 1000;
    const std::ptrdiff_t brackets =
        std::count_if(text.begin(), text.end(), [](char c) { return c == '[' || c == '{' || c == '<'; });
    if (brackets > kMostBrackets) {
        return true;
    }
    std::string_view rest = text;
    while (!rest.empty()) {
        if (nextLine(rest).size() > kLongestLine) {
            return true;
        }
    }
    return false;
}

std::string documentProblem(const std::string& text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    std::string_view document = text;
    if (startsWith(document, kByteOrderMark)) {
        document.remove_prefix(kByteOrderMark.size());
    }
    if (document.find('\0') != std::string_view::npos) {
        return "holds a zero byte";
    }
    if (startsWith(document, "<?xml") && !isClosedXml(document)) {
        return "does not end as a document of this kind does";
    }
    return startsWith(document, "%YAML") ? yamlProblem(yamlBody(document)) : std::string();
}

}  // namespace quorvel::internal
