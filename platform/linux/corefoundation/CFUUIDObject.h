#pragma once

/// UUIDs seen from the platform's other services.

#include <CoreFoundation/CFUUID.h>

#include "CFObject.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace macplatform {

using UuidBytes = std::array<std::uint8_t, 16>;

/// In groups of 8-4-4-4-12 upper-case digits.
std::string UuidText(const UuidBytes& bytes);
/// Reads that form, in either case of letters; nothing else.
std::optional<UuidBytes> ParseUuid(std::string_view text);

const UuidBytes& BytesOf(CFUUIDRef uuid, const char* function);
/// The one object of these bytes, with one reference for the caller. Throws std::bad_alloc.
CFUUIDRef NewUuid(const UuidBytes& bytes);

} // namespace macplatform
