#include "BinaryPlistReader.h"

#include "PropertyListLimits.h"
#include "PropertyValues.h"
#include "corefoundation/TextEncoding.h"

#include <cstdint>
#include <cstring>

namespace macplatform {

namespace {

constexpr std::size_t kHeaderBytes = 8, kTrailerBytes = 32, kWidestNumber = 16;

[[noreturn]] void refuse() { throw PropertyListError("the binary property list is damaged"); }

void require(bool isIntact) {
    if (!isIntact) refuse();
}

/// Returns the lowest 64 bits of a big-endian number.
std::uint64_t bigEndian(std::string_view bytes) {
    std::uint64_t number = 0;
    for (const char c : bytes) number = number << 8 | static_cast<unsigned char>(c);
    return number;
}

PropertyValue integerValue(std::string_view bytes) {
    const std::uint64_t low = bigEndian(bytes);
    const auto number = static_cast<std::int64_t>(low);
    if (bytes.size() < 8) return UnsignedValue(low);
    if (bytes.size() == 8) return IntegerValue(number);
    const std::uint64_t high = bigEndian(bytes.substr(0, 8));
    if (high == 0) return UnsignedValue(low);
    PropertyValue value = IntegerValue(number);
    if (high != UINT64_MAX || number >= 0) value.text = "0x" + DataValue(bytes).text;
    return value;
}

double realFrom(std::string_view bytes) {
    const std::uint64_t bits = bigEndian(bytes);
    const auto low = static_cast<std::uint32_t>(bits);
    double real = 0;
    float shortReal = 0;
    std::memcpy(&real, &bits, sizeof real);
    std::memcpy(&shortReal, &low, sizeof shortReal);
    return bytes.size() == sizeof real ? real : static_cast<double>(shortReal);
}

std::u16string utf16From(std::string_view bytes) {
    std::u16string units;
    for (std::size_t i = 0; i < bytes.size(); i += 2)
        units += static_cast<char16_t>(bigEndian(bytes.substr(i, 2)));
    return units;
}

/// Reads an object and its members. The limit of the depth limits the recursion.
class BinaryReader {
public:
    explicit BinaryReader(const std::string& bytes) : objects(bytes), isOpen(objects.Count()) {}

    PropertyValue Root() { return ValueOf(objects.Root()); }

private:
    PropertyValue ValueOf(std::size_t object) {
        if (++valueCount > kMaxPropertyListValues) throw PropertyListError(kTooManyValues);
        const BinaryKind kind = objects.KindOf(object);
        if (!IsContainer(kind)) return Charged(objects.ScalarValue(object));
        if (isOpen[object]) throw PropertyListError("an object contains itself");
        if (++depth > kMaxPropertyListDepth) throw PropertyListError(kTooDeep);
        if (objects.MemberCount(object) > kMaxPropertyListValues) throw PropertyListError(kTooManyValues);
        isOpen[object] = true;
        PropertyValue container = ContainerOf(kind, objects.Members(object));
        isOpen[object] = false;
        --depth;
        return container;
    }

    PropertyValue ContainerOf(BinaryKind kind, const std::vector<std::size_t>& members) {
        using Kind = PropertyValue::Kind;
        const bool isDictionary = kind == BinaryKind::kDictionary;
        PropertyValue container = ContainerValue(isDictionary               ? Kind::kDictionary
                                                 : kind == BinaryKind::kSet ? Kind::kSet
                                                                            : Kind::kArray);
        const std::size_t keyCount = isDictionary ? members.size() / 2 : 0;
        for (std::size_t i = 0; i < keyCount; ++i) container.keys.push_back(KeyOf(members[i]));
        auto& values = isDictionary ? container.values : container.items;
        for (std::size_t i = keyCount; i < members.size(); ++i) values.push_back(ValueOf(members[i]));
        RemoveRepeatedKeys(container, RepeatedKeys::kFirstCounts);
        return container;
    }

    std::string KeyOf(std::size_t object) {
        const PropertyValue key = ValueOf(object);
        if (key.kind == PropertyValue::Kind::kString) return key.text;
        const std::string other = PropertyValue::kOtherKeyMark + std::string(key.KindName()) + ' ';
        return Charged(StringValue(other + key.Describe())).text;
    }

    /// Counts the text of a value against the limit.
    PropertyValue Charged(PropertyValue value) {
        textBytes += value.text.size();
        if (textBytes > kMaxPropertyListText)
            throw PropertyListError("more than 256 MiB of strings and data");
        return value;
    }

