#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <cstdint>

/// One of the maker's products, as the installer numbers them.
struct Product {
    CFStringRef
        bundleIdentifier;  ///< Also its preferences domain; lent for ever, null for an unknown product.
    const char* shortName; ///< Null for an unknown product.
};

Product FindProduct(std::int32_t productCode);
