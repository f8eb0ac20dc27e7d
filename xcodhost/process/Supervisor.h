#pragma once

#include <functional>

namespace xcodhost {

/// Runs `work` in a child process, the supervisor process, and returns its exit status. Ends with the same
/// signal if a signal has killed the supervisor process. Forwards SIGINT, SIGTERM and SIGHUP. If SIGKILL
/// kills the calling process, the kernel sends SIGTERM to the supervisor process, which then kills the
/// processes of the bundle and removes the scratch directories. Throws ToolFault.
int RunInSupervisor(const std::function<int()>& work);

} // namespace xcodhost
