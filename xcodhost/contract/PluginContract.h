#pragma once

/// What the installer and its plug-ins agreed upon: identifiers, the interface's function block, and the
/// parameter block. The tool's own knowledge; it shares no header with any plug-in.

#include <CoreFoundation/CFPlugInCOM.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace xcodhost {

/// 5CD9484B-4A86-4CA2-A79A-1525A3B5F6E8
inline constexpr CFUUIDBytes kPluginType = {0x5C, 0xD9, 0x48, 0x4B, 0x4A, 0x86, 0x4C, 0xA2,
                                            0xA7, 0x9A, 0x15, 0x25, 0xA3, 0xB5, 0xF6, 0xE8};
/// 00D5FBFE-3D3D-40E2-9DCB-92ED695834F8
inline constexpr CFUUIDBytes kHostInterface = {0x00, 0xD5, 0xFB, 0xFE, 0x3D, 0x3D, 0x40, 0xE2,
                                               0x9D, 0xCB, 0x92, 0xED, 0x69, 0x58, 0x34, 0xF8};

/// IUnknown's: 00000000-0000-0000-C000-000000000046
inline constexpr CFUUIDBytes kUnknownInterface = {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00,
                                                  0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};

inline constexpr const char* kFactoryFunction = "MyFactory";

/// 8-4-4-4-12 upper-case digits.
std::string Describe(const CFUUIDBytes& identifier);

using DeliverFunction = void (*)(void* block);

/// What the first word of an instance points at.
struct FunctionBlock {
    IUNKNOWN_C_GUTS;
    DeliverFunction main;
};

inline constexpr std::uint16_t kInstallerSelector = 1000;
inline constexpr std::uint16_t kPreInstall = 2;
inline constexpr std::uint16_t kPostInstall = 3;

/// "pre-install", "post-install", or "message N".
std::string EventName(std::uint16_t message);

/// The host's parameter block: native byte order, fields at fixed places without regard to alignment.
class ParameterBlock {
public:
    static constexpr std::size_t kSize = 614; ///< Up to the end of the last field that a plug-in may read.

    ParameterBlock(std::uint16_t selector, std::uint16_t message, std::int32_t product,
                   std::int32_t language);
    /// Takes the bytes as they are; at least `kSize` of them.
    explicit ParameterBlock(std::vector<char> blockBytes) : bytes(std::move(blockBytes)) {}

    std::uint16_t Selector() const { return Field<std::uint16_t>(0); }
    std::uint16_t Message() const { return Field<std::uint16_t>(2); }
    std::int32_t Product() const { return Field<std::int32_t>(4); }
    std::uint32_t ErrorFlags() const { return Field<std::uint32_t>(8); }
    std::int32_t Language() const { return Field<std::int32_t>(610); }

    void SetErrorFlags(std::uint32_t flags) { SetField(8, flags); }
    /// Fills the fields that are the host's alone.
    void FillHostFields(char byte) { std::fill(bytes.begin() + 12, bytes.begin() + 610, byte); }

    const std::vector<char>& Bytes() const { return bytes; }

    /// "selector 1000, message 2 (pre-install), product 4900, language 11"
    std::string Describe() const;

    /// "20 to 23": the first and last place where `other`, of the same size, differs outside the error flags;
    /// empty when nowhere.
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
