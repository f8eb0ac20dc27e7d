#include <macplatform/Alerts.h>

#include <Carbon/Dialogs.h>

#include "AlertResponder.h"
#include "trace/PlatformFunction.h"

#include <algorithm>
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

using namespace macplatform;

namespace {

constexpr DialogItemIndex kNotShown = -1;

template <typename Result>
struct NotShown : Failure<Result> {
    Result operator()(long) const { return kNotShown; }
};

} // namespace

DialogItemIndex StopAlert(SInt16 alertID, ModalFilterUPP) {
    const auto show = [alertID] { return Texts{std::to_string(alertID)}; };
    return MakePlatformCall<NotShown>("StopAlert", show, [&](PlatformCall& call) {
        Alert alert;
        alert.kind = Alert::Kind::kStop;
        alert.resource = alertID;
        const int answer = Present(std::move(alert));
        if (answer < 0) call.SetNote("not shown: no open resource file has this alert");
        return static_cast<DialogItemIndex>(answer < 0 ? kNotShown : answer + 1); // the first item is 1
    });
}
