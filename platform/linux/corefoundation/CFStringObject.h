#pragma once

/// Declares the object behind CFStringRef, so that other sources of the platform can create and read strings.

#include <CoreFoundation/CFString.h>

#include "CFObject.h"

#include <optional>
#include <string>
#include <string_view>

namespace macplatform {

extern const ObjectClass kStringClass;

/// Selects how `Describe` shows a string. `kText` adds quotation marks. `kName` adds none: the string is the
/// name of a constant of the system.
enum class DisplayStyle { kText, kName };

/// The header and the contents of a string. The system's constants are constant-initialised objects.
/// NewString creates all other strings.
struct StringObject : Object {
    constexpr explicit StringObject(std::u16string_view text, DisplayStyle shown = DisplayStyle::kText)
        : Object(kStringClass), units(text), displayStyle(shown) {}

    std::u16string_view units; ///< Refers to static storage or to the same block of memory.
    DisplayStyle displayStyle;
};

/// Creates a string. The caller owns the result. For empty `units`, every call returns the same string, which
/// is never freed. Throws std::bad_alloc.
CFStringRef NewString(std::u16string_view units);

/// Returns the string as UTF-8. Returns no value if the string contains an unpaired surrogate. Calls `Misuse`
/// if the object is not a string.
std::optional<std::string> Utf8(CFStringRef string, const char* function);

} // namespace macplatform

struct __CFString : macplatform::StringObject {
    using StringObject::StringObject;
};
