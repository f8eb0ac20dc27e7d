#include "DialogProcess.h"

#include "ExitStatus.h"
#include "process/ChildProcess.h"
#include "process/Interruption.h"

#include <macplatform/FileDescriptor.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace xcodhost {

namespace {

constexpr std::size_t kMostOutput = 65536;

/// A file in memory for one output stream of a program. A pipe would stay open if the program left a child
/// process running.
class Captured {
public:
    Captured() : file(memfd_create("dialog", MFD_CLOEXEC)) {
        if (!file) throw ToolFault::FromErrno("dialog program: cannot create a file for its output");
    }

    int Descriptor() const { return file.Get(); }
    std::string Text() const {
        std::string text(kMostOutput, '\0');
        const ssize_t count = pread(file.Get(), text.data(), text.size(), 0);
        text.resize(count < 0 ? 0 : static_cast<std::size_t>(count));
        return text;
    }

private:
    macplatform::FileDescriptor file;
};

/// A running program. The destructor kills the process group of the program and reaps the program, unless
/// `Wait` has done so.
class RunningDialog {
public:
    explicit RunningDialog(pid_t processId)
        : id(processId), end(static_cast<int>(syscall(SYS_pidfd_open, processId, 0))) {}
    RunningDialog(const RunningDialog&) = delete;
    RunningDialog& operator=(const RunningDialog&) = delete;
    ~RunningDialog() {
        if (id > 0) Reap();
    }

    int Wait(const Interruption& interruption) {
        if (!end) throw ToolFault::FromErrno("dialog program: cannot wait for its end");
        std::array<pollfd, 2> waits{{{end.Get(), POLLIN, 0}, {interruption.Descriptor(), POLLIN, 0}}};
        while (waits[0].revents == 0) {
            if (poll(waits.data(), waits.size(), -1) < 0 && errno != EINTR) {
                throw ToolFault::FromErrno("dialog program: cannot wait for its end");
            }
            interruption.Check();
        }
        return Reap();
    }

private:
    int Reap() { return EndGroup(std::exchange(id, 0)); }

    pid_t id; ///< 0 after the program has been reaped.
    macplatform::FileDescriptor end;
};

/// Executes the command in the child process. Ends the process with 127 if that fails.
[[noreturn]] void become(const std::vector<std::string>& command, const Captured& output,
                         const Captured& errors, pid_t parent, const Interruption& interruption) {
    setpgid(0, 0); // Ctrl-C on the terminal then signals the tool only
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(127); // the parent died before prctl
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (nothing < 0 || dup2(nothing, STDIN_FILENO) < 0 || dup2(output.Descriptor(), STDOUT_FILENO) < 0 ||
        dup2(errors.Descriptor(), STDERR_FILENO) < 0) {
        _exit(127);
    }
    interruption.ResetInChild();
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    execv(arguments[0], arguments.data());
    _exit(127);
}

std::string lastLine(std::string text) {
    while (!text.empty() && text.back() == '\n') text.pop_back();
    return text.substr(text.rfind('\n') + 1);
}

} // namespace

DialogResult RunDialog(const std::vector<std::string>& command,
                       const std::vector<std::pair<const char*, const char*>>& environment,
                       const Interruption& interruption) {
    const Captured output;
    const Captured errors;
    const pid_t parent = getpid();
    const pid_t id = fork();
    if (id < 0) throw ToolFault::FromErrno("dialog program: cannot create a process");
    if (id == 0) {
        for (const auto& [name, value] : environment) setenv(name, value, 1);
        become(command, output, errors, parent, interruption);
    }
    setpgid(id, id); // the child calls setpgid too; either process can run first
    const int status = RunningDialog(id).Wait(interruption);
    return {status, output.Text(), lastLine(errors.Text())};
}

} // namespace xcodhost
