#include <macplatform/Journal.h>

#include "PlatformCall.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <utility>

namespace macplatform {

namespace {

JournalObserver& Observer() {
    static JournalObserver observer;
    return observer;
}

std::vector<OrderedFault>& Faults() {
    static std::vector<OrderedFault> faults;
    return faults;
}

thread_local int callDepth = 0;

} // namespace

void SetJournalObserver(JournalObserver observer) { Observer() = std::move(observer); }

void OrderFault(const OrderedFault& fault) { Faults().push_back(fault); }

std::size_t CancelFaults() {
    const std::size_t count = Faults().size();
    Faults().clear();
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
    : name(functionName), told(callDepth == 0 && Observer() != nullptr) {
    ++callDepth;
}

PlatformCall::~PlatformCall() {
    // The observer's own platform calls are not told either: the depth goes down after it is done.
    const int errorNumber = errno; // part of the result of some calls
    if (told) Observer()({name, std::move(arguments), std::move(result), std::move(note)});
    errno = errorNumber;
    --callDepth;
}

PlatformInside::PlatformInside() { ++callDepth; }
PlatformInside::~PlatformInside() { --callDepth; }
bool PlatformInside::IsActive() { return callDepth > 0; }

BundleCodeRuns::BundleCodeRuns() : outerDepth(callDepth) { callDepth = 0; }
BundleCodeRuns::~BundleCodeRuns() { callDepth = outerDepth; }

std::optional<long> PlatformCall::TakeFault() {
    if (callDepth != 1) return std::nullopt;
    auto& faults = Faults();
    const auto fault =
        std::find_if(faults.begin(), faults.end(), [this](const OrderedFault& f) { return f.call == name; });
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
