// SPDX-License-Identifier: Apache-2.0
#include "commands/app.h"

#include <filesystem>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include <opencv2/core/utils/logger.hpp>

#include "commands/bench_command.h"
#include "commands/calibrate_command.h"
#include "commands/capture_command.h"
#include "commands/exit_code.h"
#include "commands/measure_command.h"
#include "commands/param_command.h"
#include "commands/replay_command.h"
#include "commands/simulate_command.h"
#include "commands/standard_streams.h"
#include "kit/account/text_format.h"
#include "kit/input/input_error.h"
#include "ruler/ruler.h"

namespace quorvel::command {

using namespace kit;

namespace {

std::string versionText() {
    return "quorvel " + internal::Ruler::version();
}

/// Shortens a long error line, so that a file with one long word does not fill the screen. The beginning says what is
/// wrong, the end what to do.
std::string shortened(const std::string& line) {
    constexpr std::size_t kBeginning = 1000;
    constexpr std::size_t kEnd = 300;
    return line.size() <= kBeginning + kEnd ? line
                                            : line.substr(0, kBeginning) + " ... " + line.substr(line.size() - kEnd);
}

int fail(const std::string& message) {
    std::cerr << "quorvel: " << shortened(oneLine(message)) << '\n';
    return kWrongInput;
}

void changeFolder(const std::vector<std::string>& folders) {
    for (const std::string& folder : folders) {
        std::error_code error;
        std::filesystem::current_path(folder, error);
        if (error) {
            throw InputError("-C " + folder + ": there is no such folder; check the path");
        }
    }
}

/// Refuses empty option values. An unset variable in a script gives one, and it would look like an option left out.
void refuseEmptyValues(CLI::App& app) {
    std::vector<CLI::App*> parsers{&app};
    while (!parsers.empty()) {
        CLI::App* const parser = parsers.back();
        parsers.pop_back();
        for (CLI::Option* option : parser->get_options([](const CLI::Option* o) { return o->get_type_size() > 0; })) {
            option->check([](const std::string& value) { return value.empty() ? "the value is empty" : ""; });
        }
        for (CLI::App* subcommand : parser->get_subcommands([](const CLI::App*) { return true; })) {
            parsers.push_back(subcommand);
        }
    }
}

int runChosen(const std::vector<Subcommand>& subcommands) {
    for (const Subcommand& subcommand : subcommands) {
        if (subcommand.parser->parsed()) {
            return subcommand.run();
        }
    }
    return kWrongInput;
}

/// Name of the chosen subcommand, to point at its help.
std::string helpHint(const CLI::App& app) {
    std::string name = "quorvel";
    for (const CLI::App* chosen : app.get_subcommands()) {
        name += " " + chosen->get_name();
    }
    return " (" + name + " --help shows an example)";
}

int parseAndRun(CLI::App& app, const std::vector<Subcommand>& subcommands, const std::vector<std::string>& folders,
                int argc, const char* const* argv) {
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& request) {
        return app.exit(request);  // --help or --version
    }
    changeFolder(folders);
    return runChosen(subcommands);
}

}  // namespace

int runProgram(int argc, const char* const* argv) {
    claimStandardStreams();
    // The command explains a failed read with its own line; OpenCV's lines are switched off.
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    CLI::App app("quorvel: a depth camera that looks down on a flat surface becomes a ruler", "quorvel");
    std::vector<std::string> folders;
    app.add_option("-C", folders, "change to this folder first; other paths are relative to it")
        ->type_name("DIR")
        ->allow_extra_args(false);
    app.set_version_flag("--version", versionText());
    app.require_subcommand(1);
    const std::vector<Subcommand> subcommands{addSimulateCommand(app), addCalibrateCommand(app), addMeasureCommand(app),
                                              addReplayCommand(app),   addCaptureCommand(app),   addParamCommand(app),
                                              addBenchCommand(app)};
    app.footer(
        "Example:\n"
        "  quorvel simulate --preset parcel --out parcel");
    refuseEmptyValues(app);
    try {
        const int code = parseAndRun(app, subcommands, folders, argc, argv);
        requireWritten(std::cout);
        return code;
    } catch (const CLI::ParseError& error) {
        return fail(error.what() + helpHint(app));
    } catch (const InputError& error) {
        return fail(error.what());
    } catch (const cv::Exception& error) {
        return fail("an image operation failed: " + error.err);
    } catch (const std::bad_alloc&) {
        return fail("there is not enough memory; give smaller pictures, or fewer frames");
    } catch (const std::exception& error) {
        return fail(error.what());
    }
}

}  // namespace quorvel::command
