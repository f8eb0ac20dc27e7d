#include "Supervisor.h"

#include "ChildProcess.h"
#include "ExitStatus.h"
#include "Interruption.h"

#include <macplatform/FileDescriptor.h>

#include <array>
#include <csignal>
#include <optional>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace xcodhost {

namespace {

/// Forwards the signals until the supervisor process has ended.
void waitForSupervisor(pid_t supervisor, const Interruption& interruption) {
    const macplatform::FileDescriptor end(static_cast<int>(syscall(SYS_pidfd_open, supervisor, 0)));
    std::array<pollfd, 2> waits{{{end.Get(), POLLIN, 0}, {interruption.Descriptor(), POLLIN, 0}}};
    while (end && waits[0].revents == 0) {
        poll(waits.data(), waits.size(), -1);
        try {
            interruption.Check();
        } catch (const Interrupted& interrupted) {
            kill(supervisor, interrupted.signal);
        }
    }
}

} // namespace

int RunInSupervisor(const std::function<int()>& work) {
    SetSignalEffect(SIGCHLD, SIG_DFL); // if SIGCHLD is ignored, the status of the child is lost
    std::optional<Interruption> interruption(std::in_place);
    const pid_t parent = getpid();
    const pid_t supervisor = fork();
    if (supervisor < 0) throw ToolFault::FromErrno("supervisor process: cannot create a process");
    if (supervisor == 0) {
        prctl(PR_SET_PDEATHSIG, SIGTERM);
        interruption.reset();
        if (getppid() != parent) _exit(70); // the parent died before prctl
        _exit(work());
    }
    waitForSupervisor(supervisor, *interruption);
    const int status = WaitFor(supervisor);
    if (WIFSIGNALED(status)) EndBySignal(WTERMSIG(status));
    return WEXITSTATUS(status);
}

} // namespace xcodhost
