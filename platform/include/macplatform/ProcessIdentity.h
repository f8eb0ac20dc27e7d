#pragma once

/// @file
/// What the platform says of this process and machine, where a test or a tool must decide it.

#include <cstdint>
#include <optional>
#include <string>

#pragma GCC visibility push(default)
namespace macplatform {

/// The name that the Process Manager gives instead of the executable's; an empty one restores that.
void SetProcessName(const std::string& name);

/// What "hw.cpufrequency" answers instead of the kernel's figure, in hertz; nothing restores that, 0 makes
/// the name unknown.
void SetCpuFrequency(std::optional<std::uint64_t> hertz);

/// What MPProcessors answers instead of the kernel's count; nothing restores that.
void SetProcessorCount(std::optional<unsigned> count);

} // namespace macplatform
#pragma GCC visibility pop
