#pragma once

/// @file
/// Declares the table of the vendor's products.

#include <CoreFoundation/CoreFoundation.h>
#include <cstdint>

/// One product.
struct Product {
    /// The bundle identifier, which is also the preferences domain. A constant string, or null for an unknown
    /// product.
    CFStringRef bundleIdentifier;
    const char* shortName; ///< The name in the updater's keys. Null for an unknown product.
};

/// Returns the product with the installer's product code. The members are null for an unknown code.
Product FindProduct(std::int32_t productCode);
