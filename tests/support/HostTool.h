#pragma once

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

/// The tool, run as a person runs it: a child process with streams of its own.
struct HostTool {
    int status = 0; ///< As waitpid gives it.
    std::string out;
    std::string err;

    int ExitStatus() const { return WIFEXITED(status) ? WEXITSTATUS(status) : -1; }

    /// The last line of the output.
    std::string Verdict() const {
        const std::size_t end = out.find_last_not_of('\n'), start = out.rfind('\n', end);
        return out.substr(start + 1, end - start);
    }
};

/// The tool's streams by their files: standard input, output and error. "-": no output is open at all.
using StreamFiles = std::array<std::string, 3>;

/// Starts the tool; temporary files go to `scratch` when it is given.
inline pid_t StartHost(std::vector<std::string> arguments, const StreamFiles& files,
                       const std::string& scratch) {
    arguments.insert(arguments.begin(), XCODHOST);
    std::fflush(nullptr); // or the child writes our output a second time
    const pid_t child = fork();
    if (child != 0) return child;
    const rlimit noCore{0, 0}; // crashes are ordered here; they must leave no files
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

/// Standard input holds `input`; standard output goes to the file `output` when it is given.
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

/// With the words of `more` behind the other arguments.
inline HostTool RunHostWith(std::vector<std::string> arguments, const std::string& more,
                            const std::string& scratch = {}) {
    std::istringstream words(more);
    arguments.insert(arguments.end(), std::istream_iterator<std::string>(words), {});
    return RunHost(std::move(arguments), std::string(), scratch);
}
