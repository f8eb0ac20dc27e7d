#pragma once

/// Decides which paths are redirected to the startup volume. Every interposed path call uses these functions
/// first.

#include <string>
#include <string_view>

namespace macplatform {

/// Returns whether a startup volume is set. The function uses no object with a constructor, so it may be
/// called before the constructors of this library run.
bool StartupVolumeIsSet();

/// Returns whether `HostPath` redirects the path to the startup volume.
bool IsOnStartupVolume(std::string_view macPath);

/// Returns whether a path of this machine is the directory of the startup volume or begins with that
/// directory. The function compares only the text of the paths.
bool LiesInStartupVolume(std::string_view hostPath);

} // namespace macplatform
