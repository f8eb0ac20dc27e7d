#include <CoreFoundation/CFBase.h>

#include "CFObject.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <mutex>

namespace macplatform {

namespace {

constexpr unsigned char kPoison = 0xDB;
constexpr std::uint32_t kPoisonedMagic = 0xDBDBDBDB;

/// The last 256 freed blocks. These blocks are not reused yet, so that a use after a free reads the poison
/// pattern and not new data.
class Quarantine {
public:
    /// Returns the quarantine. The quarantine is never destroyed, because static objects of a program may
    /// release their references when the process exits.
    static Quarantine& Get() {
        static Quarantine& gQuarantine = *new Quarantine;
        return gQuarantine;
    }

    /// Overwrites the block with the poison pattern and adds it to the quarantine. Frees the oldest block of
    /// the quarantine.
    void Add(void* block, std::size_t size) {
        std::memset(block, kPoison, size);
        void* oldest = nullptr;
        {
            const std::lock_guard lock(mutex);
            oldest = std::exchange(blocks[place], block);
            place = (place + 1) % blocks.size();
        }
        std::free(oldest);
    }

private:
    std::mutex mutex;
    std::array<void*, 256> blocks{};
    std::size_t place = 0;
};

void freeObject(Object& object) noexcept {
    object.Unregister();
    if (object.type->finalise) object.type->finalise(object);
    Quarantine::Get().Add(&object, object.size);
}

std::string describeTracked(const TrackedObject& tracked) {
    const auto& object = static_cast<const Object&>(tracked);
    const std::int32_t count = object.references;
    return std::string(object.type->kind) + ' ' + object.type->describe(object) + ", " +
           std::to_string(count) + (count == 1 ? " reference" : " references");
}

std::string addressText(CFTypeRef object) {
    char text[32];
    static_cast<void>(std::snprintf(text, sizeof text, "%p", object));
    return text;
}

} // namespace

void Misuse(const char* function, const std::string& whatIsWrong) {
    static_cast<void>(std::fprintf(stderr, "macplatform: %s: %s\n", function, whatIsWrong.c_str()));
    std::abort();
}

Object& CheckedObject(CFTypeRef reference, const char* function) {
    if (!reference) Misuse(function, "the object is NULL");
    if (reinterpret_cast<std::uintptr_t>(reference) % alignof(Object) != 0) {
        Misuse(function, "there is no object at " + addressText(reference));
    }
    auto& object = *static_cast<Object*>(const_cast<void*>(reference));
    if (object.magic == Object::kLiveMagic) return object;
    Misuse(function, object.magic == kPoisonedMagic
                         ? "the object at " + addressText(reference) + " was freed before: released too often"
                         : "there is no object at " + addressText(reference));
}

Object& CheckedObject(CFTypeRef reference, const char* function, const ObjectClass& kind) {
    Object& object = CheckedObject(reference, function);
    if (object.type != &kind) {
        Misuse(function, std::string("an object of the type ") + kind.kind + " is expected, not the " +
                             object.type->kind + ' ' + Describe(reference));
    }
    return object;
}

void RegisterObject(Object& object, std::size_t size) noexcept {
    object.references = 1;
    object.size = size;
    object.Register(&describeTracked);
}

bool TryRetain(const Object& object) noexcept {
    std::int32_t count = object.references;
    while (count != 0 && count != Object::kImmortal) {
        if (object.references.compare_exchange_weak(count, count + 1)) return true;
    }
    return count != 0;
}

void Retain(const Object& object) noexcept { TryRetain(object); }

void Release(Object& object) noexcept {
    std::int32_t count = object.references;
    do {
        if (count == Object::kImmortal) return;
        if (count <= 0) Misuse("CFRelease", "the object has no reference left");
    } while (!object.references.compare_exchange_weak(count, count - 1));
    if (count == 1) freeObject(object);
}

void MakeImmortal(Object& object) noexcept {
    object.references = Object::kImmortal;
    object.Unregister();
}

bool Equal(CFTypeRef left, CFTypeRef right) {
    const Object& one = CheckedObject(left, "CFEqual");
    const Object& other = CheckedObject(right, "CFEqual");
    return &one == &other || (one.type == other.type && one.type->equal && one.type->equal(one, other));
}

std::string Describe(CFTypeRef reference) {
    if (!reference) return "NULL";
    const Object& object = CheckedObject(reference, "Describe");
    return object.type->describe(object);
}

} // namespace macplatform

using namespace macplatform;

struct __CFAllocator : Object {
    using Object::Object;
};

namespace {
const ObjectClass kAllocatorClass = {2, "allocator",
                                     [](const Object&) -> std::string { return "kCFAllocatorSystemDefault"; },
                                     nullptr, nullptr};
constexpr __CFAllocator kSystemDefault(kAllocatorClass);
} // namespace

const CFAllocatorRef kCFAllocatorDefault = nullptr;
const CFAllocatorRef kCFAllocatorSystemDefault = &kSystemDefault;

CFTypeRef CFRetain(CFTypeRef object) {
    Object& checked = CheckedObject(object, "CFRetain");
    return MakeObjectCall<NoFailure>("CFRetain", Shown(object), [&] {
        Retain(checked);
        return object;
    });
}

void CFRelease(CFTypeRef object) {
    Object& checked = CheckedObject(object, "CFRelease");
    MakePlatformCall<NoFailure>("CFRelease", Shown(object), [&] { Release(checked); });
}

CFIndex CFGetRetainCount(CFTypeRef object) {
    const Object& checked = CheckedObject(object, "CFGetRetainCount");
    return MakePlatformCall<NoFailure>("CFGetRetainCount", Shown(object),
                                       [&] { return static_cast<CFIndex>(checked.references); });
}

CFTypeID CFGetTypeID(CFTypeRef object) {
    const Object& checked = CheckedObject(object, "CFGetTypeID");
    return MakePlatformCall<NoFailure>("CFGetTypeID", Shown(object), [&] { return checked.type->id; });
}

Boolean CFEqual(CFTypeRef left, CFTypeRef right) {
    const bool equal = Equal(left, right); // terminates for a wrong object, before the call is recorded
    return MakePlatformCall("CFEqual", Shown(left, right), [equal] { return Boolean{equal}; });
}
