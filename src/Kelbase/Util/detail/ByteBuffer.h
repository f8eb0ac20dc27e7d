#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace Util {

/// Bytes that grow at their end, at most 4294967295 of them. The room for them is kept apart from their
/// number, so that a byte that is written next is not set to 0 first.
class ByteBuffer {
public:
    /// No bytes yet, and room for that many.
    explicit ByteBuffer(unsigned int capacity) {
        if (capacity > 0) Enlarge(capacity);
    }

    unsigned int Size() const { return size; } ///< Bytes written, not those there is room for.
    /// Lent until the next `Place`; null when there never was room.
    const unsigned char* Data() const { return bytes.get(); }
    void Clear() { size = 0; } ///< No bytes, and the room as before.

    /// Where `count` bytes from `position` on are to be written, all of them: the buffer now has them. Zeros
    /// fill a gap before them. Throws `std::length_error` or `std::bad_alloc`, and is then as before.
    unsigned char* Place(unsigned int position, unsigned long long count) {
        const unsigned long long end = position + count;
        if (end > room || position > size) Extend(position, end);
        if (end > size) size = static_cast<unsigned int>(end);
        return bytes.get() + position;
    }

private:
    struct Free {
        void operator()(unsigned char* p) const { std::free(p); }
    };

    void Extend(unsigned int position, unsigned long long end);
    void Enlarge(unsigned long long wanted);

    std::unique_ptr<unsigned char, Free> bytes; // of the C library: it can enlarge a block where it stands
    unsigned int size = 0, room = 0;
};

} // namespace Util
