#pragma once

/// @file
/// Why a plug-in gave no instance.

#include <string>

#pragma GCC visibility push(default)
namespace macplatform {

/// The first thing that stood in the way.
enum class BundleFault {
    kNone,
    kNoBundle,           ///< No such folder, or no property list in it.
    kBrokenPropertyList, ///< The property list cannot be read or holds no dictionary.
    kMissingKey,        ///< The property list lacks a key, a factory or a type, or has a key in a wrong form.
    kNoExecutable,      ///< The file that the property list names is missing, unreadable or no regular file.
    kWrongArchitecture, ///< It was made for another processor or system, or is no program code.
    kCannotLoad,        ///< The dynamic linker refused it.
    kSymbolMissing,     ///< The factory function is not exported.
    kFactoryRefused,    ///< The factory function answered null.
};

/// What went wrong in the last attempt.
struct BundleFailure {
    /// `kNone` with an empty `text` if nothing did. `kMissingKey` also after a CFPlugInCreate that returned a
    /// plug-in whose property list lacks one of the two CFPlugIn dictionaries.
    BundleFault fault = BundleFault::kNone;
    std::string text; ///< One line that names the thing and its path.
};

/// Says whether a bundle that has code for this system and for the Mac is loaded from the latter from now on.
/// Returns false and changes nothing if `preferred` is true and such code cannot run: only 32-bit x86
/// processes can run it.
bool PreferMacCode(bool preferred);
bool MacCodeIsPreferred(); ///< As last set; false at first.

/// About the last CFPlugInCreate, CFPlugInInstanceCreate or BundleSymbol of this process.
const BundleFailure& LastBundleFailure();

/// The address of an exported symbol of the plug-in that `CFPlugInCreate` answered, its code loaded if need
/// be; null when there is none, and then LastBundleFailure tells why.
void* BundleSymbol(const void* plugIn, const std::string& name);

} // namespace macplatform
#pragma GCC visibility pop
