#include "BinaryPlistValidation.h"

#include "BinaryPlistReader.h"
#include "PropertyListLimits.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace macplatform {

namespace {

const char kTooDeep[] = "it is nested too deeply";
const char kDamaged[] = "its binary form is damaged";

/// Depth first, each object once; what comes out of a shared one counts each time it is referred to.
class BinaryListWalk {
public:
    explicit BinaryListWalk(const std::string& bytes) : list(bytes) {}

    std::string Danger() {
        if (!list.ReadTrailer()) return kDamaged;
        values.assign(list.ObjectCount(), 0);
        depths.assign(list.ObjectCount(), 0);
        state.assign(list.ObjectCount(), kUnseen);
        if (!Enter(list.Root())) return reason;
        while (!stack.empty()) {
            if (!Step()) return reason;
        }
        return depths[list.Root()] > kMaxPropertyListDepth ? kTooDeep : std::string();
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

    /// The innermost open object's next child is entered, or counted when it is done already.
    bool Step() {
        Container& top = stack.back();
        if (top.next == top.children.size()) {
            Leave();
            return stack.size() <= kMaxPropertyListDepth || Refuse(kTooDeep);
        }
        const std::size_t child = top.children[top.next];
        if (state[child] == kOpen) return Refuse("an object in it holds itself");
        if (state[child] == kUnseen) {
            return stack.size() <= kMaxPropertyListDepth ? Enter(child) : Refuse(kTooDeep);
        }
        ++top.next;
        if ((values[top.object] += values[child]) > kMaxPropertyListValues)
            return Refuse("it holds too many values");
        depths[top.object] = std::max(depths[top.object], depths[child]);
        return true;
    }

    /// A container goes onto the stack, and a scalar as one without members.
    bool Enter(std::size_t object) {
        auto children = list.Children(object);
        if (!children) return Refuse(kDamaged);
        if (list.KindOf(object) == BinaryKind::kDictionary && !CheckKeys(*children)) return false;
        state[object] = kOpen;
        stack.push_back({object, std::move(*children)});
        return true;
    }

    /// The parser ends the process over a key that is no whole text; of two like ones it would keep the last.
    bool CheckKeys(const std::vector<std::size_t>& keysAndValues) {
        std::vector<std::string> keys;
        for (std::size_t i = 0; i < keysAndValues.size() / 2; ++i) {
            auto key = list.TextOf(keysAndValues[i]);
            if (!key) return Refuse(kDamaged);
            keys.push_back(std::move(*key));
        }
        std::sort(keys.begin(), keys.end());
        return std::adjacent_find(keys.begin(), keys.end()) == keys.end() ||
               Refuse("a dictionary in it has the same key twice");
    }

    void Leave() {
        const Container& top = stack.back();
        state[top.object] = kDone;
        ++values[top.object];
        if (!top.children.empty()) ++depths[top.object];
        stack.pop_back();
    }

    BinaryListReader list;
    std::vector<std::size_t> values; ///< That come out of each object, itself included.
    std::vector<unsigned> depths;
    std::vector<State> state;
    std::vector<Container> stack;
    std::string reason;
};

} // namespace

std::string BinaryListDanger(const std::string& bytes) { return BinaryListWalk(bytes).Danger(); }

} // namespace macplatform
