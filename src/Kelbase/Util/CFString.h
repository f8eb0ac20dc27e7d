#pragma once

#include <Kelbase/common/common_string.h>

#include <CoreFoundation/CFString.h>
#include <vector>

namespace Util {

/// Holds a CoreFoundation string for as long as a platform call needs it, and turns it back into text.
///
/// Making one never fails: what the platform refuses (bytes that are not UTF-8) becomes an empty string, so
/// that the reference can always be handed on. Not copyable.
class CFString {
public:
    /// Who gives the reference back.
    enum ReleaseBehavior : int {
        kReleaseOnDestroy = 0, ///< The holder owns its reference.
        kDontRelease = 1,      ///< It only borrows it; any other value means the same.
    };

    ///@{
    /// From UTF-8, up to the first NUL; null gives an empty string.
    CFString(const char* text, ReleaseBehavior rb);
    CFString(const String& text, ReleaseBehavior rb);
    ///@}
    /// Takes `ref` as it is, without a reference of its own; null gives a new empty string.
    CFString(CFStringRef ref, ReleaseBehavior rb);
    CFString(const CFString&) = delete;
    CFString& operator=(const CFString&) = delete;
    ~CFString();

    CFStringRef GetRef() const { return reference; } ///< Never null; lent.

    /// The text as UTF-8, up to its first NUL. Empty when it holds more than 1,000,000 UTF-16 units or half
    /// of a surrogate pair.
    String ToString() const;

private:
    void initialize(const char* text, bool release);

    bool releaseOnDestroy;
    CFStringRef reference;
    std::vector<unsigned char> bytes; // room that no platform call here asks for
};

} // namespace Util
