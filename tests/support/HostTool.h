#pragma once

/// Declares functions that run the tool as a user does: in a child process with its own standard streams.

#include "TemporaryFolder.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

/// The result of a run of the tool.
struct HostTool {
    int status = 0; ///< The status from waitpid.
    std::string out;
    std::string err;

    /// Returns the exit status, or -1 if a signal killed the tool.
    int ExitStatus() const { return WIFEXITED(status) ? WEXITSTATUS(status) : -1; }

    /// Returns the last line of the output.
    std::string Verdict() const {
        const std::size_t end = out.find_last_not_of('\n'), start = out.rfind('\n', end);
        return out.substr(start + 1, end - start);
    }
};

/// The paths of the files for standard input, standard output and standard error. The path "-" closes
/// standard output.
using StreamFiles = std::array<std::string, 3>;

/// Starts the tool and returns its process id. `scratch` is the directory for temporary files, or empty for
/// the default.
inline pid_t StartHost(std::vector<std::string> arguments, const StreamFiles& files,
                       const std::string& scratch) {
    arguments.insert(arguments.begin(), XCODHOST);
    std::fflush(nullptr); // otherwise the child writes the buffered output a second time
    const pid_t child = fork();
    if (child != 0) return child;
    const rlimit noCore{0, 0}; // deliberate crashes must leave no files
    setrlimit(RLIMIT_CORE, &noCore);
    if (!scratch.empty()) setenv("TMPDIR", scratch.c_str(), 1);
    bool isOpen = std::freopen(files[0].c_str(), "r", stdin) && std::freopen(files[2].c_str(), "w", stderr);
    isOpen = isOpen &&
             (files[1] == "-" ? close(STDOUT_FILENO) == 0 : !!std::freopen(files[1].c_str(), "w", stdout));
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    if (isOpen) execv(argv[0], argv.data());
    _exit(127);
}

/// Runs the tool and waits for its end. `input` is the contents of standard input. If `output` is not empty,
/// the tool writes standard output to this path, and `out` of the result is empty.
inline HostTool RunHost(std::vector<std::string> arguments, const std::string& input = {},
                        const std::string& scratch = {}, const std::string& output = {}) {
    const TemporaryFolder streams;
    const std::string in = streams.Write("in", input);
    const std::string out = output.empty() ? streams.Write("out") : output;
    const std::string err = streams.Write("err");
    HostTool result;
    waitpid(StartHost(std::move(arguments), {in, out, err}, scratch), &result.status, 0);
    result.out = output.empty() ? ReadBytes(out) : "";
    result.err = ReadBytes(err);
    return result;
}

/// Runs the tool with `arguments`, followed by the words of `more`.
inline HostTool RunHostWith(std::vector<std::string> arguments, const std::string& more,
                            const std::string& scratch = {}) {
    std::istringstream words(more);
    arguments.insert(arguments.end(), std::istream_iterator<std::string>(words), {});
    return RunHost(std::move(arguments), std::string(), scratch);
}
