#include <CoreFoundation/CFString.h>

#include "CFStringObject.h"
#include "TextEncoding.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>

namespace macplatform {

namespace {

const StringObject& toString(const Object& object) { return static_cast<const StringObject&>(object); }

std::string describeString(const Object& object) {
    const std::string text = ReadableUtf8(toString(object).units);
    return toString(object).displayStyle == DisplayStyle::kName ? text : Quoted(text);
}

bool equalStrings(const Object& left, const Object& right) {
    return toString(left).units == toString(right).units;
}

const StringObject& checkedString(CFStringRef string, const char* function) {
    return toString(CheckedObject(string, function, kStringClass));
}

} // namespace

const ObjectClass kStringClass = {7, "string", &describeString, &equalStrings, nullptr};

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
    return EncodeUtf8(checkedString(string, function).units);
}

namespace {

std::string encodingName(CFStringEncoding encoding) {
    switch (encoding) {
    case kCFStringEncodingMacRoman: return "kCFStringEncodingMacRoman";
    case kCFStringEncodingASCII: return "kCFStringEncodingASCII";
    case kCFStringEncodingUTF8: return "kCFStringEncodingUTF8";
    default: return std::to_string(encoding);
    }
}

std::optional<std::u16string> decode(std::string_view bytes, CFStringEncoding encoding) {
    switch (encoding) {
    case kCFStringEncodingMacRoman: return DecodeMacRoman(bytes);
    case kCFStringEncodingASCII: return DecodeAscii(bytes);
    case kCFStringEncodingUTF8: return DecodeUtf8(bytes);
    default: return std::nullopt;
    }
}

/// Creates a string from encoded bytes. Returns null if the bytes are not valid or the encoding is unknown.
CFStringRef newDecodedString(std::string_view bytes, CFStringEncoding encoding) {
    const auto units = decode(bytes, encoding);
    return units ? NewString(*units) : nullptr;
}

std::optional<std::string> encode(std::u16string_view units, CFStringEncoding encoding) {
    switch (encoding) {
    case kCFStringEncodingMacRoman: return EncodeMacRoman(units);
    case kCFStringEncodingASCII: return EncodeAscii(units);
    case kCFStringEncodingUTF8: return EncodeUtf8(units);
    default: return std::nullopt;
    }
}

} // namespace
} // namespace macplatform

using namespace macplatform;

// This call is not recorded, because on the Mac the compiler creates constant strings without a call.
CFStringRef __CFStringMakeConstantString(const char* text) try {
    static auto& gMutex = *new std::mutex;
    static auto& gConstants = *new std::map<std::string, CFStringRef, std::less<>>;
    const std::lock_guard lock(gMutex);
    const auto known = gConstants.find(std::string_view(text));
    if (known != gConstants.end()) return known->second;
    const std::string key = text;
    if (std::any_of(key.begin(), key.end(), [](char c) { return static_cast<unsigned char>(c) >= 0x80; })) {
        Misuse("CFSTR", "the string is not ASCII: " + Quoted(key));
    }
    const auto place = gConstants.emplace(key, nullptr).first;
    place->second = NewString(DecodeAscii(key));
    MakeImmortal(const_cast<__CFString&>(*place->second));
    return place->second;
} catch (const std::bad_alloc&) {
    return nullptr;
}

CFTypeID CFStringGetTypeID() {
    return MakePlatformCall("CFStringGetTypeID", [] { return kStringClass.id; });
}

CFStringRef CFStringCreateWithCString(CFAllocatorRef allocator, const char* text, CFStringEncoding encoding) {
    if (!text) Misuse("CFStringCreateWithCString", "the C string is NULL");
    const auto show = [&] { return ArgumentTexts(allocator, text, encodingName(encoding)); };
    return MakeObjectCall("CFStringCreateWithCString", show,
                          [&] { return newDecodedString(text, encoding); });
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* units, CFIndex count) {
    if (!units && count > 0) Misuse("CFStringCreateWithCharacters", "the array of units is NULL");
    const auto length = static_cast<std::size_t>(count);
    const bool isPossible = count >= 0 && length <= std::u16string().max_size();
    const auto text = [&] { return std::u16string(units, units + (isPossible ? length : 0)); };
    const auto show = [&] { return ArgumentTexts(allocator, Quoted(ReadableUtf8(text())), count); };
    return MakeObjectCall("CFStringCreateWithCharacters", show,
                          [&]() -> CFStringRef { return isPossible ? NewString(text()) : nullptr; });
}

CFStringRef CFStringCreateWithPascalString(CFAllocatorRef allocator, ConstStr255Param text,
                                           CFStringEncoding encoding) {
    if (!text) Misuse("CFStringCreateWithPascalString", "the Pascal string is NULL");
    const auto bytes = [text] { return std::string(text + 1, text + 1 + text[0]); };
    const auto show = [&] { return ArgumentTexts(allocator, Quoted(bytes()), encodingName(encoding)); };
    return MakeObjectCall("CFStringCreateWithPascalString", show,
                          [&] { return newDecodedString(bytes(), encoding); });
}

CFIndex CFStringGetLength(CFStringRef string) {
    const StringObject& checked = checkedString(string, "CFStringGetLength");
    return MakePlatformCall<NoFailure>("CFStringGetLength", Shown(string),
                                       [&] { return static_cast<CFIndex>(checked.units.size()); });
}

Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex size, CFStringEncoding encoding) {
    const StringObject& checked = checkedString(string, "CFStringGetCString");
    if (size >= 1 && !buffer) Misuse("CFStringGetCString", "the buffer is NULL");
    if (size >= 1) buffer[0] = '\0';
    const auto show = [&] {
        return ArgumentTexts(string, std::string("buffer"), size, encodingName(encoding));
    };
    return MakePlatformCall("CFStringGetCString", show, [&]() -> Boolean {
        const auto bytes = encode(checked.units, encoding);
        if (!bytes || size < 1 || bytes->size() >= static_cast<std::size_t>(size)) return false;
        std::memcpy(buffer, bytes->c_str(), bytes->size() + 1);
        return true;
    });
}

void CFStringGetCharacters(CFStringRef string, CFRange range, UniChar* buffer) {
    const std::u16string_view units = checkedString(string, "CFStringGetCharacters").units;
    const auto length = static_cast<CFIndex>(units.size());
    const std::string shownRange =
        '{' + std::to_string(range.location) + ", " + std::to_string(range.length) + '}';
    if (range.location < 0 || range.length < 0 || range.location > length ||
        range.length > length - range.location) {
        Misuse("CFStringGetCharacters",
               "the range " + shownRange + " is outside a string of " + std::to_string(length) + " units");
    }
    const auto show = [&] { return ArgumentTexts(string, shownRange, std::string("buffer")); };
    MakePlatformCall<NoFailure>("CFStringGetCharacters", show, [&] {
        const auto* first = units.data() + range.location;
        std::copy(first, first + range.length, buffer);
    });
}
