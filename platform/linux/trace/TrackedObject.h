#pragma once

/// The list behind macplatform/LiveObjects.h: whatever a caller must free in the end stands on it from its
/// making to its freeing. Threads may enlist and delist at the same time.

#include <string>

namespace macplatform {

/// The link by which a thing stands on the list; a member or base of the thing itself, at an address that
/// does not change. It is not on the list until it is enlisted, and the owner delists it before the
/// memory goes: there is no destructor, so that constant objects can hold one too.
///
///     struct Block : TrackedObject { std::size_t size; };
///     block->Register([](const TrackedObject& object) {
///         return "memory block of " + std::to_string(static_cast<const Block&>(object).size) + " bytes";
///     });
class TrackedObject {
public:
    /// One line without a line break: kind, then value as a person would write it. It must not enlist or
    /// delist anything.
    using Describer = std::string (*)(const TrackedObject&);

    constexpr TrackedObject() = default;
    TrackedObject(const TrackedObject&) = delete;
    TrackedObject& operator=(const TrackedObject&) = delete;

    /// At the end of the list; once only, until it is delisted.
    void Register(Describer describe) noexcept;
    /// Nothing happens when it is not on the list.
    void Unregister() noexcept;

private:
    friend struct ObjectRegistry;
    TrackedObject* previous = nullptr;
    TrackedObject* next = nullptr;
    Describer describer = nullptr; ///< Null while it is not on the list.
};

} // namespace macplatform
