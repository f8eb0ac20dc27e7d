#pragma once

#include "Descriptor.h"

#include <functional>
#include <sys/types.h>
#include <vector>

namespace xcodhost {

class Interruption;

/// One child of this process in a process group of its own. Every process that it started and left behind is
/// ended with it, also one that moved to another group or session: this process adopts orphans while it has
/// children.
class ChildProcess {
public:
    /// What the child has from its parent.
    struct Streams {
        int socket = -1; ///< To the parent, both ways.
        int output = -1; ///< For standard output and standard error; -1: both go to our standard error.
    };

    /// Forks; `body` runs in the child, which ends when it returns. Standard input is empty. The child dies
    /// with its parent. Throws ToolFault.
    ChildProcess(const Streams& streams, const Interruption& interruption, const std::function<void()>& body);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() { Reap(); }

    int EndDescriptor() const { return end.Number(); } ///< Readable once the child has ended.

    /// Kills what is left of the group, which does nothing to a child that has ended, and the orphans, and
    /// answers the child's status as waitpid gives it.
    int Reap();

private:
    pid_t id;
    Descriptor end;
    int status = 0;
    bool isReaped = false;
};

/// Waits for the child's end; its status as waitpid gives it.
int WaitFor(pid_t child);

/// Kills a child and its process group, waits for it and answers its status.
int EndGroup(pid_t child);

/// The direct children of this process, as the kernel lists them.
std::vector<pid_t> ChildrenOfThisProcess();

} // namespace xcodhost
