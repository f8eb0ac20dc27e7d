// This file implements messages to NSAlert, the only Objective-C class of the platform. The file defines
// objc_msgSend with parameters. It does not include objc/message.h, because that header declares objc_msgSend
// without parameters.

#include <objc/runtime.h>

#include <CoreFoundation/CFString.h>

#include "AlertResponder.h"
#include "corefoundation/CFStringObject.h"
#include "corefoundation/TextEncoding.h"
#include "trace/PlatformFunction.h"
#include "trace/TrackedObject.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <set>
#include <string>

using namespace macplatform;

struct objc_object : TrackedObject {
    static constexpr std::uint32_t kLiveMagic = 0x0B7EC7C1;
    std::uint32_t magic = kLiveMagic;
    int references = 1;
    bool isClass = false;
    Alert alert;
};

namespace {

constexpr std::intptr_t kFirstButton = 1000;
constexpr std::intptr_t kAborted = -1001; ///< NSRunAbortedResponse: the alert was not shown.

objc_object& classObject() {
    static objc_object& gAlertClass = *new objc_object;
    gAlertClass.isClass = true;
    return gAlertClass;
}

std::string textOf(const void* string, const char* message) {
    const auto& object = CheckedObject(string, message, kStringClass);
    return ReadableUtf8(static_cast<const StringObject&>(object).units);
}

id makeAlert() {
    auto* const alert = new (std::nothrow) objc_object;
    if (!alert) return nullptr;
    alert->Register([](const TrackedObject& object) {
        return "NSAlert " + Quoted(static_cast<const objc_object&>(object).alert.message);
    });
    return alert;
}

void releaseAlert(objc_object& alert) {
    if (--alert.references > 0) return;
    alert.Unregister();
    alert.magic = 0;
    delete &alert;
}

std::intptr_t runModal(const objc_object& alert, PlatformCall& call) {
    const int answer = Present(alert.alert);
    if (answer >= 0) return kFirstButton + answer;
    call.SetNote("not shown");
    return kAborted;
}

std::intptr_t toResult(id object) { return reinterpret_cast<std::intptr_t>(object); }

std::intptr_t sendToClass(const std::string& message, PlatformCall& call) {
    if (message == "alloc") return toResult(makeAlert());
    call.SetNote("this class method of NSAlert is not implemented");
    return 0;
}

std::intptr_t sendToAlert(objc_object& alert, const std::string& message, const void* argument,
                          PlatformCall& call) {
    if (message == "init" || message == "autorelease") return toResult(&alert);
    if (message == "retain") {
        ++alert.references;
        return toResult(&alert);
    }
    if (message == "release") {
        releaseAlert(alert);
    } else if (message == "setMessageText:" && argument) {
        alert.alert.message = textOf(argument, "setMessageText:");
    } else if (message == "addButtonWithTitle:" && argument) {
        alert.alert.buttons.push_back(textOf(argument, "addButtonWithTitle:"));
    } else if (message == "runModal") {
        return runModal(alert, call);
    } else {
        call.SetNote("this method of NSAlert is not implemented, or its argument is nil");
    }
    return 0;
}

bool hasArgument(const std::string& message) { return !message.empty() && message.back() == ':'; }

Texts shownMessage(const objc_object* receiver, const std::string& message, const void* argument) {
    Texts texts = {receiver ? "NSAlert" : "nil", message};
    if (hasArgument(message)) texts.push_back(argument ? Quoted(textOf(argument, "objc_msgSend")) : "nil");
    return texts;
}

std::intptr_t sendMessage(objc_object& receiver, const std::string& message, const void* argument,
                          PlatformCall& call) {
    if (receiver.magic != objc_object::kLiveMagic)
        Misuse("objc_msgSend", message + " was sent to an invalid object");
    const std::intptr_t result =
        receiver.isClass ? sendToClass(message, call) : sendToAlert(receiver, message, argument, call);
    const bool isObject =
        message == "alloc" || message == "init" || message == "retain" || message == "autorelease";
    return call.Result(result, isObject ? "NSAlert" : std::to_string(result));
}

template <typename Result>
struct Nil : Failure<Result> {
    static constexpr const char* kText = "nil";
};

} // namespace

MACPLATFORM_C_BEGIN

id objc_getClass(const char* name) {
    const auto show = [name] { return Texts{Quoted(name)}; };
    return MakePlatformCall<Nil>("objc_getClass", show, [name](PlatformCall& call) {
        const bool isKnown = name && std::strcmp(name, "NSAlert") == 0;
        return call.Result(isKnown ? &classObject() : id{nullptr}, isKnown ? "NSAlert" : "nil");
    });
}

SEL sel_registerName(const char* name) {
    static auto& gNames = *new std::set<std::string>;
    const auto show = [name] { return Texts{Quoted(name)}; };
    return MakePlatformCall<NoFailure>("sel_registerName", show, [name](PlatformCall& call) {
        const std::string& kept = *gNames.emplace(name ? name : "").first;
        return call.Result(reinterpret_cast<SEL>(kept.c_str()), kept);
    });
}

std::intptr_t objc_msgSend(id receiver, SEL selector, const void* argument) {
    const char* const message = selector ? reinterpret_cast<const char*>(selector) : "";
    const auto show = [&] { return shownMessage(receiver, message, argument); };
    return MakePlatformCall<Nil>("objc_msgSend", show, [&](PlatformCall& call) {
        return receiver ? sendMessage(*receiver, message, argument, call)
                        : call.Result(std::intptr_t{0}, Nil<id>::kText);
    });
}

MACPLATFORM_C_END
