#include "ChildProcess.h"

#include "ExitStatus.h"
#include "Interruption.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>

namespace xcodhost {

namespace {

/// Returns the children that have not been reaped. Every other child of this process is an orphan that this
/// process has inherited.
std::vector<pid_t>& unreapedChildren() {
    static std::vector<pid_t> gChildren;
    return gChildren;
}

/// Kills and reaps the orphans. Repeats this, because the children of a killed orphan become orphans. The
/// number of rounds is limited, because a bundle can start processes faster than this function kills them.
void endOrphans() {
    constexpr int rounds = 1000;
    const auto& known = unreapedChildren();
    for (int round = 0; round < rounds; ++round) {
        bool hasOrphan = false;
        for (const pid_t child : ChildrenOfThisProcess()) {
            if (std::find(known.begin(), known.end(), child) != known.end()) continue;
            hasOrphan = true;
            kill(child, SIGKILL);
            WaitFor(child);
        }
        if (!hasOrphan) return;
    }
}

/// Makes standard input empty, and redirects standard output and standard error to `output`. Returns false on
/// an error.
bool settleStreams(int output) {
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (nothing < 0 || dup2(nothing, STDIN_FILENO) < 0) return false;
    if (nothing != STDIN_FILENO) close(nothing);
    if (output >= 0 && dup2(output, STDERR_FILENO) < 0) return false;
    return dup2(STDERR_FILENO, STDOUT_FILENO) >= 0;
}

/// Closes the descriptors of the parent except the standard streams and `kept`.
void closeAllBut(int kept) {
    const auto number = static_cast<unsigned>(kept);
    if (number > STDERR_FILENO + 1) close_range(STDERR_FILENO + 1, number - 1, 0);
    close_range(number + 1, ~0U, 0);
}

/// Prepares the child process before the code of the bundle runs.
void settle(const ChildProcess::Streams& streams, pid_t parent, const Interruption& interruption) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    prctl(PR_SET_CHILD_SUBREAPER, 1);   // the orphans of each child are separate from those of other children
    if (getppid() != parent) _exit(70); // the parent died before prctl
    if (!settleStreams(streams.output)) _exit(70);
    closeAllBut(streams.socket);
    interruption.ResetInChild();
}

} // namespace

ChildProcess::ChildProcess(const Streams& streams, const Interruption& interruption,
                           const std::function<void()>& body) {
    // If the caller of the tool ignores SIGCHLD, the status of the child is lost.
    SetSignalEffect(SIGCHLD, SIG_DFL);
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    const pid_t parent = getpid();
    unreapedChildren().reserve(unreapedChildren().size() + 1);
    id = fork();
    if (id < 0) throw ToolFault::FromErrno("child process: cannot create a process");
    if (id == 0) {
        unreapedChildren().clear();
        settle(streams, parent, interruption);
        body();
        _exit(0); // exit() would run the exit handlers of the bundle
    }
    setpgid(id, id); // the child calls setpgid too; either process can run first
    unreapedChildren().push_back(id);
    end = macplatform::FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, id, 0)));
    if (!end) {
        const int error = errno;
        Reap();
        errno = error;
        throw ToolFault::FromErrno("child process: cannot wait for its end");
    }
}

int ChildProcess::Reap() {
    if (isReaped) return status;
    isReaped = true;
    status = EndGroup(id);
    auto& unreaped = unreapedChildren();
    unreaped.erase(std::remove(unreaped.begin(), unreaped.end(), id), unreaped.end());
    endOrphans();
    return status;
}

int WaitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

int EndGroup(pid_t child) {
    kill(-child, SIGKILL);
    kill(child, SIGKILL); // the child may not be in its own group yet
    return WaitFor(child);
}

std::vector<pid_t> ChildrenOfThisProcess() {
    std::vector<pid_t> children;
    std::ifstream list("/proc/thread-self/children");
    for (pid_t child; list >> child;) children.push_back(child);
    return children;
}

} // namespace xcodhost
