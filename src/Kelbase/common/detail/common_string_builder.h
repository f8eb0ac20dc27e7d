#pragma once

#include <Kelbase/common/common_string.h>
#include <Kelbase/common/detail/common_string_length.h>

/// A new text, written from front to back into the one block of memory that it will take.
class StringBuilder {
public:
    /// Makes room for a text of at most `length` bytes; throws as `String` does.
    explicit StringBuilder(unsigned long long length) {
        const std::size_t room = checkedLength(length);
        text.block = String::NewBlock(room, room);
        end = text.block->Bytes();
    }

    // What is added must fit the room.

    StringBuilder& Add(std::string_view piece) {
        std::memcpy(end, piece.data(), piece.size());
        end += piece.size();
        return *this;
    }
    StringBuilder& Add(char c) {
        *end++ = c;
        return *this;
    }

    /// The next `n` bytes, for the caller to write.
    char* Take(std::size_t n) { return std::exchange(end, end + n); }

    /// Where the next byte goes, for those who write there themselves; they then `Finish` at another place.
    char* End() { return end; }

    String Finish() { return FinishAt(end); }
    /// The text up to `e`; the builder has none left.
    String FinishAt(char* e) {
        *e = '\0';
        text.block->length = static_cast<unsigned int>(e - text.block->Bytes());
        return std::move(text);
    }

private:
    String text;
    char* end;
};
