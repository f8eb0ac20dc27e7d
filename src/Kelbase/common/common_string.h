#pragma once

#include <Kelbase/common/common_char.h>
#include <Kelbase/common/common_checked_types.h>
#include <Kelbase/common/common_smart_ptr.h>

#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

/// @file
/// UTF-8 text: storage, formatting, parsing, searching, editing, concatenation and comparison.

/// UTF-8 text with a shared buffer.
///
/// Copies share one buffer. An edit of one `String` does not change its copies. Positions and lengths are
/// byte counts. A `String` has two empty states: null (no text) and zero bytes. Both read as "", are equal
/// and have length 0. The text may contain NUL bytes: `GetLength` counts them, but comparisons and C strings
/// end at the first one.
///
/// The bytes are not checked to be UTF-8. The reference count is not locked: a text and its copies belong to
/// one thread at a time. An operation throws `std::bad_alloc` for lack of memory, and `std::length_error` for
/// a text of 4 GiB or more (in a 32-bit process, of 2 GiB or more). The `String` is then unchanged. No
/// operation fails for another reason.
class String {
public:
    String() noexcept = default;
    /// Shares the text.
    String(const String& other) noexcept : block(other.block) {
        if (block) ++block->holders;
    }
    /// Moves the text. The source becomes null.
    String(String&& other) noexcept : block(std::exchange(other.block, nullptr)) {}
    ~String() {
        if (block && --block->holders == 0) Free(block);
    }
    /// Copies up to the NUL. A null pointer gives null.
    String(const char* s);
    /// Copies up to the NUL, at most `n` bytes. A null pointer gives null.
    String(const char* s, unsigned int n);
    /// Stores one byte, also the byte 0.
    String(char c);
    /// Converts UTF-16 units, ended by a 0 unit, to Mac Roman if `encoding` is 2, else to UTF-8. The result
    /// is null for a null pointer, for 100,000 units or more, and if a character cannot be encoded.
    String(const unsigned short* s, unsigned int encoding);

    /// Shares the text, or moves it from a temporary.
    String& operator=(String other) noexcept {
        std::swap(block, other.block);
        return *this;
    }
    String& operator=(const char* s); ///< Copies up to the NUL. A null pointer gives null.

    // Reading

    /// Returns the number of bytes without the terminator, 0 for both empty states.
    unsigned int GetLength() const { return block ? block->length : 0; }
    /// Returns the stored bytes, ended by a NUL; never null. The pointer is valid until this `String` is
    /// changed or destroyed.
    const char* Latin1() const { return block ? block->Bytes() : ""; }
    /// Returns the text up to its first NUL as UTF-16 units, ended by 0. Returns a null array if the bytes
    /// are not valid in the encoding (2 Mac Roman, else UTF-8) or give more than 100,000 units.
    shared_array<unsigned short> Unicode(unsigned int encoding) const;
    static String GetPlatformLinefeed(); ///< Returns one line feed, as Mac OS X uses it.

    // Appending

    String& operator+=(const String& r); ///< Shares `r` if this text is empty.
    /// Appends one byte, also the byte 0. The buffer grows ahead of need, so that repeated appending is
    /// cheap.
    String& operator+=(char c) {
        if (!IsSoleHolder() || block->length == block->capacity) return Append(std::string_view(&c, 1));
        char* const end = block->Bytes() + block->length++;
        end[0] = c;
        end[1] = '\0';
        return *this;
    }

