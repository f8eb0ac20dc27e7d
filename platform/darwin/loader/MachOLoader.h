#pragma once

/// Runs the Mac's 32-bit Intel code in a 32-bit process of this system.
///
/// A bundle's executable is mapped, its imports are bound to the platform layer and to the C library, its
/// unwind entries registered and its initialisers called. What is not understood is refused: the code was
/// linked for a system before 10.6, shares C++ definitions with other images, or imports what is not here.
/// The code runs with the process's own rights; whoever loads it does so in a child process with a time
/// limit.

#include <macplatform/Bundles.h>

#include <string>

namespace macplatform {

class MachOCode {
public:
    virtual ~MachOCode() = default;
    /// The address of an export, named without its underscore; null when there is none.
    virtual void* Symbol(const std::string& name) const = 0;

protected:
    MachOCode() = default;
    MachOCode(const MachOCode&) = delete;
    MachOCode& operator=(const MachOCode&) = delete;
};

/// Whether this build can: 32-bit x86 only.
bool CanRunMachO();

/// Null, with the failure, when the file is refused. The code stays mapped for ever, as its functions may be
/// registered anywhere.
MachOCode* LoadMachO(const std::string& path, BundleFailure& failure);

} // namespace macplatform
