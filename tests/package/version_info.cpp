// SPDX-License-Identifier: Apache-2.0
// Prints what Windows reads in a file's version resource, a line each: product name, description, product version,
// file version, and the file version's four numbers.
//   version_info FILE
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>
#include <windows.h>

namespace {

/// A part of the resource, inside its memory; null when it is not there.
const void* part(const std::vector<char>& resource, const std::string& name) {
    void* found = nullptr;
    UINT size = 0;
    const BOOL there = VerQueryValueA(resource.data(), name.c_str(), &found, &size);
    return there != 0 && size > 0 ? found : nullptr;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::cerr << "usage: version_info FILE\n";
        return EXIT_FAILURE;
    }
    std::vector<char> resource(GetFileVersionInfoSizeA(arguments[1], nullptr));
    const auto size = static_cast<DWORD>(resource.size());
    if (size == 0 || GetFileVersionInfoA(arguments[1], 0, size, resource.data()) == 0) {
        std::cerr << arguments[1] << ": no version resource\n";
        return EXIT_FAILURE;
    }
    for (const std::string name : {"ProductName", "FileDescription", "ProductVersion", "FileVersion"}) {
        // US English in UTF-16, the one translation that the resource has.
        const auto* text = static_cast<const char*>(part(resource, "\\StringFileInfo\\040904B0\\" + name));
        std::cout << (text == nullptr ? "(none)" : text) << "\n";
    }
    const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(part(resource, "\\"));
    if (fixed == nullptr) {
        std::cerr << arguments[1] << ": the version resource has no numbers\n";
        return EXIT_FAILURE;
    }
    std::cout << HIWORD(fixed->dwFileVersionMS) << "." << LOWORD(fixed->dwFileVersionMS) << "."
              << HIWORD(fixed->dwFileVersionLS) << "." << LOWORD(fixed->dwFileVersionLS) << "\n";
    return EXIT_SUCCESS;
}
