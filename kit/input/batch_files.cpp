// SPDX-License-Identifier: Apache-2.0
#include "kit/input/batch_files.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <map>
#include <string_view>
#include <system_error>

#include "kit/input/input_error.h"

namespace quorvel::kit {

namespace {

bool isDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

/// The run of digits at the start of the text, without leading zeros.
std::string_view leadingNumber(std::string_view text, std::size_t& length) {
    length = 0;
    while (length < text.size() && isDigit(text[length])) {
        ++length;
    }
    const std::string_view digits = text.substr(0, length);
    return digits.substr(std::min(digits.find_first_not_of('0'), digits.size()));
}

/// Orders names as people do: runs of digits count as numbers.
bool naturallyBefore(std::string_view a, std::string_view b) {
    const std::string_view wholeA = a;
    const std::string_view wholeB = b;
    while (!a.empty() && !b.empty()) {
        if (isDigit(a[0]) && isDigit(b[0])) {
            std::size_t lengthA = 0;
            std::size_t lengthB = 0;
            const std::string_view numberA = leadingNumber(a, lengthA);
            const std::string_view numberB = leadingNumber(b, lengthB);
            if (numberA != numberB) {
                return numberA.size() != numberB.size() ? numberA.size() < numberB.size() : numberA < numberB;
            }
            a.remove_prefix(lengthA);
            b.remove_prefix(lengthB);
        } else if (a[0] != b[0]) {
            return a[0] < b[0];
        } else {
            a.remove_prefix(1);
            b.remove_prefix(1);
        }
    }
    // Names that differ in leading zeros only still need an order.
    return a.empty() != b.empty() ? a.empty() : wholeA < wholeB;
}

struct NaturalOrder {
    bool operator()(const std::string& a, const std::string& b) const { return naturallyBefore(a, b); }
};

/// Frames by the common part of their two file names; "*" stands for the word that differs.
using Frames = std::map<std::string, FrameFiles, NaturalOrder>;

constexpr const char* kCommonPlace = "*";

bool isPicture(const std::filesystem::path& path) {
    constexpr std::array<const char*, 5> kEndings{".png", ".tif", ".tiff", ".jpg", ".jpeg"};
    const std::string ending = lowered(path.extension().string());
    return std::find(kEndings.begin(), kEndings.end(), ending) != kEndings.end();
}

std::string replaced(std::string stem, std::size_t at, std::size_t length) {
    return stem.replace(at, length, kCommonPlace);
}

void take(std::string& place, const std::string& path) {
    if (!place.empty()) {
        const auto [first, second] = std::minmax(place, path);
        throw InputError(first + " and " + second + " are the same picture of one frame; keep one of them");
    }
    place = path;
}

/// Adds a picture to its frame; a picture whose name does not name a frame is ignored.
void addPicture(const std::filesystem::path& path, Frames& frames) {
    const std::string stem = lowered(path.stem().string());
    const std::size_t depth = stem.find("depth");
    const std::string colorWord = stem.find("colour") != std::string::npos ? "colour" : "color";
    const std::size_t color = stem.find(colorWord);
    const bool hasDepth = depth != std::string::npos;
    const bool hasColor = color != std::string::npos;
    if (!(hasDepth || hasColor) || stem.find("empty") != std::string::npos) {
        return;
    }
    if (hasDepth && hasColor) {
        throw InputError(path.string() +
                         ": the name says both colour and depth; rename it, or list the frames with --color and "
                         "--depth");
    }
    if (hasDepth) {
        take(frames[replaced(stem, depth, 5)].depth, path.string());
    } else {
        take(frames[replaced(stem, color, colorWord.size())].color, path.string());
    }
}

Frames picturesOf(const std::string& folder) {
    std::error_code error;
    std::filesystem::directory_iterator entries(folder, error);
    if (error) {
        throw InputError("--batch " + folder + ": there is no such readable folder; check the path");
    }
    Frames frames;
    for (const auto& entry : entries) {
        if (entry.is_regular_file(error) && isPicture(entry.path())) {
            addPicture(entry.path(), frames);
        }
    }
    return frames;
}

void requirePartners(const Frames& frames) {
    for (const auto& entry : frames) {
        const FrameFiles& files = entry.second;
        if (files.color.empty()) {
            throw InputError(files.depth +
                             ": there is no colour image of the same name beside it; add it, or list the "
                             "frames with --depth alone");
        }
        if (files.depth.empty()) {
            throw InputError(files.color +
                             ": there is no depth image of the same name beside it; add it, or remove "
                             "the colour image");
        }
    }
}

bool isNumbered(const Frames::value_type& entry) {
    return std::any_of(entry.first.begin(), entry.first.end(), isDigit);
}

}  // namespace

std::vector<FrameFiles> pairFiles(const std::vector<std::string>& colors, const std::vector<std::string>& depths) {
    if (depths.empty()) {
        throw InputError(
            "--depth is required, unless --batch names a folder (quorvel measure --help shows an example)");
    }
    if (!colors.empty() && colors.size() != depths.size()) {
        throw InputError("--color: names " + std::to_string(colors.size()) + " of the frames, and --depth names " +
                         std::to_string(depths.size()) + "; give one colour image for each depth image, or none");
    }
    std::vector<FrameFiles> files(depths.size());
    for (std::size_t i = 0; i < depths.size(); ++i) {
        files[i] = {colors.empty() ? "" : colors[i], depths[i]};
    }
    return files;
}

std::vector<FrameFiles> findFrames(const std::string& folder) {
    Frames frames = picturesOf(folder);
    requirePartners(frames);
    if (std::any_of(frames.begin(), frames.end(), isNumbered)) {
        frames.erase(kCommonPlace);
    }
    if (frames.empty()) {
        throw InputError(
            "--batch " + folder +
            ": holds no pair of pictures such as color_00.png and depth_00.png; name them so, or list them "
            "with --color and --depth");
    }
    std::vector<FrameFiles> files;
    for (const auto& entry : frames) {
        files.push_back(entry.second);
    }
    return files;
}

}  // namespace quorvel::kit
