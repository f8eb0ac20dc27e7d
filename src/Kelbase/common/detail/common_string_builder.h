#pragma once

#include <Kelbase/common/common_string.h>
#include <Kelbase/common/detail/common_string_length.h>

/// Builds a text by appending pieces. The finished `String` keeps the buffer of the builder.
class StringBuilder {
public:
    /// Allocates a buffer for at most `length` bytes. Throws `std::bad_alloc` and `std::length_error`.
    explicit StringBuilder(unsigned long long length) {
        const std::size_t capacity = CheckedLength(length);
        text.block = String::NewBlock(capacity, capacity);
        end = text.block->Bytes();
    }

    // The capacity is not checked: the caller must not add more than `length` bytes in total.

    StringBuilder& Add(std::string_view piece) {
        std::memcpy(end, piece.data(), piece.size());
        end += piece.size();
        return *this;
    }
    StringBuilder& Add(char c) {
        *end++ = c;
        return *this;
    }

    /// Appends `n` bytes and returns their address. The caller writes the bytes.
    char* Take(std::size_t n) { return std::exchange(end, end + n); }

    /// Returns the address of the next byte. A caller that writes bytes at this address must then call
    /// `FinishAt`.
    char* End() { return end; }

    /// Returns the text. The builder must not be used afterwards.
    String Finish() { return FinishAt(end); }
    /// Returns the text that ends before the address `e`. The builder must not be used afterwards.
    String FinishAt(char* e) {
        *e = '\0';
        text.block->length = static_cast<unsigned int>(e - text.block->Bytes());
        return std::move(text);
    }

private:
    String text;
    char* end;
};
