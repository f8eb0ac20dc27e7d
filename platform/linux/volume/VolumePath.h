#pragma once

/// Declares functions that decide whether a path is redirected to the startup volume. Every interposed path
/// call calls them first.

#include <string>
#include <string_view>

namespace macplatform {

/// Returns whether a startup volume is set. The function may be called before the constructors of this
/// library have run, because it uses no object with a constructor.
bool StartupVolumeIsSet();

/// Returns whether `HostPath` redirects a path of the Mac to the startup volume. Compares only the text of
/// the path.
bool IsOnStartupVolume(std::string_view macPath);

/// Returns whether a path of this machine is the directory of the startup volume or is below that directory.
/// Compares only the text of the paths.
bool LiesInStartupVolume(std::string_view hostPath);

} // namespace macplatform
