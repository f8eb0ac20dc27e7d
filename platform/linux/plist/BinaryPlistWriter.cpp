#include "BinaryPlistWriter.h"

#include "corefoundation/TextEncoding.h"

#include <algorithm>
#include <cstring>
#include <utility>

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

std::string marker(BinaryKind kind, unsigned low) {
    return std::string(1, static_cast<char>(static_cast<unsigned>(kind) << 4 | low));
}

/// Only integers of 8 or 16 bytes have a sign, so a number from 2^63 needs 16 bytes.
std::string integerObject(std::uint64_t bits, bool isNegative) {
    const bool isHuge = !isNegative && bits > INT64_MAX;
    const unsigned width = isNegative ? 8 : widthFor(bits);
    std::string bytes = marker(BinaryKind::kInteger, isHuge ? 4 : width == 8 ? 3 : width / 2);
    if (isHuge) bytes.append(8, '\0');
    appendNumber(bytes, bits, width);
    return bytes;
}

/// Returns the first bytes of an object: its marker and its count.
std::string head(BinaryKind kind, std::size_t count) {
    if (count < kCountFollows) return marker(kind, static_cast<unsigned>(count));
    return marker(kind, kCountFollows) + integerObject(count, false);
}

std::string realObject(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    std::string bytes = marker(BinaryKind::kReal, 3); // 2^3 bytes follow.
    appendNumber(bytes, bits, 8);
    return bytes;
}

} // namespace

std::string ScalarObject(const PropertyValue& value) {
    switch (value.kind) {
    case PropertyValue::Kind::kBoolean:
        return marker(BinaryKind::kSimple, value.integer != 0 ? kTrueMarker : kFalseMarker);
    case PropertyValue::Kind::kInteger:
        return integerObject(static_cast<std::uint64_t>(value.integer), value.text[0] == '-');
    case PropertyValue::Kind::kReal:
        return realObject(value.real);
    default:
        return StringObject(value.text);
    }
}

std::string StringObject(const std::string& utf8) {
    if (std::all_of(utf8.begin(), utf8.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        return head(BinaryKind::kLatin1String, utf8.size()) + utf8;
    // `DecodeUtf8` drops a byte order mark at the start.
    // The added mark is dropped instead of a mark of the text.
    const auto units = DecodeUtf8("\xEF\xBB\xBF" + utf8).value_or(u"");
    std::string bytes = head(BinaryKind::kUtf16String, units.size());
    for (const char16_t unit : units) appendNumber(bytes, unit, 2);
    return bytes;
}

BinaryPlistWriter::Object BinaryPlistWriter::Add(std::string scalar) {
    objects.push_back({std::move(scalar), {}});
    return static_cast<Object>(objects.size() - 1);
}

BinaryPlistWriter::Object BinaryPlistWriter::AddContainer(BinaryKind kind, std::vector<Object> members) {
    const std::size_t count = kind == BinaryKind::kDictionary ? members.size() / 2 : members.size();
    objects.push_back({head(kind, count), std::move(members)});
    return static_cast<Object>(objects.size() - 1);
}

std::string BinaryPlistWriter::Bytes(Object root) const {
    const unsigned referenceWidth = widthFor(objects.size()); // Some readers want the count to fit, too.
    std::string bytes = "bplist00";
    std::vector<std::size_t> offsets;
    for (const EncodedObject& object : objects) {
        offsets.push_back(bytes.size());
        bytes += object.bytes;
        for (const Object member : object.members) appendNumber(bytes, member, referenceWidth);
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
