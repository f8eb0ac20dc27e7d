#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// A field at any address, in the machine's byte order; read and written by copying its bytes.
template <typename T>
class Unaligned {
public:
    operator T() const {
        T value;
        std::memcpy(&value, bytes, sizeof value);
        return value;
    }
    Unaligned& operator=(T value) {
        std::memcpy(bytes, &value, sizeof value);
        return *this;
    }

private:
    unsigned char bytes[sizeof(T)];
};

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
    Unaligned<std::int16_t> selector;
    Unaligned<std::int16_t> message;
    Unaligned<std::int32_t> productCode;
    Unaligned<std::uint32_t> errorFlags;
    unsigned char hostFields[598];
    Unaligned<std::int32_t> languageCode; ///< A classic Mac OS language code.
};

static_assert(alignof(XCodParamBlock) == 1 && sizeof(XCodParamBlock) == 614);
static_assert(offsetof(XCodParamBlock, message) == 2 && offsetof(XCodParamBlock, productCode) == 4);
static_assert(offsetof(XCodParamBlock, errorFlags) == 8 && offsetof(XCodParamBlock, hostFields) == 12);
static_assert(offsetof(XCodParamBlock, languageCode) == 610);
