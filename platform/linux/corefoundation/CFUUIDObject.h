#pragma once

/// Declares functions that create, parse and format UUIDs, for other sources of the platform.

#include <CoreFoundation/CFUUID.h>

#include "CFObject.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace macplatform {

using UuidBytes = std::array<std::uint8_t, 16>;

/// Returns the UUID as upper-case hexadecimal digits in groups of 8-4-4-4-12.
std::string UuidText(const UuidBytes& bytes);
/// Parses the notation of `UuidText`. Accepts upper-case and lower-case digits, blanks around the text,
/// braces, and a text that ends early: the missing bytes are 0. Returns no value for any other text.
std::optional<UuidBytes> ParseUuid(std::string_view text);

/// Returns the bytes of the UUID. Calls `Misuse` if the object is not a UUID.
const UuidBytes& BytesOf(CFUUIDRef uuid, const char* function);
/// Returns the UUID object with these bytes. The caller owns one reference. While an object with these bytes
/// exists, further calls return the same object. Throws std::bad_alloc.
CFUUIDRef NewUuid(const UuidBytes& bytes);

} // namespace macplatform
