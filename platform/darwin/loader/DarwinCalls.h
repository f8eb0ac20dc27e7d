#pragma once

/// @file
/// Declares the functions and variables of this process that code for the Mac can import. The name of an
/// import is the name in the Mach-O file, with its leading underscore.

#include <cstdint>
#include <string>
#include <string_view>

namespace macplatform {

/// Returns the address of an import, or 0 if Linux and the platform have no equivalent.
std::uint32_t DarwinImport(const std::string& name);

/// A function or variable of this process that replaces one of the Mac.
struct DarwinCall {
    std::string_view name; ///< The name of the import.
    void* function;
};

} // namespace macplatform
