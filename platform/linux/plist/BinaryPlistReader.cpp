#include "BinaryPlist.h"

#include "corefoundation/TextEncoding.h"

#include <cstdint>
#include <cstring>

namespace macplatform {

namespace {

constexpr std::size_t kHeaderBytes = 8, kTrailerBytes = 32, kWidestNumber = 16;

void require(bool isIntact) {
    if (!isIntact) throw PropertyListError("the binary property list is damaged");
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
    PropertyValue ValueOf(std::size_t number) {
        if (++valueCount > kMaxPropertyListValues) throw PropertyListError(kTooManyValues);
        const BinaryObject object = objects.At(number);
        if (!object.IsContainer()) return Charged(object.ScalarValue());
        if (isOpen[number]) throw PropertyListError("an object contains itself");
        if (++depth > kMaxPropertyListDepth) throw PropertyListError(kTooDeep);
        isOpen[number] = true;
        PropertyValue container = ContainerOf(object);
        isOpen[number] = false;
        --depth;
        return container;
    }

    PropertyValue ContainerOf(const BinaryObject& object) {
        using Kind = PropertyValue::Kind;
        const bool isDictionary = object.kind == BinaryKind::kDictionary;
        const Kind kind = object.kind == BinaryKind::kSet ? Kind::kSet : Kind::kArray;
        PropertyValue container = ContainerValue(isDictionary ? Kind::kDictionary : kind);
        const std::size_t keyCount = isDictionary ? object.members.size() / 2 : 0;
        for (std::size_t i = 0; i < keyCount; ++i) container.keys.push_back(KeyOf(object.members[i]));
        auto& values = isDictionary ? container.values : container.items;
        for (std::size_t i = keyCount; i < object.members.size(); ++i)
            values.push_back(ValueOf(object.members[i]));
        if (isDictionary) RemoveRepeatedKeys(container, RepeatedKeys::kFirstCounts);
        return container;
    }

    std::string KeyOf(std::size_t number) {
        const PropertyValue key = ValueOf(number);
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

PropertyValue BinaryObject::ScalarValue() const {
    switch (kind) {
    case BinaryKind::kInteger: return integerValue(contents);
    case BinaryKind::kReal: return RealValue(realFrom(contents));
    case BinaryKind::kDate: return DateValue(realFrom(contents));
    case BinaryKind::kData: return DataValue(contents);
    case BinaryKind::kLatin1String: return StringValue(DecodeAscii(contents));
    case BinaryKind::kUtf16String: return StringValue(utf16From(contents));
    case BinaryKind::kUid: return UidValue(bigEndian(contents));
    default: return low == kNullMarker ? NullValue() : BooleanValue(low == kTrueMarker);
    }
}

BinaryPlistObjects::BinaryPlistObjects(std::string_view source) : bytes(source) {
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

BinaryObject BinaryPlistObjects::At(std::size_t number) const {
    const std::size_t at = Number(table + number * offsetWidth, offsetWidth);
    require(at >= kHeaderBytes && at < table);
    const auto marker = static_cast<unsigned char>(bytes[at]);
    BinaryObject object = {static_cast<BinaryKind>(marker >> 4), marker & 0x0FU, {}, {}, {}};
    std::size_t first = at + 1;
    const bool hasCount = object.kind >= BinaryKind::kData && object.kind != BinaryKind::kUid;
    const std::size_t count = hasCount && object.low == kCountFollows ? LongCount(first) : object.low;
    if (object.IsContainer()) {
        require(count <= table); // so that its double is right
        object.members = Members(first, object.kind == BinaryKind::kDictionary ? 2 * count : count);
        return object;
    }
    const std::size_t size = SizeOf(object, count);
    require(size <= table - first);
    object.bytes = bytes.substr(at, first - at + size);
    object.contents = bytes.substr(first, size);
    return object;
}

/// Returns the big-endian number at an offset, which must be inside the bytes. Returns SIZE_MAX if the number
/// does not fit into `std::size_t`.
std::size_t BinaryPlistObjects::Number(std::size_t at, std::size_t width) const {
    std::size_t number = 0;
    for (const char c : bytes.substr(at, width)) {
        if (number > SIZE_MAX >> 8) return SIZE_MAX;
        number = number << 8 | static_cast<unsigned char>(c);
    }
    return number;
}

/// Reads a count that is an integer object, and moves the offset behind this object.
std::size_t BinaryPlistObjects::LongCount(std::size_t& at) const {
    require(at < table);
    const auto marker = static_cast<unsigned char>(bytes[at]);
    const std::size_t width = std::size_t{1} << (marker & 0x0F);
    require(static_cast<BinaryKind>(marker >> 4) == BinaryKind::kInteger && width <= kWidestNumber);
    require(width < table - at);
    at += 1 + width;
    return Number(at - width, width);
}

/// Returns the number of bytes of a scalar, without its marker and count.
std::size_t BinaryPlistObjects::SizeOf(const BinaryObject& scalar, std::size_t count) const {
    const unsigned low = scalar.low;
    switch (scalar.kind) {
    case BinaryKind::kSimple:
        require(low == kNullMarker || low == kFalseMarker || low == kTrueMarker);
        return 0;
    case BinaryKind::kInteger: require(low <= 4); return std::size_t{1} << low;
    case BinaryKind::kReal:
    case BinaryKind::kDate:
        require(low == 3 || (low == 2 && scalar.kind == BinaryKind::kReal));
        return std::size_t{1} << low;
    case BinaryKind::kUid: require(low < 8); return low + 1;
    case BinaryKind::kData:
    case BinaryKind::kLatin1String: return count;
    default: require(scalar.kind == BinaryKind::kUtf16String && count <= table / 2); return count * 2;
    }
}

std::vector<std::size_t> BinaryPlistObjects::Members(std::size_t first, std::size_t count) const {
    require(count <= (table - first) / referenceWidth);
    if (count > kMaxPropertyListValues) throw PropertyListError(kTooManyValues);
    std::vector<std::size_t> members(count);
    for (std::size_t& member : members) {
        member = Number(first, referenceWidth);
        require(member < objectCount);
        first += referenceWidth;
    }
    return members;
}

PropertyValue ReadBinaryPlist(const std::string& bytes) { return BinaryReader(bytes).Root(); }

} // namespace macplatform
