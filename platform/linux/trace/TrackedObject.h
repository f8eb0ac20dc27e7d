#pragma once

/// The registry behind macplatform/LiveObjects.h. The registry contains every object that a caller must free,
/// from the creation of the object to its deallocation. Several threads may add and remove objects at the
/// same time.

#include <string>

namespace macplatform {

/// The registry's link to one tracked object. The link is a member or a base class of the tracked object, and
/// its address must not change. A new link is not in the registry. The owner must remove the link before the
/// memory is freed: the class has no destructor, so that constant objects can contain a link.
///
///     struct Block : TrackedObject { std::size_t size; };
///     block->Register([](const TrackedObject& object) {
///         return "memory block of " + std::to_string(static_cast<const Block&>(object).size) + " bytes";
///     });
class TrackedObject {
public:
    /// Returns one line of text without a line break: the kind, then the value in readable notation. The
    /// function is called while the registry is locked. The function must not add or remove a tracked object.
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
