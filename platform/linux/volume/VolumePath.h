#pragma once

/// Which paths lie on the startup volume: what the interposed path calls ask before anything else.

#include <string>
#include <string_view>

namespace macplatform {

/// Whether a startup volume is set. Needs no initialised object, so it may be asked before this library's
/// constructors run.
bool StartupVolumeIsSet();

/// Whether `HostPath` would look for the path on the startup volume.
bool IsOnStartupVolume(std::string_view macPath);

/// Whether a path of this machine is the startup volume's folder or lies in it, by its text.
bool LiesInStartupVolume(std::string_view hostPath);

} // namespace macplatform
