// SPDX-License-Identifier: Apache-2.0
#include "survival/survival_support.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <sys/wait.h>
#include <unistd.h>

namespace quorvel::test {

Quorvel rulerAbove(int distance) {
    Quorvel ruler(150.0F, 150.0F, kSurvivalWidth / 2.0F, kSurvivalHeight / 2.0F, kSurvivalWidth, kSurvivalHeight, false,
                  "");
    ruler.setProductType(GROUND_GROWING);
    ruler.getCameraFrame(cv::Mat(kSurvivalHeight, kSurvivalWidth, CV_8UC3, cv::Scalar::all(90)), surfaceAt(distance));
    return ruler;
}

cv::Mat surfaceAt(int distance) {
    return {kSurvivalHeight, kSurvivalWidth, CV_16UC1, cv::Scalar(distance)};
}

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

bool isBeside(const std::string& name) {
    const std::string ending = ".new";
    return name.size() > ending.size() && name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
}

bool killedAfter(int delay, const std::function<void()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        work();
        _exit(0);
    }
    usleep(static_cast<useconds_t>(delay));
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

int exitCodeOf(const std::function<bool()>& work) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(work() ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace quorvel::test
