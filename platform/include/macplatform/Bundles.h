#pragma once

/// @file
/// Why a plug-in gave no instance.

#include <string>

#pragma GCC visibility push(default)
namespace macplatform {

/// The first thing that stood in the way.
enum class BundleFault {
    None,
    NoBundle,          ///< No such folder, or no property list in it.
    BrokenList,        ///< The property list cannot be read.
    MissingKey,        ///< The property list lacks a key or has it in a wrong form.
    NoExecutable,      ///< The file that the property list names is missing.
    WrongArchitecture, ///< It was made for another processor or system.
    CannotLoad,        ///< The dynamic linker refused it.
    SymbolMissing,     ///< The factory function is not exported.
    FactoryRefused,    ///< The factory function answered null.
};

/// Why the last attempt gave nothing.
struct BundleFailure {
    BundleFault fault = BundleFault::None; ///< `None` when it succeeded, and `text` is then empty.
    std::string text;                      ///< One line that names the thing and its path.
};

/// Whether a bundle that has code for this system and for the Mac is to be loaded from the latter, from now
/// on. False, and nothing is changed, where such code cannot run: only 32-bit x86 processes can.
bool PreferMacCode(bool preferred);
bool MacCodeIsPreferred(); ///< As last set; false at first.

/// About the last CFPlugInCreate or CFPlugInInstanceCreate of this process.
const BundleFailure& LastBundleFailure();

/// The address of an exported symbol of the plug-in that `CFPlugInCreate` answered, its code loaded if need
/// be; null when there is none, and then LastBundleFailure tells why.
void* BundleSymbol(const void* plugIn, const std::string& name);

} // namespace macplatform
#pragma GCC visibility pop
