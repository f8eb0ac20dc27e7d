#pragma once

/// Declares the owner of a CF object, for programs that use the platform.

#include <CoreFoundation/CFBase.h>

#include <memory>
#include <type_traits>

namespace macplatform {

/// Releases the reference that a `CFOwner` owns.
struct CFReleaser {
    /// Releases one reference. The object must not be null.
    void operator()(const void* object) const { CFRelease(object); }
};

/// Owns one reference to a CF object, or is empty. Example: `CFOwner<CFStringRef>`.
template <typename Reference>
using CFOwner = std::unique_ptr<std::remove_pointer_t<Reference>, CFReleaser>;

} // namespace macplatform
