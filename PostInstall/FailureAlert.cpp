#include <PostInstall/FailureAlert.h>

#include <Vellora/UI/Native/MessageBox.h>

#include <Carbon/Carbon.h>

void ReportRejectedCall(XCodParamBlock& block) {
    constexpr SInt16 stopAlertResource = 5000; // without this resource of the host, no stop alert is shown
    UI::Native::MessageOK(nullptr, "Post Install", "Unable to set post install option keys.", false);
    StopAlert(stopAlertResource, nullptr);
    block.errorFlags = block.errorFlags | kXCodCallFailed;
}
