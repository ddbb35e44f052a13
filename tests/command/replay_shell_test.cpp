// SPDX-License-Identifier: Apache-2.0
// The command among other programs of a Unix shell: pipes, signals, a terminal.
#include <algorithm>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "replay_tree.h"
#include "shell_run.h"

namespace quorvel::command {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;

class ReplayShell : public ReplayTree {
protected:
    static CommandRun shell(const std::string& line) { return runShell(*folder_, line); }

    /// The rows of one run over all captures, in any order.
    static void expectRowsOfTheWholeTree(const CommandRun& run) {
        std::vector<Json> expected = lines(replay("log --area 0.5 --jsonl").output);
        std::vector<Json> rows = lines(run.output);
        std::sort(expected.begin(), expected.end());
        std::sort(rows.begin(), rows.end());
        EXPECT_EQ(rows, expected) << run.text();
    }
};

TEST_F(ReplayShell, ReadsAListOfPathsFromStandardInput) {
    const CommandRun run = shell("find log -mindepth 2 -type d | sort | $Q replay - --area 0.5 --jsonl");
    EXPECT_EQ(run.exitCode, 0) << run.text();
    EXPECT_EQ(run.output, replay("log --area 0.5 --jsonl").output);
    const CommandRun nothing = shell("$Q replay -");
    EXPECT_EQ(nothing.exitCode, 0) << nothing.text();
    EXPECT_THAT(nothing.output, HasSubstr("0 captures")) << nothing.text();
}

TEST_F(ReplayShell, XargsSplitsTheWork) {
    const CommandRun run = shell(
        "find log -mindepth 2 -type d -print0 | sort -z | xargs -0 -n 2 $Q replay --area 0.5 --jsonl > all.jsonl\n"
        "sort all.jsonl");
    expectRowsOfTheWholeTree(run);
}

TEST_F(ReplayShell, GnuParallelSplitsTheWork) {
    if (!isInstalled("parallel")) {
        GTEST_SKIP() << "GNU parallel is not installed; scripts/setup.sh does it";
    }
    const CommandRun run = shell(
        "find log -mindepth 2 -type d | parallel --will-cite --jobs 2 --pipe -N 2 $Q replay - --area 0.5 --jsonl");
    expectRowsOfTheWholeTree(run);
}

TEST_F(ReplayShell, ASliceOfAListIsAJobOfAnArray) {
    const CommandRun run = shell(
        "find log -mindepth 2 -type d | sort > list\n"
        "for TASK in 1 2; do awk -v n=2 -v k=$TASK 'NR % n == k % n' list | $Q replay - --area 0.5 --jsonl > "
        "part.$TASK; done\n"
        "cat part.1 part.2");
    expectRowsOfTheWholeTree(run);
}

TEST_F(ReplayShell, InterruptingEndsWithTheSummarySoFar) {
    // Thousands of captures, so that the signal comes in their midst.
    const CommandRun run = shell(
        "for i in $(seq 3000); do echo log/2026-11/2026-11-01-10-00-00; done > many\n"
        "mkfifo lines\n"
        "$Q replay - --area 0.5 --jsonl --jobs 2 < many > lines &\n"
        "pid=$!\n"
        "exec 3< lines\n"
        "head -n 3 <&3 > /dev/null\n"
        "kill -INT $pid\n"
        "cat <&3 > rest\n"
        "wait $pid\n"
        "echo $?");
    EXPECT_EQ(run.output, "130\n") << run.text();
    EXPECT_THAT(run.errors, HasSubstr("interrupted after ")) << run.text();
    EXPECT_THAT(run.errors, HasSubstr(" of 3000 captures\n")) << run.text();
    EXPECT_THAT(run.errors, HasSubstr(" 0 unreadable; 0 changed")) << run.text();
    const std::string rest = folder_->read("rest");
    EXPECT_THAT(rest, EndsWith("}\n")) << "the last line is whole";
}

TEST_F(ReplayShell, ShowsProgressOnATerminalOnly) {
    if (!isInstalled("script")) {
        GTEST_SKIP() << "script(1) makes the terminal for this test and is not installed";
    }
    const CommandRun terminal = shell("script -qec \"$Q replay log --area 0.5 --csv > rows.csv\" /dev/null");
    EXPECT_THAT(terminal.output, HasSubstr("##] 5 of 5")) << terminal.text();
    EXPECT_THAT(folder_->read("rows.csv"), Not(HasSubstr("#"))) << "the bar stays out of the rows";
    const CommandRun piped = replay("log --area 0.5 --csv");
    EXPECT_THAT(piped.output + piped.errors, Not(HasSubstr("#")));
}

}  // namespace
}  // namespace quorvel::command
