#pragma once

#include "TemporaryFolder.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

/// The tool, run as a person runs it: a child process with streams of its own.
struct HostTool {
    int status = 0; ///< As waitpid gives it.
    std::string out;
    std::string err;

    int ExitStatus() const { return WIFEXITED(status) ? WEXITSTATUS(status) : -1; }

    /// The last line of the output.
    std::string Verdict() const {
        const std::size_t end = out.empty() ? 0 : out.size() - 1;
        const std::size_t start = out.rfind('\n', end == 0 ? 0 : end - 1);
        return out.substr(start == std::string::npos ? 0 : start + 1,
                          end - (start == std::string::npos ? 0 : start + 1));
    }
};

/// Standard input holds `input`; temporary files go to `scratch` when it is given; standard output goes to
/// the file `output` when it is given, and is nothing open at all for "-".
inline HostTool RunHost(std::vector<std::string> arguments, const std::string& input = {},
                        const std::string& scratch = {}, const std::string& output = {}) {
    const TemporaryFolder streams;
    const std::string in = streams.Write("in", input);
    const std::string out = output.empty() ? streams.Write("out") : output;
    const std::string err = streams.Write("err");
    arguments.insert(arguments.begin(), XCODHOST);
    std::fflush(nullptr); // or the child writes our output a second time
    const pid_t child = fork();
    if (child == 0) {
        const rlimit noCore{0, 0}; // crashes are ordered here; they must leave no files
        setrlimit(RLIMIT_CORE, &noCore);
        if (!scratch.empty()) setenv("TMPDIR", scratch.c_str(), 1);
        if (!std::freopen(in.c_str(), "r", stdin) || !std::freopen(err.c_str(), "w", stderr)) _exit(127);
        if (out == "-") {
            close(STDOUT_FILENO);
        } else if (!std::freopen(out.c_str(), "w", stdout)) {
            _exit(127);
        }
        std::vector<char*> argv;
        for (std::string& argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        execv(argv[0], argv.data());
        _exit(127);
    }
    HostTool result;
    waitpid(child, &result.status, 0);
    result.out = output.empty() ? ReadBytes(out) : "";
    result.err = ReadBytes(err);
    return result;
}
