// SPDX-License-Identifier: Apache-2.0
#include "commands/app.h"

int main(int argc, char** argv) {
    return quorvel::command::runProgram(argc, argv);
}
