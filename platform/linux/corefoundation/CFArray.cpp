#include <CoreFoundation/CFArray.h>

#include "CFArrayObject.h"

#include <algorithm>

using namespace macplatform;

namespace macplatform {
extern const ObjectClass kArrayClass;
}

struct __CFArray : Object {
    explicit __CFArray(std::vector<CFTypeRef> held) : Object(kArrayClass), items(std::move(held)) {}
    std::vector<CFTypeRef> items;
};

namespace {

const __CFArray& toArray(const Object& object) { return static_cast<const __CFArray&>(object); }

std::string describeArray(const Object& object) {
    std::string text;
    for (const CFTypeRef item : toArray(object).items) text += (text.empty() ? "" : ", ") + Describe(item);
    return '(' + text + ')';
}

bool equalArrays(const Object& left, const Object& right) {
    const auto& ones = toArray(left).items;
    const auto& others = toArray(right).items;
    return std::equal(ones.begin(), ones.end(), others.begin(), others.end(), &Equal);
}

void finaliseArray(Object& object) {
    auto& array = static_cast<__CFArray&>(object);
    for (const CFTypeRef item : array.items) Release(CheckedObject(item, "CFRelease"));
    array.~__CFArray();
}

const std::vector<CFTypeRef>& checkedItems(CFArrayRef array, const char* function) {
    return toArray(CheckedObject(array, function, kArrayClass)).items;
}

} // namespace

const ObjectClass macplatform::kArrayClass = {4, "array", &describeArray, &equalArrays, &finaliseArray};

CFArrayRef macplatform::NewArray(std::vector<CFTypeRef> items) {
    const auto* array = MakeObject<__CFArray>(0, std::move(items));
    for (const CFTypeRef item : array->items) Retain(CheckedObject(item, "CFRetain"));
    return array;
}

CFIndex CFArrayGetCount(CFArrayRef array) {
    const auto& items = checkedItems(array, "CFArrayGetCount");
    return MakePlatformCall<NoFailure>("CFArrayGetCount", Shown(array),
                                       [&] { return static_cast<CFIndex>(items.size()); });
}

const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
    const auto& items = checkedItems(array, "CFArrayGetValueAtIndex");
    if (index < 0 || static_cast<std::size_t>(index) >= items.size()) {
        Misuse("CFArrayGetValueAtIndex", "index " + std::to_string(index) + " is outside an array of " +
                                             std::to_string(items.size()) + " items");
    }
    return MakeObjectCall<NoFailure>("CFArrayGetValueAtIndex", Shown(array, index),
                                     [&] { return items[static_cast<std::size_t>(index)]; });
}
