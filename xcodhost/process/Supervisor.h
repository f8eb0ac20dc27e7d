#pragma once

#include <functional>

namespace xcodhost {

/// Runs `work` in a child process, the supervisor process, and returns its exit status. If a signal kills the
/// supervisor process, the function ends the calling process with the same signal. Forwards SIGINT, SIGTERM
/// and SIGHUP to the supervisor process. If SIGKILL kills the calling process, the kernel sends SIGTERM to
/// the supervisor process, which then kills the processes of the bundle and removes the temporary
/// directories. Throws ToolFault.
int RunInSupervisor(const std::function<int()>& work);

} // namespace xcodhost
