#include "PropertyListBytes.h"

#include <cerrno>
#include <cstdint>
#include <iconv.h>
#include <memory>
#include <string_view>
#include <strings.h>

namespace macplatform {

namespace {

struct ByteOrderMark {
    std::string_view bytes;
    const char* encoding;
};
constexpr ByteOrderMark kMarks[] = {{{"\x00\x00\xFE\xFF", 4}, "UTF-32BE"},
                                    {{"\xFF\xFE\x00\x00", 4}, "UTF-32LE"},
                                    {"\xEF\xBB\xBF", "UTF-8"},
                                    {"\xFE\xFF", "UTF-16BE"},
                                    {"\xFF\xFE", "UTF-16LE"}};

/// Returns the name in `encoding="NAME"` of the XML declaration, or an empty view without one.
std::string_view declaredEncoding(std::string_view text) {
    constexpr std::string_view attribute = "encoding=";
    const std::string_view declaration = text.substr(0, text.find_first_of("?>", 5));
    const std::size_t found = declaration.find(attribute);
    if (text.substr(0, 5) != "<?xml" || found == declaration.npos) return {};
    const std::string_view quoted = declaration.substr(found + attribute.size());
    const bool isQuoted = quoted.substr(0, 1) == "\"" || quoted.substr(0, 1) == "'";
    const std::size_t end = isQuoted ? quoted.find(quoted[0], 1) : quoted.npos;
    return end == quoted.npos ? std::string_view() : quoted.substr(1, end - 1);
}

bool areSameName(const std::string& left, const char* right) { return strcasecmp(left.c_str(), right) == 0; }

/// Converts bytes to UTF-8 with the C library.
std::string converted(std::string bytes, const std::string& encoding) {
    constexpr char allowed[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.:";
    const bool isName = encoding.find_first_not_of(allowed) == encoding.npos;
    // The Mac reads bytes from 80 in ASCII as Latin-1.
    const bool isAscii = areSameName(encoding, "US-ASCII") || areSameName(encoding, "ASCII");
    const char* const name = isAscii ? "ISO-8859-1" : encoding.c_str();
    const iconv_t opened = iconv_open("UTF-8", isName ? name : "none");
    if (reinterpret_cast<std::intptr_t>(opened) == -1) throw PropertyListError("the encoding is unknown");
    const std::unique_ptr<void, int (*)(iconv_t)> conversion(opened, &iconv_close);
    std::string text;
    char* in = bytes.data();
    std::size_t left = bytes.size();
    while (left > 0) {
        char block[4096];
        char* out = block;
        std::size_t capacity = sizeof block;
        const bool isDone =
            iconv(conversion.get(), &in, &left, &out, &capacity) != static_cast<std::size_t>(-1);
        if (!isDone && errno != E2BIG) throw PropertyListError("not encoded in " + encoding);
        text.append(block, out);
    }
    return text;
}

PropertyListText convertedText(const std::string& bytes, const std::string& encoding) {
    PropertyListText decoded = {converted(bytes, encoding), 0, encoding};
    const std::string_view declared = declaredEncoding(decoded.text);
    if (!declared.empty()) {
        const auto at = static_cast<std::size_t>(declared.data() - decoded.text.data());
        decoded.text.replace(at, declared.size(), "UTF-8");
    }
    return decoded;
}

} // namespace

PropertyListText DecodePropertyListText(const std::string& bytes) {
    for (const ByteOrderMark& mark : kMarks) {
        if (bytes.compare(0, mark.bytes.size(), mark.bytes) != 0) continue;
        if (areSameName(mark.encoding, "UTF-8")) return {bytes, mark.bytes.size(), {}};
        return convertedText(bytes.substr(mark.bytes.size()), mark.encoding);
    }
    const std::string declared(declaredEncoding(bytes));
    const bool isUtf8 = declared.empty() || areSameName(declared, "UTF-8") || areSameName(declared, "UTF8");
    return isUtf8 ? PropertyListText{bytes, 0, {}} : convertedText(bytes, declared);
}

} // namespace macplatform
