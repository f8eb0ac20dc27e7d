#include <Kelbase/common/common_string.h>

#include <Kelbase/common/detail/common_string_length.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <stdexcept>

namespace {

std::size_t lengthUpToNul(const char* s, unsigned int limit) {
    const void* end = std::memchr(s, 0, limit);
    return end ? static_cast<std::size_t>(static_cast<const char*>(end) - s) : limit;
}

/// Returns the length of a UTF-8 sequence by its lead byte. Includes the obsolete sequences of five to seven
/// bytes.
std::size_t sequenceLength(unsigned char lead) {
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    if (lead < 0xF8) return 4;
    if (lead < 0xFC) return 5;
    return lead < 0xFE ? 6 : 7;
}

/// Replaces the bytes of an incomplete UTF-8 sequence at the end of the text by NUL bytes.
void blankCutSequence(char* bytes, std::size_t length) {
    if (length == 0 || static_cast<unsigned char>(bytes[length - 1]) < 0x80) return;
    for (std::size_t i = length; i-- > 0;) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        if (byte < 0xC0) continue;
        const std::size_t present = length - i;
        if (sequenceLength(byte) > present) std::memset(bytes + i, 0, present);
        return;
    }
}

/// Returns the capacity of a new buffer for a text that has grown to `length` bytes: twice the length, and at
/// least 16 bytes of spare capacity. Returns `length` if this capacity is too large.
std::size_t capacityToGrow(std::size_t length) {
    const unsigned long long capacity = length + std::max(0ull + length, 16ull);
    return capacity > 0xFFFFFFFFu || capacity > PTRDIFF_MAX ? length : static_cast<std::size_t>(capacity);
}

} // namespace

void ThrowLengthError() { throw std::length_error("String: too long"); }

/// Allocates a buffer with one holder and writes the terminating NUL. The caller writes the bytes. Both sizes
/// must have been checked with `CheckedLength`. Throws `std::bad_alloc`.
String::Block* String::NewBlock(std::size_t length, std::size_t capacity) {
    void* const memory = std::malloc(sizeof(Block) + capacity + 1); // operator new would only call malloc
    if (!memory) throw std::bad_alloc();
    const auto newLength = static_cast<unsigned int>(length),
               newCapacity = static_cast<unsigned int>(capacity);
    Block* const b = new (memory) Block{1, newLength, newCapacity};
    b->Bytes()[length] = '\0';
    return b;
}

void String::Free(Block* b) noexcept { std::free(b); }

String::String(std::string_view bytes) {
    if (bytes.empty()) return;
    block = NewBlock(CheckedLength(bytes.size()), bytes.size());
    std::memcpy(block->Bytes(), bytes.data(), bytes.size());
}

String::String(const char* s) : String(s ? std::string_view(s) : std::string_view()) {}

String::String(const char* s, unsigned int n)
    : String(s ? std::string_view(s, lengthUpToNul(s, n)) : std::string_view()) {}

String::String(char c) : String(std::string_view(&c, 1)) {}

String& String::operator=(const char* s) { return *this = String(s); }

String String::GetPlatformLinefeed() { return String('\n'); }

String& String::Append(std::string_view piece) {
    const std::size_t length = GetLength();
    const std::size_t total = CheckedLength(0ull + length + piece.size());
    if (IsSoleHolder() && total <= block->capacity) {
        std::memcpy(block->Bytes() + length, piece.data(), piece.size());
        block->length = static_cast<unsigned int>(total);
        block->Bytes()[total] = '\0';
        return *this;
    }
    String longer; // frees the old buffer at the end, because `piece` may be a part of it
    longer.block = NewBlock(total, capacityToGrow(total));
    std::memcpy(longer.block->Bytes(), Latin1(), length);
    std::memcpy(longer.block->Bytes() + length, piece.data(), piece.size());
    std::swap(block, longer.block);
    return *this;
}

String& String::operator+=(const String& r) {
    if (r.GetLength() == 0) return *this;
    if (GetLength() == 0) return *this = r;
    return Append(r.Bytes());
}

String operator+(String a, const String& b) {
    a += b;
    return a;
}

String operator+(String a, const char* b) {
    if (b) a.Append(b);
    return a;
}

String& String::detachAndExtend(unsigned int n) {
    const std::size_t length = n < GetLength() ? GetLength() : CheckedLength(n + 1ull);
    return Resize(static_cast<unsigned int>(length), false);
}

String& String::Resize(unsigned int n, bool keepWholeCharacters) {
    const unsigned int kept = std::min(n, GetLength());
    if (!IsSoleHolder() || n > block->capacity) {
        String own;
        own.block = NewBlock(CheckedLength(n), IsSoleHolder() ? capacityToGrow(n) : n);
        std::memcpy(own.block->Bytes(), Latin1(), kept);
        std::swap(block, own.block);
    }
    std::memset(block->Bytes() + kept, 0, n - kept + std::size_t{1});
    block->length = n;
    if (keepWholeCharacters) blankCutSequence(block->Bytes(), n);
    return *this;
}

String& String::Truncate(unsigned int n) { return n < GetLength() ? Resize(n, true) : *this; }
