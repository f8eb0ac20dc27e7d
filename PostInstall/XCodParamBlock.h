#pragma once

/// @file
/// Declares the parameter block that the installer passes to the plug-in.

#include <cstddef>
#include <cstdint>
#include <cstring>

/// A field that may have any address. The bytes are in the machine's byte order. Reading and writing copies
/// the bytes.
template <typename T>
class Unaligned {
public:
    operator T() const { ///< Reads the value.
        T value;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
    Unaligned& operator=(T value) { ///< Writes the bytes of the field only.
        std::memcpy(bytes, &value, sizeof value);
        return *this;
    }

private:
    unsigned char bytes[sizeof(T)];
};

/// Values of `selector` and `message`.
enum : std::int16_t {
    kXCodSelector = 1000,      ///< The only kind of call that the plug-in accepts.
    kXCodPreInstallation = 2,  ///< The event before the product's files are installed.
    kXCodPostInstallation = 3, ///< The event after the product's files are installed.
};
/// The bit of `errorFlags` that reports a failed call to the host.
constexpr std::uint32_t kXCodCallFailed = 1;

/// The installer's parameter block. The host owns the block. The block may have any address, and the host's
/// own fields follow the last field of this structure. The plug-in changes only `errorFlags`: the plug-in
/// sets `kXCodCallFailed` and no other bit.
struct XCodParamBlock {
    Unaligned<std::int16_t> selector;     ///< The kind of call, which must be `kXCodSelector`.
    Unaligned<std::int16_t> message;      ///< The event. Events without a step are ignored.
    Unaligned<std::int32_t> productCode;  ///< See ProductTable.h. Other codes are not an error.
    Unaligned<std::uint32_t> errorFlags;  ///< The plug-in reads the flags and adds `kXCodCallFailed`.
    unsigned char hostFields[598];        ///< The host's own fields, which the plug-in does not read.
    Unaligned<std::int32_t> languageCode; ///< A classic Mac OS language code.
};

static_assert(alignof(XCodParamBlock) == 1 && sizeof(XCodParamBlock) == 614);
static_assert(offsetof(XCodParamBlock, message) == 2 && offsetof(XCodParamBlock, productCode) == 4);
static_assert(offsetof(XCodParamBlock, errorFlags) == 8 && offsetof(XCodParamBlock, hostFields) == 12);
static_assert(offsetof(XCodParamBlock, languageCode) == 610);
