#pragma once

/// Declares the class that reads numbers and strings from a Mach-O file and checks every access.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace xcodhost {

/// Thrown if the file is malformed.
struct BrokenMachO {
    const char* reason;
};

/// Reads a part of a file. An offset is the number of bytes from the start of the part. Every function throws
/// BrokenMachO for an access outside the part. The object does not own the bytes.
class MachOBytes {
public:
    MachOBytes(std::string_view part, bool bigEndian) : bytes(part), isBigEndian(bigEndian) {}

    std::uint64_t Size() const { return bytes.size(); }
    unsigned int Byte(std::uint64_t offset) const { return static_cast<unsigned char>(Part(offset, 1)[0]); }
    std::uint32_t U32(std::uint64_t offset) const { return static_cast<std::uint32_t>(Number(offset, 4)); }
    std::uint64_t U64(std::uint64_t offset) const { return Number(offset, 8); }

    /// Returns a structure that consists of 32-bit numbers.
    template <typename T>
    T Words(std::uint64_t offset) const {
        std::array<std::uint32_t, sizeof(T) / sizeof(std::uint32_t)> words{};
        for (std::size_t i = 0; i < words.size(); ++i) words[i] = U32(offset + i * sizeof(std::uint32_t));
        T value;
        static_assert(sizeof value == sizeof words);
        std::memcpy(&value, words.data(), sizeof value);
        return value;
    }

    bool Contains(std::uint64_t offset, std::uint64_t size) const {
        return offset <= bytes.size() && size <= bytes.size() - offset;
    }
    std::string_view Part(std::uint64_t offset, std::uint64_t size) const {
        if (!Contains(offset, size)) throw BrokenMachO{"a table is outside the file"};
        return bytes.substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(size));
    }
    /// Returns the bytes up to the next NUL. Throws BrokenMachO if there is no NUL.
    std::string_view Text(std::uint64_t offset) const {
        const std::string_view rest =
            Part(offset, bytes.size() - std::min<std::uint64_t>(offset, bytes.size()));
        const std::size_t end = rest.find('\0');
        if (end == std::string_view::npos) throw BrokenMachO{"a name has no end"};
        return rest.substr(0, end);
    }
    /// Returns a number in the ULEB128 encoding and moves `offset` past the number. Throws BrokenMachO for a
    /// number of more than ten bytes.
    std::uint64_t Compressed(std::uint64_t& offset) const {
        std::uint64_t value = 0;
        for (unsigned int shift = 0; shift < 64; shift += 7) {
            const std::uint64_t byte = Byte(offset++);
            value |= (byte & 0x7F) << shift;
            if (byte < 0x80) return value;
        }
        throw BrokenMachO{"a number has no end"};
    }
    /// Returns a part of this part. Its offsets begin at 0.
    MachOBytes Inner(std::uint64_t offset, std::uint64_t size) const {
        return {Part(offset, size), isBigEndian};
    }

private:
    std::uint64_t Number(std::uint64_t offset, unsigned int size) const {
        const std::string_view part = Part(offset, size);
        std::uint64_t value = 0;
        for (unsigned int i = 0; i < size; ++i) {
            value = value << 8 | static_cast<unsigned char>(part[isBigEndian ? i : size - 1 - i]);
        }
        return value;
    }

    std::string_view bytes;
    bool isBigEndian;
};

} // namespace xcodhost
