// Hands texts to platform calls and takes them back.
#include <Kelbase/Util/CFString.h>

#include <cstdio>

int main() {
    // The holder owns its reference and releases it at the end of the block.
    const Util::CFString title("Gr\xC3\xB6\xC3\x9F"
                               "e",
                               Util::CFString::kReleaseOnDestroy);
    std::printf("%ld units: %s\n", static_cast<long>(CFStringGetLength(title.GetRef())),
                title.ToString().Latin1());

    // A reference that somebody else owns is only borrowed.
    const Util::CFString borrowed(title.GetRef(), Util::CFString::kDontRelease);
    std::printf("%s\n", CFEqual(borrowed.GetRef(), title.GetRef()) ? "equal" : "different");

    // Bytes that are no UTF-8 become an empty string: a call can always be made, and checks nothing.
    const Util::CFString broken("Gr\xF6\xDF"
                                "e",
                                Util::CFString::kReleaseOnDestroy);
    std::printf("%ld units\n", static_cast<long>(CFStringGetLength(broken.GetRef())));

    // One that the program itself made is given over: no CFRelease here.
    const CFStringRef made = CFStringCreateWithCString(nullptr, "abc", kCFStringEncodingUTF8);
    std::printf("%s\n", Util::CFString(made, Util::CFString::kReleaseOnDestroy).ToString().Latin1());
}
