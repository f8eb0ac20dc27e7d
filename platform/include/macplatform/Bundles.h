#pragma once

/// @file
/// Declares the reasons why a plug-in could not be loaded or did not create an instance, and the setting for
/// the code to load.

#include <string>

#pragma GCC visibility push(default)
namespace macplatform {

/// The fault that ended an attempt to load or use a plug-in.
enum class BundleFault {
    kNone,
    kNoBundle,            ///< The directory is missing or not a directory, or has no property list.
    kBrokenPropertyList,  ///< The property list cannot be read or is not a dictionary.
    kMissingKey,          ///< The property list lacks a key, a factory or a type, or a key has a wrong value.
    kNoExecutable,        ///< The executable is missing, unreadable or not a regular file.
    kWrongArchitecture,   ///< The executable is for another processor or system, or is not code.
    kCannotLoad,          ///< The dynamic linker or the Mach-O loader rejected the code, or memory ran out.
    kSymbolMissing,       ///< The factory function is not exported.
    kFactoryReturnedNull, ///< The factory function returned null.
};

/// The result of the last attempt to load or use a plug-in.
struct BundleFailure {
    /// `kNone` after a success; `text` is then empty. Exception: after CFPlugInCreate has returned a plug-in
    /// whose property list lacks one of the two CFPlugIn dictionaries, the fault is `kMissingKey`.
    BundleFault fault = BundleFault::kNone;
    std::string text; ///< One line that names the faulty item and its path.
};

/// Selects the code that is loaded if a bundle has code for Linux and for the Mac: the code for the Mac if
/// `preferred` is true, else the code for Linux. Only 32-bit x86 processes can run the code for the Mac. In
/// any other process the function returns false and changes nothing if `preferred` is true. Otherwise the
/// function returns true.
bool SetPrefersMacCode(bool preferred);
bool PrefersMacCode(); ///< Returns the setting of `SetPrefersMacCode`. The default is false.

/// Returns the result of the last call of CFPlugInCreate, CFPlugInInstanceCreate or BundleSymbol in this
/// process. The next of these calls changes the referenced object.
const BundleFailure& LastBundleFailure();

/// Loads the code of the plug-in if necessary and returns the address of an exported symbol. `plugIn` must be
/// a result of `CFPlugInCreate`. Returns null if the symbol is missing or the code cannot be loaded.
/// LastBundleFailure then returns the reason.
void* BundleSymbol(const void* plugIn, const std::string& name);

} // namespace macplatform
#pragma GCC visibility pop
