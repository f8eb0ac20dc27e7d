// Converts text to CoreFoundation strings and back.
#include <Kelbase/Util/CFString.h>

#include <cstdio>

int main() {
    // The holder owns its reference and releases it at the end of the block.
    const Util::CFString title("Gr\xC3\xB6\xC3\x9F"
                               "e",
                               Util::CFString::kReleaseOnDestroy);
    std::printf("%ld units: %s\n", static_cast<long>(CFStringGetLength(title.GetRef())),
                title.ToString().Latin1());

    // The holder borrows this reference and does not release it.
    const Util::CFString borrowed(title.GetRef(), Util::CFString::kDontRelease);
    std::printf("%s\n", CFEqual(borrowed.GetRef(), title.GetRef()) ? "equal" : "different");

    // Bytes that are not UTF-8 give an empty string, so the reference is always valid.
    const Util::CFString broken("Gr\xF6\xDF"
                                "e",
                                Util::CFString::kReleaseOnDestroy);
    std::printf("%ld units\n", static_cast<long>(CFStringGetLength(broken.GetRef())));

    // The program created this reference. The holder becomes its owner and calls CFRelease.
    const CFStringRef made = CFStringCreateWithCString(nullptr, "abc", kCFStringEncodingUTF8);
    std::printf("%s\n",
                Util::CFString(made, Util::CFString::kReleaseOnDestroy).ToString().Latin1());
}
