#include "BinaryPlist.h"

#include "corefoundation/TextEncoding.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace macplatform {

namespace {

std::string bigEndian(std::uint64_t value, unsigned width) {
    std::string bytes;
    for (unsigned shift = width * 8; shift > 0; shift -= 8)
        bytes += static_cast<char>(value >> (shift - 8) & 0xFF);
    return bytes;
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
    const std::string start = marker(BinaryKind::kInteger, isHuge ? 4 : width == 8 ? 3 : width / 2);
    return start + std::string(isHuge ? 8 : 0, '\0') + bigEndian(bits, width);
}

/// Returns the first bytes of an object: its marker and its count.
std::string head(BinaryKind kind, std::size_t count) {
    if (count < kCountFollows) return marker(kind, static_cast<unsigned>(count));
    return marker(kind, kCountFollows) + integerObject(count, false);
}

std::string realObject(double value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return marker(BinaryKind::kReal, 3) + bigEndian(bits, 8); // 2^3 bytes follow the marker.
}

std::string stringObject(const std::string& utf8) {
    if (std::all_of(utf8.begin(), utf8.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; }))
        return head(BinaryKind::kLatin1String, utf8.size()) + utf8;
    // `DecodeUtf8` drops a byte order mark at the start.
    // The added mark is dropped instead of a mark of the text.
    const auto units = DecodeUtf8("\xEF\xBB\xBF" + utf8).value_or(u"");
    std::string bytes = head(BinaryKind::kUtf16String, units.size());
    for (const char16_t unit : units) bytes += bigEndian(unit, 2);
    return bytes;
}

std::string scalarObject(const PropertyValue& value) {
    switch (value.kind) {
    case PropertyValue::Kind::kBoolean:
        return marker(BinaryKind::kSimple, value.integer != 0 ? kTrueMarker : kFalseMarker);
    case PropertyValue::Kind::kInteger:
        return integerObject(static_cast<std::uint64_t>(value.integer), value.text[0] == '-');
    case PropertyValue::Kind::kReal: return realObject(value.real);
    default: return stringObject(value.text);
    }
}

/// Builds a binary property list from objects. Members must be added before their container.
class BinaryPlistWriter {
public:
    using Object = std::uint32_t; ///< The number of an object.

    Object Add(std::string scalar) { return Add(std::move(scalar), {}); }

    /// Adds a container. The members of a dictionary are all keys, followed by all values in the same order.
    Object AddContainer(BinaryKind kind, std::vector<Object> members) {
        const bool isDictionary = kind == BinaryKind::kDictionary;
        std::string start = head(kind, isDictionary ? members.size() / 2 : members.size());
        return Add(std::move(start), std::move(members));
    }

    /// Returns the bytes of the property list with this root.
    std::string Bytes(Object root) const {
        const unsigned referenceWidth = widthFor(objects.size()); // Some readers want the count to fit, too.
        std::string bytes = "bplist00";
        std::vector<std::size_t> offsets;
        for (const EncodedObject& object : objects) {
            offsets.push_back(bytes.size());
            bytes += object.bytes;
            for (const Object member : object.members) bytes += bigEndian(member, referenceWidth);
        }
        const std::size_t table = bytes.size();
        const unsigned offsetWidth = widthFor(table);
        for (const std::size_t offset : offsets) bytes += bigEndian(offset, offsetWidth);
        bytes.append(6, '\0');
        bytes += bigEndian(offsetWidth, 1);
        bytes += bigEndian(referenceWidth, 1);
        for (const std::size_t number : {offsets.size(), std::size_t{root}, table})
            bytes += bigEndian(number, 8);
        return bytes;
    }

private:
    struct EncodedObject {
        std::string bytes; ///< Without the members of a container.
        std::vector<Object> members;
    };

    Object Add(std::string bytes, std::vector<Object> members) {
        objects.push_back({std::move(bytes), std::move(members)});
        return static_cast<Object>(objects.size() - 1);
    }

    std::vector<EncodedObject> objects;
};

class BinaryPlistCopy {
public:
    explicit BinaryPlistCopy(const std::string& bytes) : source(bytes), copies(source.Count()) {}

    std::string With(const PropertyListChanges& changes) {
        const BinaryObject root = source.At(source.Root());
        if (root.kind != BinaryKind::kDictionary) throw PropertyListError("the root is not a dictionary");
        const std::size_t count = root.members.size() / 2;
        for (std::size_t i = 0; i < count; ++i) CopyEntry(root.members[i], root.members[count + i], changes);
        for (const auto& [key, value] : changes) {
            if (value && found.count(key) == 0)
                AddEntry(copy.Add(scalarObject(StringValue(key))), copy.Add(scalarObject(*value)));
        }
        keys.insert(keys.end(), values.begin(), values.end());
        return copy.Bytes(copy.AddContainer(BinaryKind::kDictionary, keys));
    }

private:
    using Object = BinaryPlistWriter::Object;

    void AddEntry(Object key, Object value) {
        keys.push_back(key);
        values.push_back(value);
    }

    /// Copies an entry with its change, if there is one. Drops an entry that is removed or repeated.
    void CopyEntry(std::size_t key, std::size_t value, const PropertyListChanges& changes) {
        const BinaryObject name = source.At(key);
        const auto change = name.IsString() ? changes.find(name.ScalarValue().text) : changes.end();
        if (change == changes.end()) {
            AddEntry(Copied(key), Copied(value));
            return;
        }
        const bool isFirst = found.insert(change->first).second;
        if (isFirst && change->second) AddEntry(Copied(key), copy.Add(scalarObject(*change->second)));
    }

    /// Copies an object and its members. The recursion is bounded, because the property list has been read:
    /// it has no cycles and limited nesting.
    Object Copied(std::size_t number) {
        if (copies[number]) return *copies[number];
        const BinaryObject object = source.At(number);
        std::vector<Object> members;
        for (const std::size_t member : object.members) members.push_back(Copied(member));
        copies[number] = object.IsContainer() ? copy.AddContainer(object.kind, std::move(members))
                                              : copy.Add(std::string(object.bytes));
        return *copies[number];
    }

    BinaryPlistObjects source;
    BinaryPlistWriter copy;
    std::vector<std::optional<Object>> copies; ///< The copy of each object of the source, by its number.
    std::vector<Object> keys, values;          ///< The entries of the new root.
    std::set<std::string> found;               ///< The changed keys that the source has.
};

} // namespace

std::string EditBinaryPlist(const std::string& bytes, const PropertyListChanges& changes) {
    return BinaryPlistCopy(bytes).With(changes);
}

std::string EmptyBinaryPlist() {
    BinaryPlistWriter plist;
    return plist.Bytes(plist.AddContainer(BinaryKind::kDictionary, {}));
}

} // namespace macplatform
