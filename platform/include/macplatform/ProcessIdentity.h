#pragma once

/// @file
/// Declares functions that override the properties of this process and this machine that the platform
/// returns. Tests and tools use them.

#include <cstdint>
#include <optional>
#include <string>

#pragma GCC visibility push(default)
namespace macplatform {

/// Sets the name that the Process Manager returns. An empty name restores the file name of the executable.
void SetProcessName(const std::string& name);

/// Sets the value of "hw.cpufrequency" in hertz. With 0, the name "hw.cpufrequency" is unknown.
/// `std::nullopt` restores the value from the kernel.
void SetCpuFrequency(std::optional<std::uint64_t> hertz);

/// Sets the result of MPProcessors. `std::nullopt` restores the number from the kernel.
void SetProcessorCount(std::optional<unsigned> count);

} // namespace macplatform
#pragma GCC visibility pop
