#pragma once

/// Unicode general category of each byte, read as a Latin-1 character.
extern const unsigned char CHAR_CATEGORIES[256];

/// One byte of a String.
///
/// It is classified as if it were a Latin-1 character, also where it is part of a UTF-8 sequence: the byte
/// 0xA0 counts as white space, 0xB2 as a number.
class Char {
public:
    Char() : c(0) {}
    /// Implicit: a Char is written as a character literal.
    Char(char byte) : c(byte) {}

    operator char() const { return c; } ///< The byte, not a code point.

    /// The number of its general category in `CHAR_CATEGORIES`.
    unsigned char Category() const { return CHAR_CATEGORIES[static_cast<unsigned char>(c)]; }
    /// "0" to "9" and nothing else.
    bool IsDigit() const { return Category() == 4; }
    /// The blank, bytes 0x09 to 0x0D, and every byte of a separator category.
    bool IsSpace() const {
        return c == ' ' || (c >= 0x09 && c <= 0x0D) || (Category() >= 7 && Category() <= 9);
    }
    ///@{
    /// "A"-"Z" and "a"-"z" mapped to each other; every other byte stays, of other letters too.
    Char ToUpper() const { return c >= 'a' && c <= 'z' ? Char(static_cast<char>(c - 0x20)) : *this; }
    Char ToLower() const { return c >= 'A' && c <= 'Z' ? Char(static_cast<char>(c + 0x20)) : *this; }
    ///@}

private:
    char c;
};
