// SPDX-License-Identifier: Apache-2.0
#include "shell_run.h"

#include <cstdlib>
#include <sys/wait.h>

namespace quorvel::command {

CommandRun runShell(const TemporaryFolder& folder, const std::string& line) {
    folder.write("line.sh",
                 "cd '" + folder.path().string() + "'\nQ='" + std::string(QUORVEL_BINARY) + "'\n" + line + "\n");
    CommandRun run;
    run.line = line;
    const int status = std::system(("bash '" + folder.file("line.sh") + "' > '" + folder.file("line.out") + "' 2> '" +
                                    folder.file("line.err") + "' < /dev/null")
                                       .c_str());
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    run.output = folder.read("line.out");
    run.errors = folder.read("line.err");
    return run;
}

bool isInstalled(const std::string& program) {
    return std::system(("command -v " + program + " > /dev/null 2>&1").c_str()) == 0;
}

}  // namespace quorvel::command
