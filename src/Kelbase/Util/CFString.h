#pragma once

#include <Kelbase/common/common_string.h>

#include <CoreFoundation/CFString.h>
#include <vector>

namespace Util {

/// Holds a CoreFoundation string for platform calls and converts it to text. Not copyable.
///
/// The constructors do not fail. If the platform rejects a text, for instance bytes that are not UTF-8, the
/// holder has an empty string, so that callers can always pass the reference on.
class CFString {
public:
    /// Says whether the destructor releases the reference.
    enum ReleaseBehavior : int {
        kReleaseOnDestroy = 0, ///< The holder owns its reference.
        kDontRelease = 1,      ///< The holder borrows its reference. Any other value has the same effect.
    };

    ///@{
    /// Creates a string from UTF-8 text up to its first NUL. A null pointer gives an empty string.
    CFString(const char* text, ReleaseBehavior rb);
    CFString(const String& text, ReleaseBehavior rb);
    ///@}
    /// Stores `ref` without retaining it. Null gives a new empty string.
    CFString(CFStringRef ref, ReleaseBehavior rb);
    CFString(const CFString&) = delete;
    CFString& operator=(const CFString&) = delete;
    ~CFString();

    CFStringRef GetRef() const { return reference; } ///< Returns the reference, not retained; never null.

    /// Returns the text as UTF-8, up to its first NUL. Returns an empty text if the string has more than
    /// 1,000,000 UTF-16 units or an unpaired surrogate.
    String ToString() const;

private:
    void initialize(const char* text, bool release);

    bool releaseOnDestroy;
    CFStringRef reference;
    std::vector<unsigned char> bytes; // unused
};

} // namespace Util
