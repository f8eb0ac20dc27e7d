#pragma once

/// Creates, parses and formats UUIDs for the platform's other services.

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
/// Parses the notation of `UuidText`, in upper or lower case. Returns nothing for any other text.
std::optional<UuidBytes> ParseUuid(std::string_view text);

/// Returns the bytes. Reports a misuse of `function` and aborts if the object is no UUID.
const UuidBytes& BytesOf(CFUUIDRef uuid, const char* function);
/// Returns the object with these bytes, with one reference for the caller. Equal bytes give the same object.
/// Throws std::bad_alloc.
CFUUIDRef NewUuid(const UuidBytes& bytes);

} // namespace macplatform
