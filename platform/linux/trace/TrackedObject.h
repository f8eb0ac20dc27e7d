#pragma once

/// Declares the registry of live objects, which macplatform/LiveObjects.h counts and lists. The registry
/// contains every object that a caller must free, from its creation to its deallocation. Several threads may
/// add and remove objects at the same time.

#include <string>

namespace macplatform {

/// The base class of a tracked object. The address of the object must not change. A new object is not in the
/// registry. The owner must call `Unregister` before the memory of the object is freed. The class has no
/// destructor that does so, because constant objects must be able to have this base class.
///
///     struct Block : TrackedObject { std::size_t size; };
///     block->Register([](const TrackedObject& object) {
///         return "memory block of " + std::to_string(static_cast<const Block&>(object).size) + " bytes";
///     });
class TrackedObject {
public:
    /// Returns one line of text without a line break: the kind of the object, then its value in readable
    /// notation. The registry is locked during the call. The function must not add or remove a tracked
    /// object.
    using Describer = std::string (*)(const TrackedObject&);

    constexpr TrackedObject() = default;
    TrackedObject(const TrackedObject&) = delete;
    TrackedObject& operator=(const TrackedObject&) = delete;

    /// Adds the object at the end of the registry. The object must not be in the registry.
    void Register(Describer describe) noexcept;
    /// Removes the object from the registry. Does nothing if the object is not in the registry.
    void Unregister() noexcept;

private:
    friend struct ObjectRegistry;
    TrackedObject* previous = nullptr;
    TrackedObject* next = nullptr;
    Describer describer = nullptr; ///< Null while the object is not in the registry.
};

} // namespace macplatform
