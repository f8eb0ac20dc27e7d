#include "BinaryPlistReader.h"

#include "PropertyListLimits.h"
#include "corefoundation/TextEncoding.h"

#include <algorithm>
#include <cstdint>

namespace macplatform {

/// Returns the big-endian number at an offset, which must be inside the bytes. Returns SIZE_MAX if the number
/// does not fit into `std::size_t`.
std::size_t BinaryPlistReader::Number(std::size_t at, unsigned width) const {
    std::uint64_t value = 0;
    for (std::size_t i = at; i < at + width; ++i) value = value << 8 | static_cast<unsigned char>(bytes[i]);
    return value < SIZE_MAX ? static_cast<std::size_t>(value) : SIZE_MAX;
}

bool BinaryPlistReader::ReadTrailer() {
    if (bytes.size() < 8 + 32) return false;
    const std::size_t trailer = bytes.size() - 32;
    offsetWidth = static_cast<unsigned char>(bytes[trailer + 6]);
    referenceWidth = static_cast<unsigned char>(bytes[trailer + 7]);
    objectCount = Number(trailer + 8, 8);
    root = Number(trailer + 16, 8);
    table = Number(trailer + 24, 8);
    return offsetWidth >= 1 && offsetWidth <= 8 && referenceWidth >= 1 && referenceWidth <= 8 &&
           objectCount >= 1 && objectCount <= kMaxPropertyListValues && root < objectCount && table >= 8 &&
           table <= trailer && objectCount <= (trailer - table) / offsetWidth;
}

std::optional<BinaryPlistReader::Extent> BinaryPlistReader::ExtentOf(std::size_t object) const {
    const std::size_t at = Number(table + object * offsetWidth, offsetWidth);
    if (at < 8 || at >= table) return std::nullopt;
    Extent extent = {static_cast<BinaryKind>(Number(at, 1) >> 4), at, at + 1, Number(at, 1) & 0x0F};
    if (extent.kind < BinaryKind::kData || extent.kind == BinaryKind::kUid || extent.count != 0x0F)
        return extent;
    if (extent.first >= table || Number(extent.first, 1) >> 4 != 1) return std::nullopt;
    const unsigned shift = static_cast<unsigned>(Number(extent.first, 1)) & 0x0F;
    if (shift > 3 || extent.first + 1 + (1U << shift) > table) return std::nullopt;
    extent.count = Number(extent.first + 1, 1U << shift);
    extent.first += 1 + (1U << shift);
    return extent;
}

std::optional<BinaryKind> BinaryPlistReader::KindOf(std::size_t object) const {
    const auto extent = ExtentOf(object);
    return extent ? std::optional(extent->kind) : std::nullopt;
}

std::optional<std::vector<std::size_t>> BinaryPlistReader::Children(std::size_t object) const {
    const auto extent = ExtentOf(object);
    if (!extent) return std::nullopt;
    if (!IsContainer(extent->kind)) return std::vector<std::size_t>();
    const bool isDictionary = extent->kind == BinaryKind::kDictionary;
    const unsigned references = isDictionary ? 2 : 1;
    if (extent->count > (table - extent->first) / referenceWidth / references) return std::nullopt;
    std::vector<std::size_t> children(extent->count * references);
    for (std::size_t i = 0; i < children.size(); ++i) {
        children[i] = Number(extent->first + i * referenceWidth, referenceWidth);
        if (children[i] >= objectCount) return std::nullopt;
    }
    return children;
}

std::optional<std::string> BinaryPlistReader::StringOf(std::size_t object) const {
    const auto extent = ExtentOf(object);
    if (!extent) return std::nullopt;
    if (extent->kind == BinaryKind::kAsciiString && extent->count <= table - extent->first) {
        const std::string_view text = std::string_view(bytes).substr(extent->first, extent->count);
        const bool isWhole = std::all_of(
            text.begin(), text.end(), [](char c) { return c != 0 && static_cast<unsigned char>(c) < 0x80; });
        return isWhole ? std::optional<std::string>(text) : std::nullopt;
    }
    if (extent->kind != BinaryKind::kUtf16String || extent->count > (table - extent->first) / 2)
        return std::nullopt;
    std::u16string units(extent->count, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i) {
        units[i] = static_cast<char16_t>(Number(extent->first + i * 2, 2));
        if (units[i] == 0) return std::nullopt;
    }
    return EncodeUtf8(units);
}

std::optional<std::string_view> BinaryPlistReader::ScalarBytes(std::size_t object) const {
    const auto extent = ExtentOf(object);
    if (!extent || IsContainer(extent->kind)) return std::nullopt;
    std::size_t size = 0;
    switch (extent->kind) {
    case BinaryKind::kInteger:
    case BinaryKind::kReal:
    case BinaryKind::kDate:
        size = std::size_t{1} << extent->count;
        break;
    case BinaryKind::kUid:
        size = extent->count + 1;
        break;
    case BinaryKind::kData:
    case BinaryKind::kAsciiString:
        size = extent->count;
        break;
    case BinaryKind::kUtf16String:
        if (extent->count > table / 2) return std::nullopt;
        size = extent->count * 2;
        break;
    case BinaryKind::kSimple: // The object has only its first byte.
        break;
    default:
        return std::nullopt;
    }
    if (size > table - extent->first) return std::nullopt;
    return std::string_view(bytes).substr(extent->at, extent->first - extent->at + size);
}

} // namespace macplatform
