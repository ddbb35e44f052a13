// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <clocale>
#include <locale>
#include <string>

namespace quorvel::test {

/// While it lives, new C++ streams write 1234567.5 as "1.234.567,5".
class CommaStreamLocale {
public:
    CommaStreamLocale() : previous_(std::locale::global(std::locale(std::locale(), new CommaPoint))) {}
    ~CommaStreamLocale() { std::locale::global(previous_); }
    CommaStreamLocale(const CommaStreamLocale&) = delete;
    CommaStreamLocale& operator=(const CommaStreamLocale&) = delete;

private:
    /// Owned by the locale that it is put into.
    struct CommaPoint : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };

    std::locale previous_;
};

/// While it lives, printf and scanf use a decimal comma, if the machine has a locale that says so.
class CommaCLocale {
public:
    CommaCLocale() : previous_(std::setlocale(LC_ALL, nullptr)) {
        for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "German_Germany.1252"}) {
            if (std::setlocale(LC_ALL, name) != nullptr && *std::localeconv()->decimal_point == ',') {
                available_ = true;
                break;
            }
        }
    }
    ~CommaCLocale() { std::setlocale(LC_ALL, previous_.c_str()); }
    CommaCLocale(const CommaCLocale&) = delete;
    CommaCLocale& operator=(const CommaCLocale&) = delete;

    /// \return whether such a locale was found
    bool available() const { return available_; }

private:
    std::string previous_;
    bool available_ = false;
};

}  // namespace quorvel::test
