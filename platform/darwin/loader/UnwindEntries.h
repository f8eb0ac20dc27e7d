#pragma once

#include <string>
#include <string_view>

namespace macplatform {

/// Returns a copy of the Mac's unwind entries that is converted for the unwinder of Linux. The caller must
/// store the copy at the address `copy` and may then register it with the unwinder. `section` must refer to
/// the section in memory, not in the file.
///
/// In the copy, the numbers of the registers 4 and 5 are exchanged, because the Mac and Linux number these
/// two registers in the opposite order. Relative pointers are adjusted to the new address. An entry of length
/// 0 ends the copy. Throws UnsupportedMachO for entries that are damaged or not supported.
std::string UnwindEntriesFor(std::string_view section, const char* copy);

} // namespace macplatform
