#pragma once

/// @file
/// The bytes of a text, classified as characters.

/// Unicode general category of each byte, read as a Latin-1 character.
extern const unsigned char CHAR_CATEGORIES[256];

/// One byte of a String.
///
/// The byte is classified as a Latin-1 character, even if it is part of a UTF-8 sequence: the byte 0xA0
/// counts as white space, and 0xB2 as a number.
class Char {
public:
    Char() : c(0) {}
    /// Implicit, so that callers can pass a character literal.
    Char(char byte) : c(byte) {}

    operator char() const { return c; } ///< Returns the byte, not a code point.

    /// Returns the number of the byte's general category in `CHAR_CATEGORIES`.
    unsigned char Category() const { return CHAR_CATEGORIES[static_cast<unsigned char>(c)]; }
    /// Returns true for "0" to "9" only.
    bool IsDigit() const { return Category() == 4; }
    /// Returns true for the blank, for the bytes 0x09 to 0x0D, and for every byte of a separator category.
    bool IsSpace() const {
        return c == ' ' || (c >= 0x09 && c <= 0x0D) || (Category() >= 7 && Category() <= 9);
    }
    ///@{
    /// Maps "a"-"z" and "A"-"Z" to each other. Returns every other byte unchanged, bytes of other letters
    /// too.
    Char ToUpper() const { return c >= 'a' && c <= 'z' ? Char(static_cast<char>(c - 0x20)) : *this; }
    Char ToLower() const { return c >= 'A' && c <= 'Z' ? Char(static_cast<char>(c + 0x20)) : *this; }
    ///@}

private:
    char c;
};
