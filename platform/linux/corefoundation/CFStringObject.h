#pragma once

/// Gives the platform's other services access to the contents of strings.

#include <CoreFoundation/CFString.h>

#include "CFObject.h"

#include <optional>
#include <string>
#include <string_view>

namespace macplatform {

extern const ObjectClass kStringClass;

/// Selects how `Describe` shows a string: `kText` in quotation marks; `kName`, for a constant of the system,
/// without.
enum class ShownAs { kText, kName };

/// The header and the contents of a string. The system's constants are constant-initialised objects.
/// NewString creates all other strings.
struct StringObject : Object {
    constexpr explicit StringObject(std::u16string_view text, ShownAs shown = ShownAs::kText)
        : Object(kStringClass), units(text), shownAs(shown) {}

    std::u16string_view units; ///< Refers to static storage or to the same block of memory.
    ShownAs shownAs;
};

/// Creates a string. Returns the same string, which is never freed, for each empty `units`. Throws
/// std::bad_alloc.
CFStringRef NewString(std::u16string_view units);

/// Returns the string as UTF-8, and nothing if the string contains a lone surrogate. Reports a misuse of
/// `function` and aborts if the object is no string.
std::optional<std::string> Utf8(CFStringRef string, const char* function);

} // namespace macplatform

struct __CFString : macplatform::StringObject {
    using StringObject::StringObject;
};
