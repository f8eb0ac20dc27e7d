#pragma once

/// @file
/// Finds the functions and variables of this process that Mac code imports. An import has the name that the
/// Mach-O file uses, with its leading underscore.

#include <cstdint>
#include <string>
#include <string_view>

namespace macplatform {

/// Returns the address of an import, or 0 if Linux and the platform have no equivalent.
std::uint32_t DarwinImport(const std::string& name);

/// A function that stands for a function of the Mac.
struct DarwinCall {
    std::string_view name;
    void* function;
};

} // namespace macplatform
