#include <CoreFoundation/CFUUID.h>

#include "CFUUIDObject.h"

#include <cstring>
#include <map>
#include <mutex>

using namespace macplatform;

namespace macplatform {
extern const ObjectClass kUuidClass;
}

struct __CFUUID : Object {
    explicit __CFUUID(const UuidBytes& held) : Object(kUuidClass), bytes(held) {}
    UuidBytes bytes;
};

namespace {

/// The UUID objects of the process. Equal bytes give the same object, so callers may compare references.
class UuidTable {
public:
    /// Returns the table. The table is never destroyed, because static objects of the caller may release
    /// their references at exit.
    static UuidTable& Get() {
        static UuidTable& gTable = *new UuidTable;
        return gTable;
    }

    /// Returns the object with these bytes, with one reference for the caller. Throws std::bad_alloc.
    __CFUUID& Read(const UuidBytes& bytes) {
        const std::lock_guard lock(mutex);
        __CFUUID*& place = uuids[bytes];
        // TryRetain fails if another thread frees the object at this moment. A new object then takes its
        // place, and Forget does not remove the new object.
        if (place && TryRetain(*place)) return *place;
        return *(place = MakeObject<__CFUUID>(0, bytes));
    }

    void Forget(const __CFUUID& uuid) {
        const std::lock_guard lock(mutex);
        const auto place = uuids.find(uuid.bytes);
        if (place != uuids.end() && place->second == &uuid) uuids.erase(place);
    }

private:
    std::mutex mutex;
    std::map<UuidBytes, __CFUUID*> uuids;
};

const __CFUUID& toUuid(const Object& object) { return static_cast<const __CFUUID&>(object); }

std::string describeUuid(const Object& object) { return UuidText(toUuid(object).bytes); }

bool equalUuids(const Object& left, const Object& right) { return toUuid(left).bytes == toUuid(right).bytes; }

void finaliseUuid(Object& object) { UuidTable::Get().Forget(toUuid(object)); }

int digitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}

/// Returns the text without blanks at both ends and without the braces around it.
std::string_view withoutBraces(std::string_view text) {
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    const bool hasBraces = text.size() >= 2 && text.front() == '{' && text.back() == '}';
    return hasBraces ? text.substr(1, text.size() - 2) : text;
}

bool isGroupStart(std::size_t byteIndex) {
    return byteIndex == 4 || byteIndex == 6 || byteIndex == 8 || byteIndex == 10;
}

} // namespace

const ObjectClass macplatform::kUuidClass = {17, "UUID", &describeUuid, &equalUuids, &finaliseUuid};

std::string macplatform::UuidText(const UuidBytes& bytes) {
    static const char digits[] = "0123456789ABCDEF";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (isGroupStart(i)) text += '-';
        (text += digits[bytes[i] >> 4]) += digits[bytes[i] & 15];
    }
    return text;
}

std::optional<UuidBytes> macplatform::ParseUuid(std::string_view text) {
    text = withoutBraces(text);
    if (text.empty()) return std::nullopt;
    UuidBytes bytes{};
    for (std::size_t i = 0; i < bytes.size() && !text.empty(); ++i) {
        if (isGroupStart(i)) {
            if (text.front() != '-') return std::nullopt;
            text.remove_prefix(1);
        }
        const int high = text.size() < 2 ? -1 : digitValue(text[0]);
        const int low = text.size() < 2 ? -1 : digitValue(text[1]);
        if (high < 0 || low < 0) return std::nullopt;
        bytes[i] = static_cast<std::uint8_t>(high << 4 | low);
        text.remove_prefix(2);
    }
    return text.empty() ? std::optional(bytes) : std::nullopt;
}

const UuidBytes& macplatform::BytesOf(CFUUIDRef uuid, const char* function) {
    return toUuid(CheckedObject(uuid, function, kUuidClass)).bytes;
}

CFUUIDRef macplatform::NewUuid(const UuidBytes& bytes) { return &UuidTable::Get().Read(bytes); }

CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef allocator, CFUUIDBytes given) {
    UuidBytes bytes;
    static_assert(sizeof given == sizeof bytes);
    std::memcpy(bytes.data(), &given, sizeof given);
    const auto show = [&] { return ArgumentTexts(allocator, UuidText(bytes)); };
    return MakeObjectCall("CFUUIDCreateFromUUIDBytes", show, [&] { return NewUuid(bytes); });
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid) {
    const UuidBytes& bytes = BytesOf(uuid, "CFUUIDGetUUIDBytes");
    CFUUIDBytes result;
    std::memcpy(&result, bytes.data(), sizeof result);
    PlatformCall call("CFUUIDGetUUIDBytes"); // MakePlatformCall cannot show a structure as the result
    call.Record(Shown(uuid));
    if (call.IsRecorded()) call.Result(0, UuidText(bytes));
    return result;
}

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef allocator, UInt8 byte0, UInt8 byte1, UInt8 byte2,
                                         UInt8 byte3, UInt8 byte4, UInt8 byte5, UInt8 byte6, UInt8 byte7,
                                         UInt8 byte8, UInt8 byte9, UInt8 byte10, UInt8 byte11, UInt8 byte12,
                                         UInt8 byte13, UInt8 byte14, UInt8 byte15) {
    const UuidBytes bytes = {byte0, byte1, byte2,  byte3,  byte4,  byte5,  byte6,  byte7,
                             byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15};
    const auto show = [&] { return ArgumentTexts(allocator, UuidText(bytes)); };
    return MakeObjectCall("CFUUIDGetConstantUUIDWithBytes", show, [&]() -> CFUUIDRef {
        __CFUUID& uuid = UuidTable::Get().Read(bytes);
        MakeImmortal(uuid);
        return &uuid;
    });
}
