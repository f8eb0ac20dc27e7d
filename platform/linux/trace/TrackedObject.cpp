#include "TrackedObject.h"

#include <macplatform/LiveObjects.h>

#include <mutex>

namespace macplatform {

struct ObjectRegistry {
    std::mutex mutex;
    TrackedObject* first = nullptr;
    TrackedObject* last = nullptr;
    std::size_t count = 0;

    /// Returns the registry. The registry is never destroyed, because static objects of a program may release
    /// their references when the process exits.
    static ObjectRegistry& Get() {
        static ObjectRegistry& gRegistry = *new ObjectRegistry;
        return gRegistry;
    }

    void Append(TrackedObject& object, TrackedObject::Describer describer) {
        object.describer = describer;
        object.previous = last;
        object.next = nullptr;
        (last ? last->next : first) = &object;
        last = &object;
        ++count;
    }

    void Remove(TrackedObject& object) {
        if (!object.describer) return;
        (object.previous ? object.previous->next : first) = object.next;
        (object.next ? object.next->previous : last) = object.previous;
        object.describer = nullptr;
        --count;
    }

    std::vector<std::string> Describe() const {
        std::vector<std::string> lines;
        lines.reserve(count);
        for (const TrackedObject* object = first; object; object = object->next) {
            lines.push_back(object->describer(*object));
        }
        return lines;
    }
};

void TrackedObject::Register(Describer describe) noexcept {
    ObjectRegistry& registry = ObjectRegistry::Get();
    const std::lock_guard lock(registry.mutex);
    registry.Append(*this, describe);
}

void TrackedObject::Unregister() noexcept {
    ObjectRegistry& registry = ObjectRegistry::Get();
    const std::lock_guard lock(registry.mutex);
    registry.Remove(*this);
}

std::size_t LiveObjectCount() {
    ObjectRegistry& registry = ObjectRegistry::Get();
    const std::lock_guard lock(registry.mutex);
    return registry.count;
}

std::vector<std::string> DescribeLiveObjects() {
    ObjectRegistry& registry = ObjectRegistry::Get();
    const std::lock_guard lock(registry.mutex);
    return registry.Describe();
}

} // namespace macplatform