    BinaryPlistObjects objects;
    std::vector<bool> isOpen; ///< Whether the object is being read, by its number.
    std::size_t valueCount = 0, textBytes = 0;
    unsigned depth = 0;
};

} // namespace

BinaryPlistObjects::BinaryPlistObjects(const std::string& source) : bytes(source) {
    require(bytes.size() >= kHeaderBytes + kTrailerBytes);
    const std::size_t trailer = bytes.size() - kTrailerBytes;
    offsetWidth = Number(trailer + 6, 1);
    referenceWidth = Number(trailer + 7, 1);
    objectCount = Number(trailer + 8, 8);
    root = Number(trailer + 16, 8);
    table = Number(trailer + 24, 8);
    require(offsetWidth >= 1 && offsetWidth <= kWidestNumber && table > kHeaderBytes && table <= trailer);
    require(referenceWidth >= 1 && referenceWidth <= kWidestNumber && root < objectCount);
    require(objectCount <= (trailer - table) / offsetWidth);
    if (objectCount > kMaxPropertyListValues) throw PropertyListError(kTooManyValues);
}

/// Returns the big-endian number at an offset, which must be inside the bytes. Returns SIZE_MAX if the number
/// does not fit into `std::size_t`.
std::size_t BinaryPlistObjects::Number(std::size_t at, std::size_t width) const {
    std::size_t number = 0;
    for (std::size_t i = at; i < at + width; ++i) {
        if (number > SIZE_MAX >> 8) return SIZE_MAX;
        number = number << 8 | static_cast<unsigned char>(bytes[i]);
    }
    return number;
}

BinaryPlistObjects::Extent BinaryPlistObjects::ExtentOf(std::size_t object) const {
    const std::size_t at = Number(table + object * offsetWidth, offsetWidth);
    require(at >= kHeaderBytes && at < table);
    const auto marker = static_cast<unsigned char>(bytes[at]);
    const unsigned low = marker & 0x0FU;
    Extent extent = {static_cast<BinaryKind>(marker >> 4), low, at, at + 1, low};
    const bool hasCount = extent.kind >= BinaryKind::kData && extent.kind != BinaryKind::kUid;
    if (!hasCount || low != kCountFollows) return extent;
    require(extent.first < table);
    const auto countMarker = static_cast<unsigned char>(bytes[extent.first]);
    const std::size_t width = std::size_t{1} << (countMarker & 0x0F);
    require(static_cast<BinaryKind>(countMarker >> 4) == BinaryKind::kInteger && width <= kWidestNumber);
    require(width < table - extent.first);
    extent.count = Number(extent.first + 1, width);
    extent.first += 1 + width;
    return extent;
}

std::size_t BinaryPlistObjects::MemberCount(std::size_t object) const {
    const Extent extent = ExtentOf(object);
    const std::size_t references = extent.kind == BinaryKind::kDictionary ? 2 : 1;
    require(extent.count <= (table - extent.first) / referenceWidth / references);
    return extent.count * references;
}

std::vector<std::size_t> BinaryPlistObjects::Members(std::size_t object) const {
    const std::size_t first = ExtentOf(object).first;
    std::vector<std::size_t> members(MemberCount(object));
    for (std::size_t i = 0; i < members.size(); ++i) {
        members[i] = Number(first + i * referenceWidth, referenceWidth);
        require(members[i] < objectCount);
    }
    return members;
}

/// Returns the number of bytes of a scalar, without its marker and count.
std::size_t BinaryPlistObjects::SizeOf(const Extent& scalar) const {
    const unsigned low = scalar.low;
    switch (scalar.kind) {
    case BinaryKind::kSimple:
        require(low == kNullMarker || low == kFalseMarker || low == kTrueMarker);
        return 0;
    case BinaryKind::kInteger:
        require(low <= 4);
        return std::size_t{1} << low;
    case BinaryKind::kReal:
        require(low == 2 || low == 3);
        return std::size_t{1} << low;
    case BinaryKind::kDate:
        require(low == 3);
        return sizeof(double);
    case BinaryKind::kUid:
        require(low < 8);
        return low + 1;
    case BinaryKind::kData:
    case BinaryKind::kLatin1String:
        return scalar.count;
    case BinaryKind::kUtf16String:
        require(scalar.count <= table / 2);
        return scalar.count * 2;
    default:
        refuse();
    }
}

std::string_view BinaryPlistObjects::ScalarBytes(std::size_t object) const {
    const Extent extent = ExtentOf(object);
    const std::size_t size = SizeOf(extent);
    require(size <= table - extent.first);
    return std::string_view(bytes).substr(extent.at, extent.first - extent.at + size);
}

PropertyValue BinaryPlistObjects::ScalarValue(std::size_t object) const {
    const Extent extent = ExtentOf(object);
    const std::string_view value = ScalarBytes(object).substr(extent.first - extent.at);
    switch (extent.kind) {
    case BinaryKind::kInteger:
        return integerValue(value);
    case BinaryKind::kReal:
        return RealValue(realFrom(value));
    case BinaryKind::kDate:
        return DateValue(realFrom(value));
    case BinaryKind::kData:
        return DataValue(value);
    case BinaryKind::kLatin1String:
        return StringValue(DecodeAscii(value));
    case BinaryKind::kUtf16String:
        return StringValue(utf16From(value));
    case BinaryKind::kUid:
        return UidValue(bigEndian(value));
    default:
        return extent.low == kNullMarker ? NullValue() : BooleanValue(extent.low == kTrueMarker);
    }
}

PropertyValue ReadBinaryPlist(const std::string& bytes) { return BinaryReader(bytes).Root(); }

} // namespace macplatform
