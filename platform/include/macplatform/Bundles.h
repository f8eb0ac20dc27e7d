#pragma once

/// @file
/// Reports why a plug-in could not be loaded or did not create an instance.

#include <string>

#pragma GCC visibility push(default)
namespace macplatform {

/// The first fault of a failed attempt.
enum class BundleFault {
    kNone,
    kNoBundle,           ///< The directory is missing or has no property list.
    kBrokenPropertyList, ///< The property list cannot be read or is no dictionary.
    kMissingKey,         ///< The property list lacks a key, a factory or a type, or a key has a wrong value.
    kNoExecutable,       ///< The file that the property list names is missing, unreadable or no regular file.
    kWrongArchitecture,  ///< The code is for another processor or system, or the file is no code.
    kCannotLoad,         ///< The dynamic linker rejected the code.
    kSymbolMissing,      ///< The factory function is not exported.
    kFactoryRefused,     ///< The factory function returned null.
};

/// The result of the last attempt to load or use a plug-in.
struct BundleFailure {
    /// `kNone` after a success; `text` is then empty. Exception: after CFPlugInCreate has returned a plug-in
    /// whose property list lacks one of the two CFPlugIn dictionaries, the fault is `kMissingKey`.
    BundleFault fault = BundleFault::kNone;
    std::string text; ///< One line that names the faulty item and its path.
};

/// Sets which code of a bundle is loaded if the bundle has code for this system and for the Mac: the Mac's
/// code if `preferred` is true. Only 32-bit x86 processes can run the Mac's code. In any other process,
/// returns false and changes nothing if `preferred` is true.
bool PreferMacCode(bool preferred);
bool MacCodeIsPreferred(); ///< Returns the setting of `PreferMacCode`, false at first.

/// Returns the result of the last CFPlugInCreate, CFPlugInInstanceCreate or BundleSymbol in this process.
const BundleFailure& LastBundleFailure();

/// Loads the code of the plug-in if necessary and returns the address of an exported symbol. `plugIn` must be
/// a result of `CFPlugInCreate`. Returns null if the symbol is missing or the code cannot be loaded;
/// LastBundleFailure gives the reason.
void* BundleSymbol(const void* plugIn, const std::string& name);

} // namespace macplatform
#pragma GCC visibility pop
