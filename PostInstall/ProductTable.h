#pragma once

/// @file
/// Products, their names and identifiers.

#include <CoreFoundation/CoreFoundation.h>
#include <cstdint>

/// One of the maker's products, as the installer numbers them.
struct Product {
    CFStringRef
        bundleIdentifier;  ///< Also its preferences domain; lent for ever, null for an unknown product.
    const char* shortName; ///< Null for an unknown product.
};

/// The product of this number; null members for a number that the maker does not have.
Product FindProduct(std::int32_t productCode);
