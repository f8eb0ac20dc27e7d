#include "BinaryPlistValidation.h"

#include "BinaryPlistReader.h"
#include "PropertyListLimits.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace macplatform {

namespace {

const char kTooDeep[] = "nested deeper than 512 levels";
const char kDamaged[] = "the binary property list is damaged";

/// Visits each object once, depth first. The values of a shared object count once for each reference to it.
class BinaryPlistValidator {
public:
    explicit BinaryPlistValidator(const std::string& bytes) : reader(bytes) {}

    std::string Validate() {
        if (!reader.ReadTrailer()) return kDamaged;
        values.assign(reader.ObjectCount(), 0);
        depths.assign(reader.ObjectCount(), 0);
        state.assign(reader.ObjectCount(), kUnseen);
        if (!Push(reader.Root())) return reason;
        while (!stack.empty()) {
            if (!Step()) return reason;
        }
        return depths[reader.Root()] > kMaxPropertyListDepth ? kTooDeep : std::string();
    }

private:
    enum State : unsigned char { kUnseen, kOpen, kDone };
    struct Container {
        std::size_t object;
        std::vector<std::size_t> children;
        std::size_t next = 0;
    };

    bool Refuse(const char* why) {
        reason = why;
        return false;
    }

    /// Enters the next child of the innermost open object, or counts the child if it is complete. Returns
    /// false, with `reason` set, if the property list must be rejected.
    bool Step() {
        Container& top = stack.back();
        if (top.next == top.children.size()) {
            Pop();
            return stack.size() <= kMaxPropertyListDepth || Refuse(kTooDeep);
        }
        const std::size_t child = top.children[top.next];
        if (state[child] == kOpen) return Refuse("an object contains itself");
        if (state[child] == kUnseen) {
            return stack.size() <= kMaxPropertyListDepth ? Push(child) : Refuse(kTooDeep);
        }
        ++top.next;
        if ((values[top.object] += values[child]) > kMaxPropertyListValues)
            return Refuse("more than 1048576 values");
        depths[top.object] = std::max(depths[top.object], depths[child]);
        return true;
    }

    /// Pushes the object onto the stack. A scalar is treated as a container without members.
    bool Push(std::size_t object) {
        auto children = reader.Children(object);
        if (!children) return Refuse(kDamaged);
        if (reader.KindOf(object) == BinaryKind::kDictionary && !CheckKeys(*children)) return false;
        state[object] = kOpen;
        stack.push_back({object, std::move(*children)});
        return true;
    }

    /// Checks that each key is a valid string and occurs once. The parser ends the process if a key is not a
    /// valid string, and keeps only the last of two equal keys.
    bool CheckKeys(const std::vector<std::size_t>& keysAndValues) {
        std::vector<std::string> keys;
        for (std::size_t i = 0; i < keysAndValues.size() / 2; ++i) {
            auto key = reader.StringOf(keysAndValues[i]);
            if (!key) return Refuse(kDamaged);
            keys.push_back(std::move(*key));
        }
        std::sort(keys.begin(), keys.end());
        return std::adjacent_find(keys.begin(), keys.end()) == keys.end() ||
               Refuse("a dictionary has the same key twice");
    }

    void Pop() {
        const Container& top = stack.back();
        state[top.object] = kDone;
        ++values[top.object];
        if (!top.children.empty()) ++depths[top.object];
        stack.pop_back();
    }

    BinaryPlistReader reader;
    std::vector<std::size_t> values; ///< The number of values in each object, the object itself included.
    std::vector<unsigned> depths;
    std::vector<State> state;
    std::vector<Container> stack;
    std::string reason;
};

} // namespace

std::string ValidateBinaryPlist(const std::string& bytes) { return BinaryPlistValidator(bytes).Validate(); }

} // namespace macplatform
