#pragma once

/// @file
/// Declares the loader that runs the Mac's 32-bit Intel code in a 32-bit process on Linux.
///
/// The loader maps the executable of a bundle, binds its imports to functions of the platform and of the C
/// library, registers its unwind entries and calls its initialisers. The loader rejects a file that was
/// linked for a system before Mac OS X 10.6, a file that shares C++ definitions with other images, and a file
/// that imports a function which the platform does not have.
///
/// The code runs with the rights of the process. Callers should therefore load the code in a child process
/// with a time limit.

#include <macplatform/Bundles.h>

#include <string>

namespace macplatform {

/// The loaded code of a bundle.
class MachOCode {
public:
    virtual ~MachOCode() = default;
    /// Returns the address of an export by its name without the leading underscore,
    /// or null if there is no such export.
    virtual void* Symbol(const std::string& name) const = 0;

protected:
    MachOCode() = default;
    MachOCode(const MachOCode&) = delete;
    MachOCode& operator=(const MachOCode&) = delete;
};

/// Returns whether this build can run code for the Mac. Returns true only in builds for 32-bit x86.
bool CanRunMachO();

/// Loads the executable of a bundle and calls its initialisers. Returns null and sets `failure` if the file
/// cannot be read or is rejected. The result is never destroyed and the code is never unmapped, because other
/// code may keep pointers to its functions. Throws std::bad_alloc.
MachOCode* LoadMachO(const std::string& path, BundleFailure& failure);

} // namespace macplatform
