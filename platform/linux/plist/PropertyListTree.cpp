#include "PropertyListTree.h"

#include "BinaryPlistValidation.h"
#include "PropertyListLimits.h"
#include "PropertyListXml.h"
#include "trace/PlatformCall.h"

#include <cstdlib>
#include <ctime>
#include <limits>
#include <locale.h>

namespace macplatform {

namespace {

struct FreeBlock {
    void operator()(void* block) const { std::free(block); }
};
using Block = std::unique_ptr<char, FreeBlock>;

std::string dateText(plist_t node) {
    constexpr std::int64_t secondsFrom1970To2001 = 978307200;
    // The calendar repeats after 28 years until 2100: each date has the same day of the week again.
    constexpr std::int64_t secondsIn28Years = 883612800;
    std::int32_t seconds = 0, microseconds = 0;
    plist_get_date_val(node, &seconds, &microseconds);
    const std::int64_t time = seconds + secondsFrom1970To2001;
    const bool isLate = time > INT32_MAX; // A time_t of 32 bits cannot represent the time.
    const auto calendarTime = static_cast<time_t>(isLate ? time - secondsIn28Years : time);
    tm parts{};
    char text[32] = "";
    if (!gmtime_r(&calendarTime, &parts)) return text;
    if (isLate) parts.tm_year += 28;
    static_cast<void>(std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts));
    return text;
}

std::string hexText(plist_t node) {
    static const char digits[] = "0123456789abcdef";
    std::uint64_t length = 0;
    const char* const data = plist_get_data_ptr(node, &length);
    std::string text;
    for (std::uint64_t i = 0; data && i < length; ++i) {
        const auto byte = static_cast<unsigned char>(data[i]);
        (text += digits[byte >> 4]) += digits[byte & 15];
    }
    return text;
}

void readInteger(plist_t node, PropertyValue& value) {
    std::uint64_t bits = 0;
    plist_get_uint_val(node, &bits);
    value.integer = static_cast<std::int64_t>(bits);
    // The parser returns no sign, so an integer from 2^63 on cannot be distinguished from a negative one.
    value.text = std::to_string(value.integer);
}

void readString(plist_t node, PropertyValue& value) {
    std::uint64_t length = 0;
    if (const char* const text = plist_get_string_ptr(node, &length)) {
        value.text.assign(text, static_cast<std::size_t>(length));
    }
}

void readItems(plist_t node, PropertyValue& value) {
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(node, &iterator);
    const std::unique_ptr<void, FreeBlock> guard(iterator);
    for (plist_t item = nullptr; plist_array_next_item(node, iterator, &item), item; item = nullptr) {
        value.items.push_back(ValueOf(item));
    }
}

void readEntries(plist_t node, PropertyValue& value) {
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    const std::unique_ptr<void, FreeBlock> guard(iterator);
    for (;;) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, iterator, &key, &item);
        const Block owned(key);
        if (!item) return;
        value.keys.emplace_back(key ? key : "");
        value.values.push_back(ValueOf(item));
    }
}

/// Sets the "C" locale for the thread while the object exists. The parser writes numbers in the format of the
/// locale, and a reader would drop the fraction after a decimal comma.
class CLocaleScope {
public:
    CLocaleScope() : cLocale(newlocale(LC_ALL_MASK, "C", nullptr)), before(uselocale(cLocale)) {}
    CLocaleScope(const CLocaleScope&) = delete;
    CLocaleScope& operator=(const CLocaleScope&) = delete;
    ~CLocaleScope() {
        uselocale(before);
        if (cLocale) freelocale(cLocale);
    }

private:
    locale_t cLocale, before;
};

} // namespace

PropertyListFormat FormatOf(const std::string& bytes) {
    return bytes.compare(0, 8, "bplist00") == 0 ? PropertyListFormat::kBinary : PropertyListFormat::kXml;
}

std::string ToBinaryPlist(const std::string& bytes, std::string& error) {
    error.clear();
    if (bytes.size() > kMaxPropertyListBytes) {
        error = "larger than 64 MiB";
    } else if (bytes.empty()) {
        error = "the file is empty";
    } else if (FormatOf(bytes) == PropertyListFormat::kXml) {
        return BinaryPlistFromXml(bytes, error);
    } else {
        error = ValidateBinaryPlist(bytes);
    }
    return error.empty() ? bytes : std::string();
}

PropertyListTree ParseBinaryPlist(const std::string& plist, std::string& error) {
    plist_t tree = nullptr; // `plist_from_bin` reads this value before it writes the result.
    plist_from_bin(plist.data(), static_cast<std::uint32_t>(plist.size()), &tree);
    if (!tree) error = "not a property list";
    return PropertyListTree(tree);
}

PropertyListTree ParsePropertyList(const std::string& bytes, std::string& error) {
    const std::string plist = ToBinaryPlist(bytes, error);
    return plist.empty() ? nullptr : ParseBinaryPlist(plist, error);
}

std::string ToXmlPlist(const std::string& plist) {
    std::string error;
    const PropertyListTree tree = ParseBinaryPlist(plist, error);
    const CLocaleScope cLocale;
    char* text = nullptr;
    std::uint32_t length = 0;
    if (tree) plist_to_xml(tree.get(), &text, &length);
    const Block owned(text);
    return text ? std::string(text, length) : std::string();
}

PropertyValue ValueOf(plist_t node) {
    using Kind = PropertyValue::Kind;
    PropertyValue value;
    const auto made = [&value](Kind kind) -> PropertyValue& {
        value.kind = kind;
        return value;
    };
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t truth = 0;
        plist_get_bool_val(node, &truth);
        made(Kind::kBoolean).integer = truth ? 1 : 0;
        value.text = truth ? "true" : "false";
        break;
    }
    case PLIST_UINT:
        readInteger(node, made(Kind::kInteger));
        break;
    case PLIST_REAL: {
        double real = 0;
        plist_get_real_val(node, &real);
        made(Kind::kReal).text = Digits(real);
        break;
    }
    case PLIST_STRING:
        readString(node, made(Kind::kString));
        break;
    case PLIST_DATA:
        made(Kind::kData).text = hexText(node);
        break;
    case PLIST_DATE:
        made(Kind::kDate).text = dateText(node);
        break;
    case PLIST_UID: {
        std::uint64_t uid = 0;
        plist_get_uid_val(node, &uid);
        made(Kind::kUid).text = std::to_string(uid);
        break;
    }
    case PLIST_ARRAY:
        readItems(node, made(Kind::kArray));
        break;
    case PLIST_DICT:
        readEntries(node, made(Kind::kDictionary));
        break;
    default:
        break;
    }
    return value;
}

} // namespace macplatform
