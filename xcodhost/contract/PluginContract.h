#pragma once

/// Declares the contract between the installer and its plug-ins: the identifiers, the function block and the
/// parameter block. The tool has its own declarations, so that it detects errors in the header of a plug-in.

#include <CoreFoundation/CFPlugInCOM.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace xcodhost {

/// The plug-in type: 5CD9484B-4A86-4CA2-A79A-1525A3B5F6E8
inline constexpr CFUUIDBytes kPluginType = {0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x4C, 0xA2,
                                            0xA7, 0x9A, 0x15, 0x25, 0xA3, 0xB5, 0xF6, 0xE8};
/// The installer's interface: 00D5FBFE-3D3D-40E2-9DCB-92ED695834F8
inline constexpr CFUUIDBytes kHostInterface = {0x00, 0xD5, 0xFB, 0xFE, 0x3D, 0x3D, 0x40, 0xE2,
                                               0x9D, 0xCB, 0x92, 0xED, 0x69, 0x58, 0x34, 0xF8};

/// IUnknown: 00000000-0000-0000-C000-000000000046
inline constexpr CFUUIDBytes kUnknownInterface = {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                                                  0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};

inline constexpr const char* kFactoryFunction = "MyFactory";

/// Returns the identifier as upper-case hexadecimal digits in groups of 8, 4, 4, 4 and 12.
std::string Describe(const CFUUIDBytes& identifier);

using DeliverFunction = void (*)(void* block);

/// The table of functions that the first word of an instance points to.
struct FunctionBlock {
    IUNKNOWN_C_GUTS;
    DeliverFunction main;
};

inline constexpr std::uint16_t kInstallerSelector = 1000;
inline constexpr std::uint16_t kPreInstall = 2;
inline constexpr std::uint16_t kPostInstall = 3;

/// Returns "pre-install", "post-install" or "message N".
std::string EventName(std::uint16_t message);

/// The host's parameter block. Its fields are in native byte order, at fixed offsets and without alignment.
class ParameterBlock {
public:
    /// The number of bytes up to the end of the last field that a plug-in may read.
    static constexpr std::size_t kSize = 614;

    ParameterBlock(std::uint16_t selector, std::uint16_t message, std::int32_t product,
                   std::int32_t language);
    /// Creates a block from bytes. There must be at least `kSize` bytes.
    explicit ParameterBlock(std::vector<char> blockBytes) : bytes(std::move(blockBytes)) {}

    std::uint16_t Selector() const { return Field<std::uint16_t>(0); }
    std::uint16_t Message() const { return Field<std::uint16_t>(2); }
    std::int32_t Product() const { return Field<std::int32_t>(4); }
    std::uint32_t ErrorFlags() const { return Field<std::uint32_t>(8); }
    std::int32_t Language() const { return Field<std::int32_t>(610); }

    void SetErrorFlags(std::uint32_t flags) { SetField(8, flags); }
    /// Sets every byte of the fields that only the host uses.
    void FillHostFields(char byte) { std::fill(bytes.begin() + 12, bytes.begin() + 610, byte); }

    const std::vector<char>& Bytes() const { return bytes; }

    /// Returns text such as "selector 1000, message 2 (pre-install), product 4900, language 11"
    std::string Describe() const;

    /// Returns the offsets of the first and the last byte that differ from `other`, for example "20 to 23".
    /// Ignores the error flags. Returns an empty string if no other byte differs. `other` must have the same
    /// size.
    std::string BytesChangedElsewhere(const ParameterBlock& other) const;

private:
    template <typename T>
    T Field(std::size_t offset) const {
        T value;
        std::memcpy(&value, bytes.data() + offset, sizeof value);
        return value;
    }
    template <typename T>
    void SetField(std::size_t offset, T value) {
        std::memcpy(bytes.data() + offset, &value, sizeof value);
    }

    std::vector<char> bytes;
};

} // namespace xcodhost
