#include "BinaryPlistWriter.h"

#include "corefoundation/TextEncoding.h"

#include <algorithm>
#include <cstring>

namespace macplatform {

namespace {

void appendNumber(std::string& bytes, std::uint64_t value, unsigned width) {
    for (unsigned shift = width * 8; shift > 0; shift -= 8)
        bytes += static_cast<char>(value >> (shift - 8) & 0xFF);
}

/// Returns the number of bytes (1, 2, 4 or 8) that a number up to `largest` needs.
unsigned widthFor(std::uint64_t largest) {
    unsigned width = 1;
    while (width < 8 && largest >> (width * 8) != 0) width *= 2;
    return width;
}

/// Returns the first bytes of an object: its kind and count.
std::string head(BinaryKind kind, std::size_t count) {
    constexpr std::size_t inItsOwnObject = 0x0F;
    const auto upper = static_cast<unsigned>(kind) << 4;
    std::string bytes(1, static_cast<char>(upper | std::min(count, inItsOwnObject)));
    if (count >= inItsOwnObject) bytes += IntegerObject(count, false);
    return bytes;
}

std::string eightBytes(BinaryKind kind, double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    std::string bytes(1, static_cast<char>(static_cast<unsigned>(kind) << 4 | 3)); // 2^3 bytes follow.
    appendNumber(bytes, bits, 8);
    return bytes;
}

} // namespace

std::string BooleanObject(bool value) { return value ? "\x09" : "\x08"; }

/// Only integers of 8 or 16 bytes have a sign, so a number from 2^63 needs 16 bytes.
std::string IntegerObject(std::uint64_t magnitude, bool isNegative) {
    const bool isHuge = !isNegative && magnitude > INT64_MAX;
    const unsigned width = isNegative ? 8 : widthFor(magnitude);
    const unsigned power = isHuge ? 4 : width == 8 ? 3 : width / 2;
    std::string bytes(1, static_cast<char>(0x10 | power));
    if (isHuge) bytes.append(8, '\0');
    appendNumber(bytes, isNegative ? 0 - magnitude : magnitude, width);
    return bytes;
}

std::string RealObject(double value) { return eightBytes(BinaryKind::kReal, value); }
std::string DateObject(double seconds) { return eightBytes(BinaryKind::kDate, seconds); }
std::string DataObject(std::string_view bytes) { return head(BinaryKind::kData, bytes.size()).append(bytes); }

std::string StringObject(std::string_view text) {
    if (std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
        return head(BinaryKind::kAsciiString, text.size()).append(text);
    }
    // `DecodeUtf8` drops a byte order mark at the start.
    // The added mark is dropped instead of a mark of the text.
    const auto units = DecodeUtf8("\xEF\xBB\xBF" + std::string(text)).value_or(u"");
    std::string bytes = head(BinaryKind::kUtf16String, units.size());
    for (const char16_t unit : units) appendNumber(bytes, unit, 2);
    return bytes;
}

BinaryPlistWriter::Object BinaryPlistWriter::Add(std::string_view scalar) {
    objects.push_back({BinaryKind::kSimple, scalars.size(), scalar.size()});
    scalars += scalar;
    return static_cast<Object>(objects.size() - 1);
}

BinaryPlistWriter::Object BinaryPlistWriter::AddContainer(BinaryKind kind,
                                                          const std::vector<Object>& members) {
    objects.push_back({kind, references.size(), members.size()});
    references.insert(references.end(), members.begin(), members.end());
    return static_cast<Object>(objects.size() - 1);
}

std::string BinaryPlistWriter::Bytes(Object root) const {
    const unsigned referenceWidth = widthFor(objects.size() - 1);
    std::string bytes = "bplist00";
    std::vector<std::size_t> offsets;
    for (const Extent& object : objects) {
        offsets.push_back(bytes.size());
        if (object.kind == BinaryKind::kSimple) {
            bytes.append(scalars, object.first, object.count);
            continue;
        }
        bytes += head(object.kind, object.kind == BinaryKind::kDictionary ? object.count / 2 : object.count);
        for (std::size_t i = 0; i < object.count; ++i) {
            appendNumber(bytes, references[object.first + i], referenceWidth);
        }
    }
    const std::size_t table = bytes.size();
    const unsigned offsetWidth = widthFor(table);
    for (const std::size_t offset : offsets) appendNumber(bytes, offset, offsetWidth);
    bytes.append(6, '\0');
    appendNumber(bytes, offsetWidth, 1);
    appendNumber(bytes, referenceWidth, 1);
    for (const std::size_t number : {offsets.size(), std::size_t{root}, table})
        appendNumber(bytes, number, 8);
    return bytes;
}

} // namespace macplatform
