#pragma once

/// Declares functions that create, kill and reap child processes.

#include <macplatform/FileDescriptor.h>

#include <functional>
#include <sys/types.h>
#include <vector>

namespace xcodhost {

class Interruption;

/// A child of this process, in its own process group. `Reap` also kills every process that the child has
/// started, also in another process group or session. This is possible because this process is the subreaper
/// of its descendants: the kernel makes their orphans children of this process.
class ChildProcess {
public:
    /// The descriptors that the child inherits from its parent.
    struct Streams {
        int socket = -1; ///< The socket to the parent.
        int output = -1; ///< Standard output and standard error. -1: the tool's standard error.
    };

    /// Forks and runs `body` in the child. The child ends when `body` returns or the parent ends. The
    /// standard input of the child is empty. Throws ToolFault.
    ChildProcess(const Streams& streams, const Interruption& interruption, const std::function<void()>& body);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() { Reap(); }

    /// Returns a descriptor that is readable after the end of the child.
    int EndDescriptor() const { return end.Get(); }

    /// Kills and reaps the process group of the child and the orphans of its descendants. Returns the status
    /// of the child as waitpid reports it. A child that had already ended keeps its status.
    int Reap();

private:
    pid_t id;
    macplatform::FileDescriptor end;
    int status = 0;
    bool isReaped = false;
};

/// Waits for the end of the child and returns its status as waitpid reports it.
int WaitFor(pid_t child);

/// Kills a child and its process group, waits for the child and returns its status as waitpid reports it.
int EndGroup(pid_t child);

/// Returns the direct children of the calling thread, as the kernel lists them.
std::vector<pid_t> ChildrenOfThisProcess();

} // namespace xcodhost