    ///@{
    /// Returns a copy in which the argument replaces one placeholder. A placeholder is "%" and one digit.
    /// `Arg` replaces the placeholder with the lowest digit, the leftmost one of equal digits. Without a
    /// placeholder, `Arg` appends the argument. See `Number` for base, width, precision and format.
    String Arg(const String& a) const;
    String Arg(char c) const;
    String Arg(const Char& c) const;
    ///@}
    ///@{
    /// Formats a number. Base 16 formats the bits as an unsigned number: 32 bits for an `int` and for a
    /// `long` whose value fits 32 bits (-1 gives "FFFFFFFF"), all bits for another `long`.
    String Arg(int v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    String Arg(long v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    ///@}
    /// Formats a number. The number keeps its sign in every base.
    String Arg(short v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    ///@{
    /// Formats a number as `Number` does.
    String Arg(unsigned short v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    String Arg(unsigned int v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    String Arg(unsigned long v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    String Arg(long long v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    String Arg(unsigned long long v, unsigned int base = 10,
               const checked_value<unsigned int>& width = {}) const;
    String Arg(double v, unsigned int precision = 0xFFFFFFFF,
               const checked_value<unsigned int>& format = {}) const;
    String Arg(float v, unsigned int precision = 0xFFFFFFFF,
               const checked_value<unsigned int>& format = {}) const;
    ///@}

    // Numbers to text

    ///@{
    /// Returns the number in a base from 2 to 36 with upper-case digits; another base counts as 10. "0" pads
    /// the digits on the left to `width`, which does not count the sign. The smallest 32-bit number with a
    /// width is formatted as two pieces (all digits but the last, and the last), each padded to the width.
    static String Number(int v, unsigned int base = 10, const checked_value<unsigned int>& width = {});
    static String Number(long v, unsigned int base = 10, const checked_value<unsigned int>& width = {});
    static String Number(unsigned int v, unsigned int base = 10,
                         const checked_value<unsigned int>& width = {});
    static String Number(unsigned long v, unsigned int base = 10,
                         const checked_value<unsigned int>& width = {});
    ///@}
    ///@{
    /// Returns the bits as an unsigned number in base 16, and the number in base 10 for every other base.
    static String Number(long long v, unsigned int base = 10, const checked_value<unsigned int>& width = {});
    static String Number(unsigned long long v, unsigned int base = 10,
                         const checked_value<unsigned int>& width = {});
    ///@}
    ///@{
    /// Returns the number as printf formats it. `format` is one of the letters f F e E g G; another value
    /// counts as f. `precision` is limited to 99; 0xFFFFFFFF means the default of 6. The decimal point is
    /// that of the process's locale.
    static String Number(double v, unsigned int precision = 0xFFFFFFFF,
                         const checked_value<unsigned int>& format = {});
    static String Number(float v, unsigned int precision = 0xFFFFFFFF,
                         const checked_value<unsigned int>& format = {});
    ///@}

    /// @name Text to numbers
    /// Each function parses the whole text without the white space around it. If the text is not one number
    /// of the accepted range, the result is 0 and `*ok` is false; otherwise `*ok` is true. "." and "," are
    /// both decimal separators. Full-width digits, minus signs and full stops count as ASCII ones.
    ///
    /// The digits of a base above 10 are letters in either case. In a base above 36 the ASCII characters
    /// after "Z" and "z" are digits too. Base 0 has no digits. Prefixes such as "0x" are not accepted.
    ///@{

    /// Accepts -65535 to 32767. The value is cut to 16 bits: "-40000" gives 25536.
    short ToShort(bool* ok = nullptr, unsigned int base = 10) const;
    /// Accepts 0 to 65535. All unsigned types reject "-", also before 0.
    unsigned short ToUShort(bool* ok = nullptr, unsigned int base = 10) const;
    /// Accepts -2147483648 to 2147483647.
    int ToInt(bool* ok = nullptr, unsigned int base = 10) const;
    /// Accepts 0 to 4294967295.
    unsigned int ToUInt(bool* ok = nullptr, unsigned int base = 10) const;
    /// Accepts 0 to 4294967295 and "-0". The low 32 bits are sign-extended: "3000000000" gives -1294967296.
    long long ToInt64(bool* ok = nullptr, unsigned int base = 10) const;
    /// Accepts 0 to 18446744073709551615, unlike `ToInt64`.
    unsigned long long ToUInt64(bool* ok = nullptr, unsigned int base = 10) const;
    /// Accepts exponents, hexadecimal numbers, infinities and NaN as strtod does.
    double ToDouble(bool* ok = nullptr) const;
    /// Returns `ToDouble`, rounded to float. The result is infinite if the number is too large for a float.
    float ToFloat(bool* ok = nullptr) const;
    ///@}

    /// @name Searching
    /// If `caseSensitive` is false, "A"-"Z" equal "a"-"z". No other letters are folded.
    ///@{

    /// Returns the first position at or after `start`. Returns absent if there is none, also for a `start` at
    /// or past the end.
    checked_value<unsigned int> Find(char c, unsigned int start = 0, bool caseSensitive = true) const;
    /// Compares both texts up to their next NUL. An empty `s` is found at `start`, a null pointer nowhere.
    checked_value<unsigned int> Find(const char* s, unsigned int start = 0, bool caseSensitive = true) const;
    /// Returns the last position at or before `start` (absent: the last byte). Returns absent if there is
    /// none, also for a `start` at or past the end.
    checked_value<unsigned int> FindRev(char c, const checked_value<unsigned int>& start = {},
                                        bool caseSensitive = true) const;
    /// Returns true for an empty `p`. Bytes after a NUL at the same place in both texts are not compared.
    bool BeginsWith(const String& p, bool caseSensitive = true) const;
    /// Returns true for an empty `p`, and compares as `BeginsWith` does.
    bool EndsWith(const String& p, bool caseSensitive = true) const;
    ///@}

    // Slices

    ///@{
    /// Returns `n` bytes from the start or the end, or the whole text, shared, if it is no longer. The cut
    /// may split a character.
    String Left(unsigned int n) const;
    String Right(unsigned int n) const;
    ///@}
    /// Returns at most `n` bytes from `start` on (absent: up to the end). Returns null if `start` is at or
    /// past the end.
    String Mid(unsigned int start, const checked_value<unsigned int>& n = {}) const;

    // Editing in place: these functions change this `String` and return it

    String& Insert(unsigned int pos, const String& s); ///< Appends if `pos` is at or past the end.
    /// Removes at most `n` bytes from `pos` on (absent: up to the end). Does nothing if `pos` is at or past
    /// the end.
    String& Remove(unsigned int pos, const checked_value<unsigned int>& n = {});
    String& Truncate(unsigned int n); ///< Calls `Resize(n, true)` if the text is longer than `n` bytes.
    /// Sets the length to `n` bytes. New bytes are NUL. With `keepWholeCharacters`, a UTF-8 sequence that the
    /// new end cuts off becomes NUL bytes, which still count in the length.
    String& Resize(unsigned int n, bool keepWholeCharacters);
    /// Gives this `String` a buffer of its own. If `n` is not below the length, NUL bytes extend the text to
    /// `n` + 1 bytes.
    String& detachAndExtend(unsigned int n);

    // Edited copies

    String ReplaceChar(const Char& from, const Char& to) const; ///< Replaces every byte `from`.
    String Replace(const String& from, const String& to) const; ///< Replaces from left to right.
    ///@{
    /// Maps "a"-"z" and "A"-"Z" to each other in every locale. Keeps all other bytes.
    String ToUpper() const;
    String ToLower() const;
    ///@}
    String StripWhiteSpace() const; ///< Removes the bytes of `Char::IsSpace` at both ends.
    /// Removes white space at both ends and replaces every other run of white space by one blank. The byte
    /// 0xA0 counts as white space in UTF-8 sequences too. A sequence that is cut off at the end becomes NUL
    /// bytes.
    String SimplifyWhiteSpace() const;

    // Lists

    /// Replaces the contents of `out` by the parts between the separators. There is always at least one part.
    void Split(char sep, std::vector<String>& out) const;
    /// Returns the parts with `sep` between them. Returns null if there are no parts.
    static String Join(const String& sep, const std::vector<String>& parts);

private:
    friend class StringBuilder;

    /// The header of a text's buffer. The bytes and their NUL follow it in the same allocation.
    struct Block {
        unsigned int holders;
        unsigned int length;
        unsigned int capacity; // of the bytes without the NUL
        char* Bytes() { return reinterpret_cast<char*>(this + 1); }
    };

    explicit String(std::string_view bytes);

    static Block* NewBlock(std::size_t length, std::size_t capacity);
    static void Free(Block* b) noexcept;

    /// Finds `part` as strstr does, with "A"-"Z" equal to "a"-"z".
    static const char* FindFolded(const char* s, const char* part);

    std::string_view Bytes() const { return {Latin1(), GetLength()}; }
    /// Returns whether no other `String` shares the text, so that it may be edited in place.
    bool IsSoleHolder() const { return block && block->holders == 1; }
    String& Append(std::string_view piece);

    friend String operator+(String a, const String& b);
    friend String operator+(String a, const char* b);

    Block* block = nullptr; // null in the null state
};

/// Concatenates. Shares the other text if one is empty.
String operator+(String a, const String& b);
/// Concatenates. A null pointer adds nothing.
String operator+(String a, const char* b);

///@{
/// Compares the bytes up to the first NUL, as unsigned numbers. Every comparison with a null character
/// pointer is false.
inline bool operator==(const String& l, const String& r) {
    return l.Latin1() == r.Latin1() || std::strcmp(l.Latin1(), r.Latin1()) == 0;
}
inline bool operator<(const String& l, const String& r) { return std::strcmp(l.Latin1(), r.Latin1()) < 0; }
inline bool operator<=(const String& l, const String& r) { return std::strcmp(l.Latin1(), r.Latin1()) <= 0; }
inline bool operator==(const String& l, const char* r) { return r && std::strcmp(l.Latin1(), r) == 0; }
inline bool operator<(const String& l, const char* r) { return r && std::strcmp(l.Latin1(), r) < 0; }
inline bool operator<=(const String& l, const char* r) { return r && std::strcmp(l.Latin1(), r) <= 0; }
///@}

inline checked_value<unsigned int> String::Find(const char* s, unsigned int start, bool caseSensitive) const {
    if (!s || start >= GetLength()) return {};
    const char* const from = Latin1() + start;
    const char* const found = caseSensitive ? std::strstr(from, s) : FindFolded(from, s);
    if (!found) return {};
    return static_cast<unsigned int>(found - Latin1());
}
