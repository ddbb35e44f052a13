// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <thread>

#ifdef __linux__
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace quorvel::test {

#ifdef __linux__

/// Gives up, for this thread and the programs that it starts, the rights by which root passes over the permissions of
/// files. Other users have none to give up.
inline void obeyPermissions() {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct sets[_LINUX_CAPABILITY_U32S_3] = {};
    if (syscall(SYS_capget, &header, sets) != 0) {
        return;
    }
    for (const int number : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH}) {
        const auto right = static_cast<unsigned>(number);
        prctl(PR_CAPBSET_DROP, right);
        for (auto* set : {&sets[0].effective, &sets[0].permitted, &sets[0].inheritable}) {
            *set &= ~(1U << right);
        }
    }
    syscall(SYS_capset, &header, sets);
}

#else

inline void obeyPermissions() {}

#endif

/// Runs a function as a user to whom the permissions of files apply, also when root runs the tests, as in containers. A
/// thread cannot get root's rights back, so the function runs on a new thread.
template <typename Work>
void asOrdinaryUser(Work work) {
    std::thread thread([&] {
        obeyPermissions();
        work();
    });
    thread.join();
}

}  // namespace quorvel::test
