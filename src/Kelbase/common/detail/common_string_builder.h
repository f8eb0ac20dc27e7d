#pragma once

#include <Kelbase/common/common_string.h>
#include <Kelbase/common/detail/common_string_length.h>

/// Builds a text from front to back in the buffer that the finished `String` keeps.
class StringBuilder {
public:
    /// Allocates a buffer for at most `length` bytes. Throws as `String` does.
    explicit StringBuilder(unsigned long long length) {
        const std::size_t capacity = CheckedLength(length);
        text.block = String::NewBlock(capacity, capacity);
        end = text.block->Bytes();
    }

    // The caller must not add more than that.

    StringBuilder& Add(std::string_view piece) {
        std::memcpy(end, piece.data(), piece.size());
        end += piece.size();
        return *this;
    }
    StringBuilder& Add(char c) {
        *end++ = c;
        return *this;
    }

    /// Returns the place of the next `n` bytes. The caller writes them.
    char* Take(std::size_t n) { return std::exchange(end, end + n); }

    /// Returns the place of the next byte. A caller that writes there itself ends with `FinishAt`.
    char* End() { return end; }

    /// Returns the text. The builder is empty afterwards.
    String Finish() { return FinishAt(end); }
    /// Returns the text up to `e`. The builder is empty afterwards.
    String FinishAt(char* e) {
        *e = '\0';
        text.block->length = static_cast<unsigned int>(e - text.block->Bytes());
        return std::move(text);
    }

private:
    String text;
    char* end;
};
