#pragma once

#include <functional>

namespace xcodhost {

/// Does the work in a child of this process and answers its exit status; dies of the signal that the child
/// died of. SIGINT, SIGTERM and SIGHUP are handed on. When this process is killed in a way that it cannot see
/// (SIGKILL), the child is told by SIGTERM, so that it ends the bundle's processes and removes its scratch
/// folders all the same.
int RunInSupervisor(const std::function<int()>& work);

} // namespace xcodhost
