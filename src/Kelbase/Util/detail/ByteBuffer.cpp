#include <Kelbase/Util/detail/ByteBuffer.h>

#include <algorithm>
#include <new>
#include <stdexcept>

namespace Util {

namespace {

constexpr unsigned long long kLargestSize = 0xFFFFFFFF;

} // namespace

/// Grows the buffer up to `end` and fills the gap between the written bytes and `position` with zeros.
void ByteBuffer::Extend(unsigned int position, unsigned long long end) {
    if (end > kLargestSize) throw std::length_error("Util::ByteStream: more than 4294967295 bytes");
    if (end > capacity) Enlarge(std::max(end, std::min(2ull * capacity, kLargestSize)));
    if (position > size) std::memset(bytes.get() + size, 0, position - size);
}

void ByteBuffer::Enlarge(unsigned long long wanted) {
    if (wanted > PTRDIFF_MAX) throw std::bad_alloc();
    void* const larger = std::realloc(bytes.get(), static_cast<std::size_t>(wanted));
    if (!larger) throw std::bad_alloc();
    static_cast<void>(bytes.release()); // realloc has freed the old block or returned it
    bytes.reset(static_cast<unsigned char*>(larger));
    capacity = static_cast<unsigned int>(wanted);
}

} // namespace Util
