#pragma once

/// @file
/// The vendor's products with their names and identifiers.

#include <CoreFoundation/CoreFoundation.h>
#include <cstdint>

/// One product.
struct Product {
    /// Also the preferences domain. A constant, null for an unknown product.
    CFStringRef bundleIdentifier;
    const char* shortName; ///< Null for an unknown product.
};

/// Returns the product with the installer's product code. The members are null for an unknown code.
Product FindProduct(std::int32_t productCode);
