// SPDX-License-Identifier: Apache-2.0
#include "commands/progress_bar.h"

#include <cstdio>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

#include "kit/account/text_format.h"
#include "kit/input/muted_errors.h"

namespace quorvel::command {

using namespace kit;

bool standardErrorIsTerminal() {
#ifdef _WIN32
    return _isatty(_fileno(stderr)) != 0;
#else
    return isatty(STDERR_FILENO) != 0;
#endif
}

std::string progressText(std::size_t done, std::size_t total, double seconds, int width) {
    const double share = total == 0 ? 1.0 : static_cast<double>(done) / static_cast<double>(total);
    const auto filled = static_cast<std::size_t>(share * width);
    const std::string bar = std::string(filled, '#') + std::string(static_cast<std::size_t>(width) - filled, '.');
    std::string text = "[" + bar + "] " + std::to_string(done) + " of " + std::to_string(total);
    if (done > 0 && seconds > 0.0) {
        const double rate = static_cast<double>(done) / seconds;
        text += ", " + fixed(rate, rate < 10.0 ? 1 : 0) + "/s, " + fixed(static_cast<double>(total - done) / rate, 0) +
                " s left";
    }
    return text;
}

ProgressBar::ProgressBar(std::size_t total) : total_(total), visible_(standardErrorIsTerminal()) {}

void ProgressBar::hide() {
    if (shown_ > 0) {
        printPastMuting('\r' + std::string(shown_, ' ') + '\r');
        shown_ = 0;
    }
}

void ProgressBar::show(std::size_t done) {
    if (!visible_) {
        return;
    }
    constexpr int kBarWidth = 30;
    const std::chrono::duration<double> elapsed = Clock::now() - start_;
    const std::string text = progressText(done, total_, elapsed.count(), kBarWidth);
    hide();
    printPastMuting(text);
    shown_ = text.size();
}

}  // namespace quorvel::command
