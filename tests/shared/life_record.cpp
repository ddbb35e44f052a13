// SPDX-License-Identifier: Apache-2.0
// Lives of rulers, drawn from seeds; writes every result, every member and every file's content, and on standard output
// what the library prints. It sees no more of the library than a host does.
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "numbers/member_record.h"
#include "shared/life.h"
#include "support/working_directory.h"

namespace quorvel::test {

namespace {

void clearFolder() {
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        std::filesystem::remove_all(entry.path());
    }
}

int recordLives(const std::string& path, std::uint32_t first, std::uint32_t count) {
    // The line ends are the same on every platform.
    std::ofstream out(path, std::ios::binary);
    MemberRecord record(out, MemberRecord::Members::kAll);
    const WorkingDirectory folder;
    const std::vector<Views> views = drawViews();
    std::uint32_t boxes = 0;
    for (std::uint32_t seed = first; seed < first + count; ++seed) {
        clearFolder();
        Life life(seed, views, record);
        life.live();
        boxes += static_cast<std::uint32_t>(life.boxes());
    }
    out.close();
    if (!out) {
        std::cerr << path << " cannot be written\n";
        return 1;
    }
    std::cerr << count << " lives, " << boxes << " boxes\n";
    if (boxes < count / 2) {
        std::cerr << "too few boxes for a comparison\n";
        return 1;
    }
    return 0;
}

}  // namespace

}  // namespace quorvel::test

int main(int argc, char** argv) {
    try {
        const std::vector<std::string> arguments(argv + 1, argv + argc);
        if (arguments.size() != 3) {
            std::cerr << "usage: life_record OUTPUT FIRST COUNT\n";
            return 2;
        }
        return quorvel::test::recordLives(arguments[0], static_cast<std::uint32_t>(std::stoul(arguments[1])),
                                          static_cast<std::uint32_t>(std::stoul(arguments[2])));
    } catch (const std::exception& error) {
        std::cerr << "life_record: " << error.what() << '\n';
        return 1;
    }
}
