// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdlib>
#include <ctime>
#include <string>

namespace quorvel::test {

/// While this object lives, the process has another time zone. Like a host, it only sets the variable and does not call
/// tzset(), so the code that asks for the local time has to do that.
class TimeZone {
public:
    /// \param name in the form that needs no database, hours west of Greenwich: "UTC0", "XYZ-14"
    explicit TimeZone(const char* name) {
        if (const char* previous = std::getenv("TZ")) {
            wasSet_ = true;
            previous_ = previous;
        }
        set(name);
    }
    ~TimeZone() {
        set(wasSet_ ? previous_.c_str() : nullptr);
#ifndef _WIN32
        tzset();
#endif
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

    /// \return whether this platform has time zones to choose
    static constexpr bool available() {
#ifdef _WIN32
        return false;
#else
        return true;
#endif
    }

private:
    static void set([[maybe_unused]] const char* name) {
#ifndef _WIN32
        if (name != nullptr) {
            setenv("TZ", name, 1);
        } else {
            unsetenv("TZ");
        }
#endif
    }

    bool wasSet_ = false;
    std::string previous_;
};

}  // namespace quorvel::test
