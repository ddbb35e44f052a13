// SPDX-License-Identifier: Apache-2.0
#include "files/text_file.h"

#include <fstream>
#include <ios>

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

}  // namespace quorvel::internal
