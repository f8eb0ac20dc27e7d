#pragma once

/// Strings seen from the platform's other services.

#include <CoreFoundation/CFString.h>

#include "CFObject.h"

#include <optional>
#include <string>
#include <string_view>

namespace macplatform {

extern const ObjectClass kStringClass;

/// Whether a string is shown by its text in quotation marks or, as a constant of the system, by its text
/// alone.
enum class ShownAs { kText, kName };

/// Constant-initialised, for the system's own constants; made by NewString otherwise.
struct StringObject : Object {
    constexpr explicit StringObject(std::u16string_view text, ShownAs shown = ShownAs::kText)
        : Object(kStringClass), units(text), shownAs(shown) {}

    std::u16string_view units; ///< Of a static text, or of the same block of memory.
    ShownAs shownAs;
};

/// A new string; the one empty string, which is never freed, for an empty text. Throws std::bad_alloc.
CFStringRef NewString(std::u16string_view units);

/// The text as UTF-8; nothing when a surrogate stands alone. Misuse, in the function's name, of what is no
/// string.
std::optional<std::string> Utf8(CFStringRef string, const char* function);

} // namespace macplatform

struct __CFString : macplatform::StringObject {
    using StringObject::StringObject;
};
