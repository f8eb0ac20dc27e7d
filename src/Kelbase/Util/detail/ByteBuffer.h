#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace Util {

/// A growable array of at most 4294967295 bytes. Capacity and size are separate, so that bytes that are
/// written next are not set to 0 first.
class ByteBuffer {
public:
    /// Creates an empty buffer and allocates `initialCapacity` bytes.
    explicit ByteBuffer(unsigned int initialCapacity) {
        if (initialCapacity > 0) Enlarge(initialCapacity);
    }

    unsigned int Size() const { return size; } ///< Returns the number of written bytes, not the capacity.
    /// Returns the bytes, which stay owned and valid until the next `Place`. Null while there is no capacity.
    const unsigned char* Data() const { return bytes.get(); }
    void Clear() { size = 0; } ///< Removes all bytes and keeps the capacity.

    /// Adds `count` bytes from `position` on to the buffer and returns the place of the first. The caller
    /// must write all of them. Zeros fill a gap before `position`. Throws `std::length_error` or
    /// `std::bad_alloc` and then leaves the buffer unchanged.
    unsigned char* Place(unsigned int position, unsigned long long count) {
        const unsigned long long end = position + count;
        if (end > capacity || position > size) Extend(position, end);
        if (end > size) size = static_cast<unsigned int>(end);
        return bytes.get() + position;
    }

private:
    struct Free {
        void operator()(unsigned char* p) const { std::free(p); }
    };

    void Extend(unsigned int position, unsigned long long end);
    void Enlarge(unsigned long long wanted);

    std::unique_ptr<unsigned char, Free> bytes; // from realloc, which can grow a block in place
    unsigned int size = 0, capacity = 0;
};

} // namespace Util
