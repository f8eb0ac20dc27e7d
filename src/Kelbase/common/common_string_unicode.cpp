#include <Kelbase/common/common_string.h>

#include <CoreFoundation/CFString.h>

#include <memory>
#include <type_traits>

namespace {

constexpr std::size_t kMaxUnitsIn = 100000; ///< Texts of this length and longer are rejected.
constexpr CFIndex kMaxUnitsOut = 100000;

struct Release {
    void operator()(CFStringRef string) const { CFRelease(string); }
};
using OwnedCFString = std::unique_ptr<std::remove_pointer_t<CFStringRef>, Release>;

CFStringEncoding platformEncoding(unsigned int encoding) {
    return encoding == 2 ? kCFStringEncodingMacRoman : kCFStringEncodingUTF8;
}

/// Returns the number of units before the terminating 0, at most the limit.
std::size_t countUnits(const unsigned short* s) {
    std::size_t count = 0;
    while (count < kMaxUnitsIn && s[count] != 0) ++count;
    return count;
}

} // namespace

String::String(const unsigned short* s, unsigned int encoding) {
    if (!s) return;
    const std::size_t count = countUnits(s);
    if (count == 0) {
        *this = String("");
        return;
    }
    if (count >= kMaxUnitsIn) return;
    const OwnedCFString string(
        CFStringCreateWithCharacters(kCFAllocatorDefault, s, static_cast<CFIndex>(count)));
    if (!string) return;
    const std::size_t capacity = 5 * count + 5; // no encoding needs more bytes for a unit
    const scoped_array<char> buffer(new char[capacity]);
    const bool converted = CFStringGetCString(string.get(), buffer.get(), static_cast<CFIndex>(capacity),
                                              platformEncoding(encoding));
    buffer[capacity - 1] = 0;
    if (converted) *this = String(buffer.get());
}

shared_array<unsigned short> String::Unicode(unsigned int encoding) const {
    const OwnedCFString string(
        CFStringCreateWithCString(kCFAllocatorDefault, Latin1(), platformEncoding(encoding)));
    if (!string) return {};
    const CFIndex length = CFStringGetLength(string.get());
    if (length > kMaxUnitsOut) return {};
    shared_array<unsigned short> units(new unsigned short[static_cast<std::size_t>(length) + 1]);
    if (length > 0) CFStringGetCharacters(string.get(), CFRangeMake(0, length), units.get());
    units[static_cast<std::size_t>(length)] = 0;
    return units;
}
