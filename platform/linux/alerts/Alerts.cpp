#include <macplatform/Alerts.h>

#include <Carbon/Dialogs.h>

#include "AlertResponder.h"
#include "trace/PlatformCall.h"

#include <algorithm>
#include <new>
#include <utility>

namespace macplatform {

namespace {

AlertResponder& currentResponder() {
    static AlertResponder gResponder;
    return gResponder;
}

} // namespace

void SetAlertResponder(AlertResponder responder) { currentResponder() = std::move(responder); }

int Present(Alert alert) {
    if (alert.kind == Alert::Kind::kMessage && alert.buttons.empty()) alert.buttons = {"OK"};
    const AlertResponder responder = currentResponder(); // a copy, because the responder may replace itself
    if (!responder) return alert.kind == Alert::Kind::kMessage ? 0 : -1;
    const auto buttons = static_cast<int>(std::max<std::size_t>(alert.buttons.size(), 1));
    const int answer = responder(alert);
    return answer >= 0 && answer < buttons ? answer : -1;
}

} // namespace macplatform

DialogItemIndex StopAlert(SInt16 alertID, ModalFilterUPP) try {
    using namespace macplatform;
    PlatformCall call("StopAlert");
    if (call.IsRecorded()) call.SetArguments({std::to_string(alertID)});
    constexpr DialogItemIndex notShown = -1;
    if (call.ConsumeFault()) return call.Result(notShown);
    Alert alert;
    alert.kind = Alert::Kind::kStop;
    alert.resource = alertID;
    const int answer = Present(std::move(alert));
    if (answer < 0) call.SetNote("not shown: no open resource file has this alert");
    return call.Result(
        static_cast<DialogItemIndex>(answer < 0 ? notShown : answer + 1)); // item numbers begin at 1
} catch (const std::bad_alloc&) {
    return -1;
}
