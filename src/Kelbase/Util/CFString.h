#pragma once

#include <Kelbase/common/common_string.h>

#include <CoreFoundation/CFString.h>
#include <vector>

namespace Util {

/// Holds a CoreFoundation string for platform calls and converts it to text. Not copyable.
///
/// The constructors do not fail. If the platform rejects a text, for example because the bytes are not UTF-8,
/// the object has an empty string. Callers can therefore always pass the reference to the platform.
class CFString {
public:
    /// Determines whether the destructor releases the reference.
    enum ReleaseBehavior : int {
        kReleaseOnDestroy = 0, ///< The object owns its reference.
        kDontRelease = 1,      ///< The object does not own its reference. Every other value means the same.
    };

    ///@{
    /// Creates a string from UTF-8 text before its first NUL. Creates an empty string for a null pointer.
    CFString(const char* text, ReleaseBehavior rb);
    CFString(const String& text, ReleaseBehavior rb);
    ///@}
    /// Stores `ref` and does not retain it. Creates an empty string for null.
    CFString(CFStringRef ref, ReleaseBehavior rb);
    CFString(const CFString&) = delete;
    CFString& operator=(const CFString&) = delete;
    ~CFString();

    /// Returns the reference, which is never null. Does not retain it.
    CFStringRef GetRef() const { return reference; }

    /// Returns the text before its first NUL as UTF-8. Returns an empty text if the string has more than
    /// 1,000,000 UTF-16 units or contains an unpaired surrogate.
    String ToString() const;

private:
    void initialize(const char* text, bool release);

    bool releaseOnDestroy;
    CFStringRef reference;
    std::vector<unsigned char> bytes; // unused
};

} // namespace Util
