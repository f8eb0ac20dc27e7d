#include "BinaryPlistEdit.h"

#include "BinaryPlistReader.h"
#include "BinaryPlistWriter.h"

#include <vector>

namespace macplatform {

namespace {

using Object = BinaryPlistWriter::Object;

class BinaryPlistCopy {
public:
    explicit BinaryPlistCopy(const std::string& bytes) : source(bytes) {}

    std::optional<std::string> With(BinaryPlistChanges changes) {
        if (!source.ReadTrailer() || source.KindOf(source.Root()) != BinaryKind::kDictionary)
            return std::nullopt;
        const auto entries = source.Children(source.Root());
        if (!entries) return std::nullopt;
        copies.resize(source.ObjectCount());
        const std::size_t count = entries->size() / 2;
        for (std::size_t i = 0; i < count; ++i) {
            if (!CopyEntry((*entries)[i], (*entries)[count + i], changes)) return std::nullopt;
        }
        for (const auto& [key, value] : changes) {
            if (value) AddEntry(copy.Add(StringObject(key)), copy.Add(*value));
        }
        keys.insert(keys.end(), values.begin(), values.end());
        return copy.Bytes(copy.AddContainer(BinaryKind::kDictionary, keys));
    }

private:
    void AddEntry(Object key, Object value) {
        keys.push_back(key);
        values.push_back(value);
    }

    /// Copies an entry, with its change if there is one, and removes that change from `changes`. Returns
    /// false if the entry cannot be copied.
    bool CopyEntry(std::size_t key, std::size_t value, BinaryPlistChanges& changes) {
        const auto text = source.StringOf(key);
        if (!text) return false;
        const auto change = changes.find(*text);
        const bool isChanged = change != changes.end();
        if (!isChanged || change->second) {
            const auto keyCopy = Copied(key);
            const auto valueCopy = isChanged ? std::optional(copy.Add(*change->second)) : Copied(value);
            if (!keyCopy || !valueCopy) return false;
            AddEntry(*keyCopy, *valueCopy);
        }
        if (isChanged) changes.erase(change);
        return true;
    }

    /// Copies an object and its members. The recursion is bounded, because a validated property list has no
    /// cycles and limited nesting.
    std::optional<Object> Copied(std::size_t object) {
        if (copies[object]) return copies[object];
        const auto kind = source.KindOf(object);
        if (!kind || !IsContainer(*kind)) {
            const auto bytes = source.ScalarBytes(object);
            return copies[object] = bytes ? std::optional(copy.Add(*bytes)) : std::nullopt;
        }
        const auto children = source.Children(object);
        std::vector<Object> members;
        for (std::size_t i = 0; children && i < children->size(); ++i) {
            const auto member = Copied((*children)[i]);
            if (!member) return std::nullopt;
            members.push_back(*member);
        }
        return copies[object] = children ? std::optional(copy.AddContainer(*kind, members)) : std::nullopt;
    }

    BinaryPlistReader source;
    BinaryPlistWriter copy;
    std::vector<std::optional<Object>> copies; ///< The copy of each object of the source, by its number.
    std::vector<Object> keys, values;          ///< The entries of the new root.
};

} // namespace

std::optional<std::string> EditBinaryPlist(const std::string& bytes, const BinaryPlistChanges& changes) {
    return BinaryPlistCopy(bytes).With(changes);
}

std::string EmptyBinaryPlist() {
    BinaryPlistWriter plist;
    return plist.Bytes(plist.AddContainer(BinaryKind::kDictionary, {}));
}

} // namespace macplatform
