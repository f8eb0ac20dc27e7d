#include <CoreFoundation/CFString.h>

#include "CFStringObject.h"
#include "TextEncoding.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>

namespace macplatform {

namespace {

const StringObject& ToString(const Object& object) { return static_cast<const StringObject&>(object); }

std::string DescribeString(const Object& object) {
    const std::string text = ReadableUtf8(ToString(object).units);
    return ToString(object).shownAs == ShownAs::Name ? text : Quoted(text);
}

bool EqualStrings(const Object& left, const Object& right) {
    return ToString(left).units == ToString(right).units;
}

const StringObject& CheckedString(CFStringRef string, const char* function) {
    return ToString(CheckedObject(string, function, stringClass));
}

} // namespace

const ObjectClass stringClass = {7, "string", &DescribeString, &EqualStrings, nullptr};

CFStringRef NewString(std::u16string_view units) {
    static const __CFString empty{std::u16string_view{}};
    if (units.empty()) return &empty;
    if (units.size() > SIZE_MAX / 4) throw std::bad_alloc();
    auto* const string = MakeObject<__CFString>(units.size() * sizeof(char16_t), units);
    auto* const storage = reinterpret_cast<char16_t*>(string + 1);
    std::copy(units.begin(), units.end(), storage);
    string->units = {storage, units.size()};
    return string;
}

std::optional<std::string> Utf8(CFStringRef string, const char* function) {
    return EncodeUtf8(CheckedString(string, function).units);
}

namespace {

std::string EncodingName(CFStringEncoding encoding) {
    switch (encoding) {
    case kCFStringEncodingMacRoman:
        return "kCFStringEncodingMacRoman";
    case kCFStringEncodingASCII:
        return "kCFStringEncodingASCII";
    case kCFStringEncodingUTF8:
        return "kCFStringEncodingUTF8";
    default:
        return std::to_string(encoding);
    }
}

std::optional<std::u16string> Decode(std::string_view bytes, CFStringEncoding encoding) {
    switch (encoding) {
    case kCFStringEncodingMacRoman:
        return DecodeMacRoman(bytes);
    case kCFStringEncodingASCII:
        return DecodeAscii(bytes);
    case kCFStringEncodingUTF8:
        return DecodeUtf8(bytes);
    default:
        return std::nullopt;
    }
}

/// Null when the bytes are not valid or the encoding is not known.
CFStringRef NewDecodedString(std::string_view bytes, CFStringEncoding encoding) {
    const auto units = Decode(bytes, encoding);
    return units ? NewString(*units) : nullptr;
}

std::optional<std::string> Encode(std::u16string_view units, CFStringEncoding encoding) {
    switch (encoding) {
    case kCFStringEncodingMacRoman:
        return EncodeMacRoman(units);
    case kCFStringEncodingASCII:
        return EncodeAscii(units);
    case kCFStringEncodingUTF8:
        return EncodeUtf8(units);
    default:
        return std::nullopt;
    }
}

} // namespace
} // namespace macplatform

using namespace macplatform;

// On the Mac the compiler makes these objects and nothing is called, so the journal is not told.
CFStringRef __CFStringMakeConstantString(const char* text) try {
    static auto& mutex = *new std::mutex;
    static auto& constants = *new std::map<std::string, CFStringRef, std::less<>>;
    const std::lock_guard lock(mutex);
    const auto known = constants.find(std::string_view(text));
    if (known != constants.end()) return known->second;
    const std::string key = text;
    if (std::any_of(key.begin(), key.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; })) {
        Misuse("CFSTR", "the text is not ASCII: " + Quoted(key));
    }
    const auto place = constants.emplace(key, nullptr).first;
    place->second = NewString(DecodeAscii(key));
    MakeImmortal(const_cast<__CFString&>(*place->second));
    return place->second;
} catch (const std::bad_alloc&) {
    return nullptr;
}

CFTypeID CFStringGetTypeID() {
    PlatformCall call("CFStringGetTypeID");
    return call.Result(stringClass.id);
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text,
                                      CFStringEncoding encoding) try {
    PlatformCall call("CFStringCreateWithCString");
    if (!text) Misuse("CFStringCreateWithCString", "the text is NULL");
    if (call.IsTold()) Tell(call, allocator, text, EncodingName(encoding));
    return ObjectResult(call, call.TakeFault() ? nullptr : NewDecodedString(text, encoding));
} catch (const std::bad_alloc&) {
    return nullptr;
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* units, CFIndex count) try {
    PlatformCall call("CFStringCreateWithCharacters");
    if (!units && count > 0) Misuse("CFStringCreateWithCharacters", "the text is NULL");
    if (count < 0) return ObjectResult(call, CFStringRef{});
    const std::u16string text(units, units + count);
    if (call.IsTold()) Tell(call, allocator, Quoted(ReadableUtf8(text)), count);
    return ObjectResult(call, call.TakeFault() ? nullptr : NewString(text));
} catch (const std::exception&) {
    return nullptr;
}

CFStringRef CFStringCreateWithPascalString(CFAllocatorRef allocator, ConstStr255Param text,
                                           CFStringEncoding encoding) try {
    PlatformCall call("CFStringCreateWithPascalString");
    if (!text) Misuse("CFStringCreateWithPascalString", "the text is NULL");
    const std::string bytes(text + 1, text + 1 + text[0]);
    if (call.IsTold()) Tell(call, allocator, Quoted(bytes), EncodingName(encoding));
    return ObjectResult(call, call.TakeFault() ? nullptr : NewDecodedString(bytes, encoding));
} catch (const std::bad_alloc&) {
    return nullptr;
}

CFIndex CFStringGetLength(CFStringRef string) {
    PlatformCall call("CFStringGetLength");
    const StringObject& checked = CheckedString(string, "CFStringGetLength");
    Tell(call, string);
    return call.Result(static_cast<CFIndex>(checked.units.size()));
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex size, CFStringEncoding encoding) try {
    PlatformCall call("CFStringGetCString");
    const StringObject& checked = CheckedString(string, "CFStringGetCString");
    if (call.IsTold()) Tell(call, string, std::string("buffer"), size, EncodingName(encoding));
    if (size < 1) return call.Result(Boolean{false});
    if (!buffer) Misuse("CFStringGetCString", "the buffer is NULL");
    buffer[0] = '\0';
    if (call.TakeFault()) return call.Result(Boolean{false});
    const auto bytes = Encode(checked.units, encoding);
    if (!bytes || bytes->size() >= static_cast<std::size_t>(size)) return call.Result(Boolean{false});
    std::memcpy(buffer, bytes->c_str(), bytes->size() + 1);
    return call.Result(Boolean{true});
} catch (const std::bad_alloc&) {
    return false;
}

void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer) {
    PlatformCall call("CFStringGetCharacters");
    const std::u16string_view units = CheckedString(string, "CFStringGetCharacters").units;
    const auto length = static_cast<CFIndex>(units.size());
    if (call.IsTold()) {
        Tell(call, string, '{' + std::to_string(range.location) + ", " + std::to_string(range.length) + '}',
             std::string("buffer"));
    }
    if (range.location < 0 || range.length < 0 || range.location > length ||
        range.length > length - range.location) {
        Misuse("CFStringGetCharacters", "the range {" + std::to_string(range.location) + ", " +
                                            std::to_string(range.length) + "} lies outside of a string of " +
                                            std::to_string(length) + " units");
    }
    const auto* first = units.data() + range.location;
    std::copy(first, first + range.length, buffer);
}
