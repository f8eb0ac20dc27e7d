#include "BinaryPlistEdit.h"

#include "BinaryPlistReader.h"
#include "BinaryPlistWriter.h"
#include "PropertyListLimits.h"

#include <optional>
#include <set>
#include <vector>

namespace macplatform {

namespace {

using Object = BinaryPlistWriter::Object;

class BinaryPlistCopy {
public:
    explicit BinaryPlistCopy(const std::string& bytes) : source(bytes), copies(source.Count()) {}

    std::string With(const PropertyListChanges& changes) {
        if (source.KindOf(source.Root()) != BinaryKind::kDictionary)
            throw PropertyListError("the root is not a dictionary");
        const auto entries = source.Members(source.Root());
        const std::size_t count = entries.size() / 2;
        for (std::size_t i = 0; i < count; ++i) CopyEntry(entries[i], entries[count + i], changes);
        for (const auto& [key, value] : changes) {
            if (value && found.count(key) == 0)
                AddEntry(copy.Add(StringObject(key)), copy.Add(ScalarObject(*value)));
        }
        keys.insert(keys.end(), values.begin(), values.end());
        return copy.Bytes(copy.AddContainer(BinaryKind::kDictionary, keys));
    }

private:
    void AddEntry(Object key, Object value) {
        keys.push_back(key);
        values.push_back(value);
    }

    /// Copies an entry with its change, if there is one. Drops an entry that is removed or repeated.
    void CopyEntry(std::size_t key, std::size_t value, const PropertyListChanges& changes) {
        const bool isString =
            source.KindOf(key) == BinaryKind::kLatin1String || source.KindOf(key) == BinaryKind::kUtf16String;
        const auto change = isString ? changes.find(source.ScalarValue(key).text) : changes.end();
        if (change == changes.end()) {
            AddEntry(Copied(key), Copied(value));
            return;
        }
        const bool isFirst = found.insert(change->first).second;
        if (isFirst && change->second) AddEntry(Copied(key), copy.Add(ScalarObject(*change->second)));
    }

    /// Copies an object and its members. The recursion is bounded, because the property list has been read:
    /// it has no cycles and limited nesting.
    Object Copied(std::size_t object) {
        if (copies[object]) return *copies[object];
        const BinaryKind kind = source.KindOf(object);
        if (!IsContainer(kind)) {
            copies[object] = copy.Add(std::string(source.ScalarBytes(object)));
            return *copies[object];
        }
        std::vector<Object> members;
        for (const std::size_t member : source.Members(object)) members.push_back(Copied(member));
        copies[object] = copy.AddContainer(kind, std::move(members));
        return *copies[object];
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
