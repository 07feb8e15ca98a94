// What every program does around its commands: arguments, help, failures and their exit codes.
#ifndef TOOLS_COMMON_PROGRAM_H
#define TOOLS_COMMON_PROGRAM_H

#include "report.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <cstdio>
#include <new>
#include <sstream>

// Parses the arguments into a Line, whose `app` takes them, and runs the command it says; `run` returns the
// exit code. Line::no_answer is the exit code for want of memory.
template <class Line, class Run> int run_program(int argc, char** argv, Run run) {
    // A file that grows too large is then an error of its write.
    signal(SIGXFSZ, SIG_IGN);
    try {
        Line line;
        if (argc < 2) {
            fputs(line.app.help().c_str(), stderr);
            return exit_usage;
        }
        try {
            line.app.parse(argc, argv);
        } catch (const CLI::Success& help) {
            std::ostringstream text;
            line.app.exit(help, text, text);
            fputs(text.str().c_str(), stdout);
            finish_output();
            return exit_done;
        } catch (const CLI::ParseError& error) {
            const auto& chosen = line.app.get_subcommands();
            throw failure(exit_usage, std::string(error.what()) + " (see " + program_name + " " +
                                          (chosen.empty() ? "" : chosen.front()->get_name() + " ") +
                                          "--help)");
        }
        return run(line);
    } catch (const failure& f) {
        notice(f.what());
        return f.code;
    } catch (const std::bad_alloc&) {
        notice("out of memory");
        return Line::no_answer;
    } catch (const std::exception& error) {
        notice(error.what());
    }
    return exit_failed;
}

#endif
