#include <Kelbase/Util/CFString.h>

#include <cstddef>

namespace Util {

namespace {

CFStringRef createFromUtf8(const char* text) {
    return CFStringCreateWithCString(kCFAllocatorDefault, text, kCFStringEncodingUTF8);
}

/// Returns a new empty string, or a constant empty string if the platform cannot create a new one.
CFStringRef createEmpty() {
    const CFStringRef empty = createFromUtf8("");
    return empty ? empty : CFSTR("");
}

} // namespace

CFString::CFString(const char* text, ReleaseBehavior rb) { initialize(text, rb == kReleaseOnDestroy); }

CFString::CFString(const String& text, ReleaseBehavior rb) {
    initialize(text.Latin1(), rb == kReleaseOnDestroy);
}

CFString::CFString(CFStringRef ref, ReleaseBehavior rb)
    : releaseOnDestroy(rb == kReleaseOnDestroy), reference(ref ? ref : createEmpty()) {}

CFString::~CFString() {
    if (releaseOnDestroy && reference) CFRelease(reference);
    reference = nullptr;
}

void CFString::initialize(const char* text, bool release) {
    releaseOnDestroy = release;
    reference = text ? createFromUtf8(text) : nullptr;
    if (!reference) reference = createEmpty();
}

String CFString::ToString() const {
    constexpr CFIndex longestText = 1000000; // bounds the buffer at about 4 MB
    const CFIndex length = CFStringGetLength(reference);
    if (length == 0 || length > longestText) return String();

    // A unit needs at most four bytes, so one call is enough.
    const auto capacity = static_cast<std::size_t>(4 * length + 1);
    const shared_array<char> utf8(new char[capacity]);
    if (!CFStringGetCString(reference, utf8.get(), static_cast<CFIndex>(capacity), kCFStringEncodingUTF8)) {
        return String();
    }
    utf8[capacity - 1] = 0;
    return String(utf8.get());
}

} // namespace Util
