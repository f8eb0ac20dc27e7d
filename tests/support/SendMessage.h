#pragma once

/// Declares functions that send Objective-C messages.

#include <objc/message.h>
#include <objc/runtime.h>

/// Sends the message and returns its result.
template <typename Result = id, typename... Arguments>
Result Send(id receiver, const char* message, Arguments... arguments) {
    const auto send = reinterpret_cast<Result (*)(id, SEL, Arguments...)>(&objc_msgSend);
    return send(receiver, sel_registerName(message), arguments...);
}

/// Returns a new NSAlert. The caller must release the alert.
inline id NewAlert() { return Send(Send(objc_getClass("NSAlert"), "alloc"), "init"); }
