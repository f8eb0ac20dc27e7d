#pragma once

#include <string>
#include <string_view>

namespace macplatform {

/// Returns a copy of the Mac's unwind entries for the unwinder of Linux. The caller must store the copy at
/// the address `copy` before registering it. `section` must refer to the section in memory.
///
/// In the copy, the registers 4 and 5 are exchanged, because the Mac numbers these two in the opposite order.
/// Relative pointers are adjusted to the new address. An entry of length 0 ends the copy. Throws MachORefused
/// for entries that are damaged or not supported.
std::string UnwindEntriesFor(std::string_view section, const char* copy);

} // namespace macplatform
