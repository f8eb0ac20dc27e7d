#pragma once

/// @file
/// Overrides what the platform reports about this process and this machine, for tests and tools.

#include <cstdint>
#include <optional>
#include <string>

#pragma GCC visibility push(default)
namespace macplatform {

/// Sets the name that the Process Manager returns. An empty name restores the file name of the executable.
void SetProcessName(const std::string& name);

/// Sets the value of "hw.cpufrequency" in hertz. 0 makes the name unknown. `std::nullopt` restores the
/// kernel's value.
void SetCpuFrequency(std::optional<std::uint64_t> hertz);

/// Sets the result of MPProcessors. `std::nullopt` restores the kernel's count.
void SetProcessorCount(std::optional<unsigned> count);

} // namespace macplatform
#pragma GCC visibility pop
