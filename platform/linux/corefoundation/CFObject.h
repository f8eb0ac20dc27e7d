#pragma once

/// Declares the common header of every CoreFoundation object of the platform, its reference counting and its
/// checks.
///
/// An object is one block of memory: the header, the members of the object's kind, and optional extra bytes.
/// `MakeObject` creates an object with one reference. A constant-initialised object in static storage is
/// never freed. Each function checks the objects that are passed to it. The check detects most uses after a
/// free, because a freed block is overwritten and is not reused at once. Reference counting is safe between
/// threads. The value of an object does not change after its creation.

#include <CoreFoundation/CFBase.h>

#include "trace/PlatformFunction.h"
#include "trace/TrackedObject.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <utility>

namespace macplatform {

struct Object;

/// The kind of an object.
struct ObjectClass {
    CFTypeID id;                                 ///< The result of CFGetTypeID.
    const char* kind;                            ///< "string", "number", ...
    std::string (*describe)(const Object&);      ///< Returns the value in readable notation.
    bool (*equal)(const Object&, const Object&); ///< Null: each object equals only itself.
    void (*finalise)(Object&);                   ///< Destroys the members. Null if they need no destruction.
};

/// The header of an object. `references` is `kImmortal` for an object that is never freed.
struct Object : TrackedObject {
    static constexpr std::uint32_t kLiveMagic = 0xCF0B7EC7;
    static constexpr std::int32_t kImmortal = 0x7FFFFFFF;

    constexpr explicit Object(const ObjectClass& kindOfObject) : type(&kindOfObject) {}

    std::uint32_t magic = kLiveMagic;
    mutable std::atomic<std::int32_t> references{kImmortal};
    const ObjectClass* type;
    std::size_t size = 0; ///< The size of the whole block in bytes.
};

/// Reports a misuse of `function` in one line on standard error and aborts the process. A misuse is a call
/// that crashes on a Mac: with a null object, a freed object, an object of the wrong kind, or a range out of
/// bounds.
[[noreturn]] void Misuse(const char* function, const std::string& whatIsWrong);

/// Returns the object. Calls `Misuse` if the reference is null, the object has been freed, or the reference
/// does not point to an object.
Object& CheckedObject(CFTypeRef object, const char* function);
/// Returns the object. Calls `Misuse` as the function above does, and also if the object is not of this kind.
Object& CheckedObject(CFTypeRef object, const char* function, const ObjectClass& kind);

/// Completes a new object in a block of `size` bytes: sets the number of references to 1 and registers the
/// object as a tracked object.
void RegisterObject(Object& object, std::size_t size) noexcept;
/// Adds one reference. The caller must own a reference to the object.
void Retain(const Object& object) noexcept;
/// Adds one reference to an object whose last reference another thread may release at the same time. Returns
/// false if the object has no reference left.
bool TryRetain(const Object& object) noexcept;
/// Releases one reference. Frees the object with its last reference.
void Release(Object& object) noexcept;
/// Marks the object as never freed and removes it from the registry of tracked objects.
void MakeImmortal(Object& object) noexcept;

/// Creates an object with one reference, which the caller owns. `arguments` are the arguments of its
/// constructor. `extra` is the number of bytes after the object in the same block. Throws std::bad_alloc.
template <typename T, typename... Arguments>
T* MakeObject(std::size_t extra, Arguments&&... arguments) {
    if (extra > SIZE_MAX - sizeof(T)) throw std::bad_alloc();
    std::unique_ptr<void, decltype(&std::free)> block(std::malloc(sizeof(T) + extra), &std::free);
    if (!block) throw std::bad_alloc();
    T* const object = new (block.get()) T(std::forward<Arguments>(arguments)...);
    static_cast<void>(block.release());
    RegisterObject(*object, sizeof(T) + extra);
    return object;
}

/// Returns whether both references point to the same object, or to two objects of the same kind with equal
/// values. Calls `Misuse` for a reference that is null or invalid.
bool Equal(CFTypeRef left, CFTypeRef right);

/// Releases the reference that an `Owned` pointer owns. Unlike `CFRelease`, the release is not recorded.
struct Releaser {
    void operator()(const Object* object) const noexcept { Release(const_cast<Object&>(*object)); }
};
/// Owns one reference to an object.
template <typename T>
using Owned = std::unique_ptr<const T, Releaser>;

/// Returns the value of the object in readable notation: a string in quotation marks, a number in decimal
/// digits, a UUID in groups of digits, a constant of the system as its name. Returns "NULL" for null.
std::string Describe(CFTypeRef object);

///@{
/// Returns an argument as the call log shows it. A `std::string` is already in readable notation.
inline std::string ArgumentText(const std::string& text) { return text; }
inline std::string ArgumentText(const char* text) { return Quoted(text); }
inline std::string ArgumentText(CFTypeRef object) { return Describe(object); }
inline std::string ArgumentText(long long number) { return std::to_string(number); }
///@}

/// Returns the arguments as the call log shows them.
template <typename... Arguments>
Texts ArgumentTexts(const Arguments&... arguments) {
    return {ArgumentText(arguments)...};
}
/// Returns a function that returns the texts of the arguments.
template <typename... Arguments>
auto Shown(Arguments... arguments) {
    return [=] { return ArgumentTexts(arguments...); };
}

/// Makes a platform call whose result is an object.
template <template <typename> class IfFailed = Failure, typename Show, typename Body>
auto MakeObjectCall(const char* name, Show show, Body body) {
    return MakePlatformCall<IfFailed>(name, show, [&body](PlatformCall& call) {
        const auto object = body();
        return call.IsRecorded() ? call.Result(object, Describe(object)) : object;
    });
}

} // namespace macplatform
