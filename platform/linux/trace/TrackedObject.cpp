#include "TrackedObject.h"

#include <macplatform/LiveObjects.h>

#include <mutex>

namespace macplatform {

struct LiveList {
    std::mutex mutex;
    LiveThing* first = nullptr;
    LiveThing* last = nullptr;
    std::size_t count = 0;

    /// Never destroyed: static objects of the caller may release what they hold at exit.
    static LiveList& Get() {
        static LiveList& gList = *new LiveList;
        return gList;
    }

    void Append(LiveThing& thing, LiveThing::Describer describer) {
        thing.describer = describer;
        thing.previous = last;
        thing.next = nullptr;
        (last ? last->next : first) = &thing;
        last = &thing;
        ++count;
    }

    void Remove(LiveThing& thing) {
        if (!thing.describer) return;
        (thing.previous ? thing.previous->next : first) = thing.next;
        (thing.next ? thing.next->previous : last) = thing.previous;
        thing.describer = nullptr;
        --count;
    }

    std::vector<std::string> Describe() const {
        std::vector<std::string> lines;
        lines.reserve(count);
        for (const LiveThing* thing = first; thing; thing = thing->next) {
            lines.push_back(thing->describer(*thing));
        }
        return lines;
    }
};

void LiveThing::Enlist(Describer describe) noexcept {
    LiveList& list = LiveList::Get();
    const std::lock_guard lock(list.mutex);
    list.Append(*this, describe);
}

void LiveThing::Delist() noexcept {
    LiveList& list = LiveList::Get();
    const std::lock_guard lock(list.mutex);
    list.Remove(*this);
}

std::size_t LiveObjectCount() {
    LiveList& list = LiveList::Get();
    const std::lock_guard lock(list.mutex);
    return list.count;
}

std::vector<std::string> DescribeLiveObjects() {
    LiveList& list = LiveList::Get();
    const std::lock_guard lock(list.mutex);
    return list.Describe();
}

} // namespace macplatform
