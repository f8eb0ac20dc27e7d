#pragma once

/// The Mac's unwind entries, made fit for this system's unwinder.

#include <string>
#include <string_view>

namespace macplatform {

/// A copy of the section at `section`, for registration: registers 4 and 5, which the Mac numbers the other
/// way round, are exchanged; relative pointers are as if the copy lay at `copy`; and it ends as the unwinder
/// needs it. Throws MachORefused for entries that are not handled.
std::string UnwindEntriesFor(std::string_view section, const char* copy);

} // namespace macplatform
