#include <Vellora/UI/Native/MessageBox.h>

#include <Kelbase/Util/CFString.h>

#include <CoreFoundation/CFString.h>
#include <objc/message.h>
#include <objc/runtime.h>

namespace UI::Native {

namespace {

// Results of runModal. The buttons are numbered in the order in which they were added.
enum : CFIndex { kFirstButton = 1000, kThirdButton = 1002 };

struct Selectors {
    SEL alloc = sel_registerName("alloc");
    SEL init = sel_registerName("init");
    // `retain` and `autorelease` are registered but never sent.
    SEL retain = sel_registerName("retain");
    SEL autorelease = sel_registerName("autorelease");
    SEL release = sel_registerName("release");
    SEL setMessageText = sel_registerName("setMessageText:");
    SEL addButtonWithTitle = sel_registerName("addButtonWithTitle:");
    SEL runModal = sel_registerName("runModal");
};

/// Sends a message. Calls `objc_msgSend` with the parameter types of the method, as the calling convention
/// requires.
template <typename Result, typename... Arguments>
Result send(id receiver, SEL selector, Arguments... arguments) {
    const auto method = reinterpret_cast<Result (*)(id, SEL, Arguments...)>(objc_msgSend);
    return method(receiver, selector, arguments...);
}

/// Owns an NSAlert.
class Alert {
public:
    Alert()
        : alert(send<id>(send<id>(reinterpret_cast<id>(objc_getClass("NSAlert")), selectors.alloc),
                         selectors.init)) {}
    Alert(const Alert&) = delete;
    Alert& operator=(const Alert&) = delete;
    ~Alert() { send<void>(alert, selectors.release); }

    void SetMessageText(CFStringRef text) { send<void>(alert, selectors.setMessageText, text); }
    void AddButton(CFStringRef title) { send<id>(alert, selectors.addButtonWithTitle, title); }
    CFIndex RunModal() { return send<CFIndex>(alert, selectors.runModal); }

private:
    const Selectors selectors;
    const id alert;
};

void addButtons(Alert& alert, bool okCancel, bool yesNo, bool withCancel, bool retryCancel) {
    if (yesNo) {
        alert.AddButton(CFSTR("Yes"));
        if (withCancel) alert.AddButton(CFSTR("Cancel"));
        alert.AddButton(CFSTR("No"));
    } else if (okCancel) {
        alert.AddButton(CFSTR("OK"));
        alert.AddButton(CFSTR("Cancel"));
    }
    if (retryCancel) {
        alert.AddButton(CFSTR("Retry"));
        alert.AddButton(CFSTR("Cancel"));
    }
}

CFIndex askUser(const String& message, bool okCancel, bool yesNo, bool withCancel, bool retryCancel) {
    Alert alert;
    {
        const Util::CFString text(message, Util::CFString::kReleaseOnDestroy);
        alert.SetMessageText(text.GetRef());
    }
    addButtons(alert, okCancel, yesNo, withCancel, retryCancel);
    return alert.RunModal();
}

/// Shows the box and returns whether the user chose the first button. If `cancelled` is not null, sets it to
/// false for the first and the third button, and to true for every other result. NSAlert selects the default
/// button.
bool standardAlertDialog(const String& message, bool okCancel, bool yesNo, bool /*firstIsDefault*/,
                         bool* cancelled, bool retryCancel) {
    okCancel = okCancel || yesNo || retryCancel;
    const CFIndex button = askUser(message, okCancel, yesNo, cancelled != nullptr, retryCancel);
    if (cancelled) *cancelled = button != kFirstButton && button != kThirdButton;
    return button == kFirstButton;
}

Util::CFString fromUtf16(const std::vector<unsigned short>& units) {
    return {
        CFStringCreateWithCharacters(kCFAllocatorDefault, units.data(), static_cast<CFIndex>(units.size())),
        Util::CFString::kReleaseOnDestroy};
}

} // namespace

void MessageOK(void*, const String&, const String& message, bool) {
    if (!Util::IsModalDialogAllowed()) return;
    standardAlertDialog(message, false, false, true, nullptr, false);
}

void MessageOK(void*, const std::vector<unsigned short>&, const std::vector<unsigned short>& second,
               const std::vector<unsigned short>& third, bool) {
    if (!Util::IsModalDialogAllowed() || third.empty() || second.empty()) return;
    const Util::CFString unshown = fromUtf16(third);
    const Util::CFString text = fromUtf16(second);
    Alert alert;
    alert.SetMessageText(text.GetRef());
    alert.RunModal();
}

bool MessageOKCancel(void*, const String&, const String& message, OKCancelFocus focus, bool) {
    if (!Util::IsModalDialogAllowed()) return false;
    return standardAlertDialog(message, true, false, focus == OKCancelFocus::kFirstButton, nullptr, false);
}

bool MessageYesNo(void*, const String&, const String& message, YesNoFocus focus, bool) {
    if (!Util::IsModalDialogAllowed()) return false;
    return standardAlertDialog(message, true, true, focus == YesNoFocus::kFirstButton, nullptr, false);
}

bool MessageYesNoCancel(bool& cancelled, void*, const String&, const String& message, YesNoCancelFocus focus,
                        bool) {
    if (!Util::IsModalDialogAllowed()) return false;
    return standardAlertDialog(message, true, true, focus == YesNoCancelFocus::kFirstButton, &cancelled,
                               false);
}

bool MessageRetryCancel(void*, const String&, const String& message, RetryCancelFocus focus, bool) {
    if (!Util::IsModalDialogAllowed()) return false;
    return standardAlertDialog(message, true, false, focus == RetryCancelFocus::kFirstButton, nullptr, true);
}

} // namespace UI::Native
