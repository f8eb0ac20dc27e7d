#pragma once

/// What every CoreFoundation object of the platform begins with.
///
/// An object is one block of memory: this header, the members of its kind, and what follows them. It is made
/// by MakeObject with one reference, or stands constant-initialised in static storage and is never freed.
/// A use after the end shows: a freed block is overwritten and held back for a while, and each function
/// checks what it is handed. Counting is safe between threads; an object never changes after it was made.

#include <CoreFoundation/CFBase.h>

#include "trace/PlatformCall.h"
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

/// What the objects of one kind have in common.
struct ObjectClass {
    CFTypeID id;
    const char* kind;                            ///< "string", "number", ...
    std::string (*describe)(const Object&);      ///< The value as a person would write it.
    bool (*equal)(const Object&, const Object&); ///< Null when each object equals only itself.
    void (*finalise)(Object&);                   ///< Ends the members; null when there is nothing to end.
};

struct Object : TrackedObject {
    static constexpr std::uint32_t kLiveMagic = 0xCF0B7EC7;
    static constexpr std::int32_t kImmortal = 0x7FFFFFFF;

    constexpr explicit Object(const ObjectClass& kindOfObject) : type(&kindOfObject) {}

    std::uint32_t magic = kLiveMagic;
    mutable std::atomic<std::int32_t> references{kImmortal};
    const ObjectClass* type;
    std::size_t size = 0; ///< Of the whole block, in bytes.
};

/// Ends the process with this line on standard error. For what crashes on a Mac: a null object, one that is
/// freed or of another kind, a range out of bounds.
[[noreturn]] void Misuse(const char* function, const std::string& whatIsWrong);

/// The object behind the reference; misuse when there is none, in the name of the function.
Object& CheckedObject(CFTypeRef object, const char* function);
/// The same, and misuse when it is of another kind.
Object& CheckedObject(CFTypeRef object, const char* function, const ObjectClass& kind);

/// Puts a new object of a block of `size` bytes on the list of live things, with one reference.
void Introduce(Object& object, std::size_t size) noexcept;
/// One reference more, of an object that the caller has a reference to.
void Retain(const Object& object) noexcept;
/// The same for an object that may be at its end in another thread: false when it is too late.
bool TryRetain(const Object& object) noexcept;
/// One reference less; the last one frees.
void Release(Object& object) noexcept;
/// Never freed from now on, and no longer counted as live.
void MakeImmortal(Object& object) noexcept;

/// A new object with one reference, whose members are made of the arguments; `extra` bytes lie behind it in
/// the same block. Throws std::bad_alloc.
template <typename T, typename... Arguments>
T* MakeObject(std::size_t extra, Arguments&&... arguments) {
    if (extra > SIZE_MAX - sizeof(T)) throw std::bad_alloc();
    std::unique_ptr<void, decltype(&std::free)> block(std::malloc(sizeof(T) + extra), &std::free);
    if (!block) throw std::bad_alloc();
    T* const object = new (block.get()) T(std::forward<Arguments>(arguments)...);
    static_cast<void>(block.release());
    Introduce(*object, sizeof(T) + extra);
    return object;
}

/// Whether both are the same object, or of one kind whose objects are equal by their value.
bool Equal(CFTypeRef left, CFTypeRef right);

/// Lets go of a reference at the end of a scope.
struct Releaser {
    void operator()(const Object* object) const noexcept { Release(const_cast<Object&>(*object)); }
};
template <typename T>
using Owned = std::unique_ptr<const T, Releaser>;

/// Strings in quotation marks, numbers in decimal, UUIDs in their usual groups, constants by their name;
/// "NULL" for null.
std::string Describe(CFTypeRef object);

inline std::string ArgumentText(const std::string& text) { return text; }
inline std::string ArgumentText(const char* text) { return Quoted(text); }
inline std::string ArgumentText(CFTypeRef object) { return Describe(object); }
inline std::string ArgumentText(long long number) { return std::to_string(number); }

/// Tells the journal the arguments, if anyone listens. Running out of memory here ends the program.
template <typename... Arguments>
void RecordArguments(PlatformCall& call, const Arguments&... arguments) noexcept {
    if (call.IsRecorded()) call.SetArguments({ArgumentText(arguments)...});
}

/// Notes an object as the result and hands it on.
template <typename T>
T ObjectResult(PlatformCall& call, T object) noexcept {
    return call.IsRecorded() ? call.Result(object, Describe(object)) : object;
}

} // namespace macplatform
