#pragma once

/// @file
/// What the installer hands to the plug-in at each event.

#include <cstddef>
#include <cstdint>
#include <cstring>

/// A field at any address, in the machine's byte order; read and written by copying its bytes.
template <typename T>
class Unaligned {
public:
    operator T() const { ///< The value as it is now.
        T value;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
    Unaligned& operator=(T value) { ///< Writes its own bytes and none beside them.
        std::memcpy(bytes, &value, sizeof value);
        return *this;
    }

private:
    unsigned char bytes[sizeof(T)];
};

/// What the installer writes into the first two fields.
enum : std::int16_t {
    kXCodSelector = 1000,     ///< The only call kind that the plug-in acts on.
    kXCodPreInstallation = 2, ///< Messages: before and after the product's files are copied.
    kXCodPostInstallation = 3,
};
/// Bit of `errorFlags` that tells the host that the call failed.
constexpr std::uint32_t kXCodCallFailed = 1;

/// The installer's parameter block. It belongs to the host, may lie at any address, and goes on after the
/// last field here; of the error flags only `kXCodCallFailed` is ever touched, and only set.
struct XCodParamBlock {
    Unaligned<std::int16_t> selector;     ///< Kind of the call; anything but `kXCodSelector` is refused.
    Unaligned<std::int16_t> message;      ///< The event; one without a step is passed over.
    Unaligned<std::int32_t> productCode;  ///< As ProductTable.h has them; others are no error.
    Unaligned<std::uint32_t> errorFlags;  ///< In and out.
    unsigned char hostFields[598];        ///< The host's own, never looked at.
    Unaligned<std::int32_t> languageCode; ///< A classic Mac OS language code.
};

static_assert(alignof(XCodParamBlock) == 1 && sizeof(XCodParamBlock) == 614);
static_assert(offsetof(XCodParamBlock, message) == 2 && offsetof(XCodParamBlock, productCode) == 4);
static_assert(offsetof(XCodParamBlock, errorFlags) == 8 && offsetof(XCodParamBlock, hostFields) == 12);
static_assert(offsetof(XCodParamBlock, languageCode) == 610);
