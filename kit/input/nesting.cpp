// SPDX-License-Identifier: Apache-2.0
#include "kit/input/nesting.h"

#include <algorithm>
#include <cstddef>

#include "kit/input/input_error.h"

namespace quorvel::kit {

namespace {

/// Valid files have three or four levels. Parsers need some hundred bytes of stack for a level and have megabytes.
constexpr int kDeepest = 100;
/// Spaces and dashes of lists before the first word of a line. Every level of YAML needs at least one of them.
constexpr std::size_t kWidestIndent = 1000;

/// The most brackets that are open at the same time. Brackets within quotes are counted too, because no valid file has
/// many of them.
int deepestBracket(const std::string& text) {
    int depth = 0;
    int deepest = 0;
    for (const char c : text) {
        if (c == '[' || c == '{') {
            deepest = std::max(deepest, ++depth);
        } else if ((c == ']' || c == '}') && depth > 0) {
            --depth;
        }
    }
    return deepest;
}

/// The most tags that are open at the same time.
int deepestTag(const std::string& text) {
    int depth = 0;
    int deepest = 0;
    for (std::size_t at = text.find('<'); at != std::string::npos; at = text.find('<', at + 1)) {
        const std::size_t end = std::min(text.find('>', at), text.size() - 1);
        const char next = at + 1 < text.size() ? text[at + 1] : ' ';
        const bool closesItself = end > at && text[end - 1] == '/';
        if (next == '/') {
            depth = std::max(0, depth - 1);
        } else if (next != '?' && next != '!' && !closesItself) {
            deepest = std::max(deepest, ++depth);
        }
    }
    return deepest;
}

std::size_t widestIndent(const std::string& text) {
    std::size_t widest = 0;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t word = std::min(text.find_first_not_of(" -?:", start), text.size());
        widest = std::max(widest, word - start);
        const std::size_t end = text.find('\n', word);
        start = end == std::string::npos ? text.size() : end + 1;
    }
    return widest;
}

}  // namespace

void requireShallow(const std::string& text, const std::string& path) {
    if (deepestBracket(text) > kDeepest || deepestTag(text) > kDeepest || widestIndent(text) > kWidestIndent) {
        throw InputError(path + ": nests deeper than any file of this kind; check the path");
    }
}

}  // namespace quorvel::kit
