#include <macplatform/CallLog.h>

#include "PlatformCall.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <utility>

namespace macplatform {

namespace {

CallObserver& currentObserver() {
    static CallObserver gObserver;
    return gObserver;
}

std::vector<InjectedFault>& pendingFaults() {
    static std::vector<InjectedFault> gFaults;
    return gFaults;
}

/// The number of `PlatformCall` and `InternalCallScope` objects since the innermost `BundleCodeScope`.
thread_local int gCallDepth = 0;

} // namespace

void SetCallObserver(CallObserver observer) { currentObserver() = std::move(observer); }

void InjectFault(const InjectedFault& fault) { pendingFaults().push_back(fault); }

std::size_t CancelInjectedFaults() {
    const std::size_t count = pendingFaults().size();
    pendingFaults().clear();
    return count;
}

std::string Quoted(const char* text) { return text ? Quoted(std::string(text)) : "NULL"; }

std::string Quoted(const std::string& text) {
    static const char hex[] = "0123456789ABCDEF";
    std::string quoted = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\n') {
            quoted += "\\n";
        } else if (c == '\r') {
            quoted += "\\r";
        } else if (c == '"' || c == '\\') {
            (quoted += '\\') += c;
        } else if (byte < 0x20 || byte == 0x7F) {
            ((quoted += "\\x") += hex[byte >> 4]) += hex[byte & 15];
        } else {
            quoted += c;
        }
    }
    return quoted += '"';
}

std::string Digits(double number) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

PlatformCall::PlatformCall(const char* functionName)
    : name(functionName), isRecorded(gCallDepth == 0 && currentObserver() != nullptr) {
    ++gCallDepth;
}

PlatformCall::~PlatformCall() {
    // The depth is reduced after the observer has returned, so that the platform calls of the observer are
    // not recorded.
    const int errorNumber = errno; // errno is part of the result of some calls
    if (isRecorded) currentObserver()({name, std::move(arguments), std::move(result), std::move(note)});
    errno = errorNumber;
    --gCallDepth;
}

InternalCallScope::InternalCallScope() { ++gCallDepth; }
InternalCallScope::~InternalCallScope() { --gCallDepth; }
bool InternalCallScope::IsActive() { return gCallDepth > 0; }

BundleCodeScope::BundleCodeScope() : outerDepth(gCallDepth) { gCallDepth = 0; }
BundleCodeScope::~BundleCodeScope() { gCallDepth = outerDepth; }

std::optional<long> PlatformCall::ConsumeFault() {
    if (gCallDepth != 1) return std::nullopt;
    auto& faults = pendingFaults();
    const auto fault =
        std::find_if(faults.begin(), faults.end(), [this](const InjectedFault& f) { return f.call == name; });
    if (fault == faults.end()) return std::nullopt;
    if (fault->skip > 0) {
        --fault->skip;
        return std::nullopt;
    }
    const long code = fault->code;
    faults.erase(fault);
    return code;
}

} // namespace macplatform
