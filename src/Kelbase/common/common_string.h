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
/// Declares `String`, the text class: storage, formatting, parsing, searching, editing, concatenation and
/// comparison.

/// UTF-8 text with a shared buffer.
///
/// Copies share one buffer. An edit of one `String` does not change its copies. Positions and lengths are
/// byte counts. A `String` has two empty states: null (no buffer) and a buffer of zero bytes. The two states
/// compare equal, both have length 0, and `Latin1` returns "" for both. The text may contain NUL bytes:
/// `GetLength` counts them, but comparisons and C strings end at the first one.
///
/// The bytes are not checked to be UTF-8. The reference count is a plain integer. Only one thread at a time
/// may use a `String` and its copies. An operation throws `std::bad_alloc` for lack of memory, and
/// `std::length_error` if the result has 4 GiB or more (in a 32-bit process, 2 GiB or more). The `String` is
/// then unchanged. No operation throws another exception.
class String {
public:
    String() noexcept = default;
    /// Shares the buffer of `other`.
    String(const String& other) noexcept : block(other.block) {
        if (block) ++block->holders;
    }
    /// Takes the buffer of `other`, which becomes null.
    String(String&& other) noexcept : block(std::exchange(other.block, nullptr)) {}
    ~String() {
        if (block && --block->holders == 0) Free(block);
    }
    /// Copies the bytes before the first NUL. The result is null for a null pointer and for no bytes.
    String(const char* s);
    /// Copies the bytes before the first NUL, at most `n` bytes. The result is null for a null pointer and
    /// for no bytes. The array needs no NUL if it has `n` bytes.
    String(const char* s, unsigned int n);
    /// Creates a text of one byte. The byte may be 0.
    String(char c);
    /// Converts UTF-16 units up to the terminating 0 unit. `encoding` is the encoding of the result: Mac
    /// Roman for 2, UTF-8 for any other value. The result is null for a null pointer, for 100,000 units or
    /// more, and if a character cannot be encoded.
    String(const unsigned short* s, unsigned int encoding);

    /// Shares the buffer of `other`, or takes the buffer of a temporary.
    String& operator=(String other) noexcept {
        std::swap(block, other.block);
        return *this;
    }
    String& operator=(const char* s); ///< Assigns `String(s)`.

    // Reading

    /// Returns the number of bytes without the terminating NUL.
    unsigned int GetLength() const { return block ? block->length : 0; }
    /// Returns the stored bytes and a terminating NUL. The result is never null. The pointer is valid until
    /// this `String` is changed or destroyed.
    const char* Latin1() const { return block ? block->Bytes() : ""; }
    /// Returns the text before its first NUL as UTF-16 units with a terminating 0 unit. `encoding` is the
    /// encoding of the stored bytes: Mac Roman for 2, UTF-8 for any other value. Returns a null array if the
    /// bytes are not valid in the encoding or if the result has more than 100,000 units.
    shared_array<unsigned short> Unicode(unsigned int encoding) const;
    static String GetPlatformLinefeed(); ///< Returns one line feed, as Mac OS X uses it.

    // Appending

    String& operator+=(const String& r); ///< Appends `r`. Shares the buffer of `r` if this text is empty.
    /// Appends one byte. The byte may be 0. A buffer that must grow gets spare capacity, so that most calls
    /// do not allocate.
    String& operator+=(char c) {
        if (!IsSoleHolder() || block->length == block->capacity) return Append(std::string_view(&c, 1));
        char* const end = block->Bytes() + block->length++;
        end[0] = c;
        end[1] = '\0';
        return *this;
    }

    ///@{
    /// Returns a copy in which the argument replaces one placeholder. A placeholder is "%" and one digit.
    /// `Arg` replaces the placeholder with the lowest digit. If several placeholders have this digit, `Arg`
    /// replaces the leftmost one. If there is no placeholder, `Arg` appends the argument. See `Number` for
    /// base, width, precision and format.
    String Arg(const String& a) const;
    String Arg(char c) const;
    String Arg(const Char& c) const;
    ///@}
    ///@{
    /// Formats a number. Base 16 formats the bits as an unsigned number, so -1 gives "FFFFFFFF". An `int`,
    /// and a `long` whose value fits an `int`, has 32 bits. Any other `long` is formatted with all its bits.
    String Arg(int v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    String Arg(long v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    ///@}
    /// Formats a number. A negative number has a "-" in every base, also in base 16.
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
    /// Returns the number in a base from 2 to 36 with upper-case digits. Any other base means 10. A negative
    /// number has a "-" in every base. Zeros pad the digits on the left to `width` digits. `width` does not
    /// include the sign. If the value is -2147483648 and a width is given, all digits but the last are padded
    /// to the width, and the last digit is padded to the width a second time: with base 10 and width 3 the
    /// result is "-214748364008".
    static String Number(int v, unsigned int base = 10, const checked_value<unsigned int>& width = {});
    static String Number(long v, unsigned int base = 10, const checked_value<unsigned int>& width = {});
    static String Number(unsigned int v, unsigned int base = 10,
                         const checked_value<unsigned int>& width = {});
    static String Number(unsigned long v, unsigned int base = 10,
                         const checked_value<unsigned int>& width = {});
    ///@}
    ///@{
    /// Returns the number. Base 16 formats the 64 bits as an unsigned number. Any other base means 10.
    static String Number(long long v, unsigned int base = 10, const checked_value<unsigned int>& width = {});
    static String Number(unsigned long long v, unsigned int base = 10,
                         const checked_value<unsigned int>& width = {});
    ///@}
    ///@{
    /// Returns the number as printf formats it. `format` is one of the letters f F e E g G. An absent format
    /// and any other value mean f. A precision above 99 is reduced to 99, except that 0xFFFFFFFF means the
    /// default of 6. The decimal point is the one of the process's locale. `g_chDecimalPoint` can replace a
    /// ".".
    static String Number(double v, unsigned int precision = 0xFFFFFFFF,
                         const checked_value<unsigned int>& format = {});
    static String Number(float v, unsigned int precision = 0xFFFFFFFF,
                         const checked_value<unsigned int>& format = {});
    ///@}

    /// @name Text to numbers
    /// Each function parses the whole text without the white space around it. If the text is one number in
    /// the accepted range, `*ok` becomes true. Otherwise the result is 0 and `*ok` becomes false. `ok` may be
    /// null. Full-width digits, minus signs and full stops are equivalent to the ASCII characters.
    ///
    /// The functions for integers accept letters in either case as the digits of a base above 10. In a base
    /// above 36 the ASCII characters after "Z" and "z" are digits too. Base 0 has no digits. Prefixes such as
    /// "0x" and decimal separators are not accepted.
    ///@{

    /// Accepts -65535 to 32767. The result is the low 16 bits of the value: "-40000" gives 25536.
    short ToShort(bool* ok = nullptr, unsigned int base = 10) const;
    /// Accepts 0 to 65535. The functions for unsigned types reject "-", also before 0.
    unsigned short ToUShort(bool* ok = nullptr, unsigned int base = 10) const;
    /// Accepts -2147483648 to 2147483647.
    int ToInt(bool* ok = nullptr, unsigned int base = 10) const;
    /// Accepts 0 to 4294967295.
    unsigned int ToUInt(bool* ok = nullptr, unsigned int base = 10) const;
    /// Accepts 0 to 4294967295 and "-0". The result is the low 32 bits of the value, sign-extended:
    /// "3000000000" gives -1294967296.
    long long ToInt64(bool* ok = nullptr, unsigned int base = 10) const;
    /// Accepts 0 to 18446744073709551615, unlike `ToInt64`.
    unsigned long long ToUInt64(bool* ok = nullptr, unsigned int base = 10) const;
    /// Accepts exponents, hexadecimal numbers with the prefix "0x", infinities and NaN as strtod does. "."
    /// and "," are both decimal separators. The result is infinite if the number is too large for a double.
    double ToDouble(bool* ok = nullptr) const;
    /// Returns the result of `ToDouble`, rounded to the nearest float. The result is infinite if the number
    /// is too large for a float.
    float ToFloat(bool* ok = nullptr) const;
    ///@}

    /// @name Searching
    /// If `caseSensitive` is false, "A"-"Z" are equal to "a"-"z". No other letters are equal to each other.
    ///@{

    /// Returns the position of the first `c` at or after `start`. Returns absent if there is none, and if
    /// `start` is at or past the end.
    checked_value<unsigned int> Find(char c, unsigned int start = 0, bool caseSensitive = true) const;
    /// Returns the position of the first `s` at or after `start`. The search ends at the first NUL at or
    /// after `start`. Returns `start` for an empty `s`. Returns absent if there is no `s`, if `s` is null,
    /// and if `start` is at or past the end.
    checked_value<unsigned int> Find(const char* s, unsigned int start = 0, bool caseSensitive = true) const;
    /// Returns the position of the last `c` at or before `start`. An absent `start` means the last byte.
    /// Returns absent if there is none, and if `start` is at or past the end.
    checked_value<unsigned int> FindRev(char c, const checked_value<unsigned int>& start = {},
                                        bool caseSensitive = true) const;
    /// Returns whether the text begins with `p`. Returns true for an empty `p`. The comparison ends at a NUL
    /// that both texts have at the same position.
    bool BeginsWith(const String& p, bool caseSensitive = true) const;
    /// Returns whether the text ends with `p`. Returns true for an empty `p`. The comparison is that of
    /// `BeginsWith`.
    bool EndsWith(const String& p, bool caseSensitive = true) const;
    ///@}

    // Slices

    ///@{
    /// Returns the first or the last `n` bytes. Returns the whole text with a shared buffer if the text has
    /// at most `n` bytes. The result may begin or end inside a UTF-8 sequence.
    String Left(unsigned int n) const;
    String Right(unsigned int n) const;
    ///@}
    /// Returns at most `n` bytes from `start` on. An absent `n` means all bytes up to the end. Returns null
    /// if `start` is at or past the end.
    String Mid(unsigned int start, const checked_value<unsigned int>& n = {}) const;

    // Editing in place: these functions change this `String` and return it

    /// Inserts `s` before the byte at `pos`. Appends `s` if `pos` is at or past the end.
    String& Insert(unsigned int pos, const String& s);
    /// Removes at most `n` bytes from `pos` on. An absent `n` means all bytes up to the end. Does nothing if
    /// `pos` is at or past the end.
    String& Remove(unsigned int pos, const checked_value<unsigned int>& n = {});
    String& Truncate(unsigned int n); ///< Calls `Resize(n, true)` if the text is longer than `n` bytes.
    /// Sets the length to `n` bytes. New bytes are NUL. If `keepWholeCharacters` is true, the bytes of an
    /// incomplete UTF-8 sequence at the new end become NUL bytes. The length includes these NUL bytes.
    String& Resize(unsigned int n, bool keepWholeCharacters);
    /// Gives this `String` a buffer that no other `String` shares. If `n` is not below the length, extends
    /// the text with NUL bytes to `n` + 1 bytes.
    String& detachAndExtend(unsigned int n);

    // Edited copies

    String ReplaceChar(const Char& from, const Char& to) const; ///< Replaces every byte `from` by `to`.
    /// Replaces every `from` by `to`, from left to right. Returns the unchanged text if `from` is empty.
    String Replace(const String& from, const String& to) const;
    ///@{
    /// Converts "a"-"z" to "A"-"Z", or "A"-"Z" to "a"-"z", in every locale. Does not change other bytes.
    String ToUpper() const;
    String ToLower() const;
    ///@}
    String StripWhiteSpace() const; ///< Removes white space (`Char::IsSpace`) at both ends.
    /// Removes white space at both ends and replaces every other sequence of white space by one space. The
    /// byte 0xA0 counts as white space inside UTF-8 sequences too. The bytes of an incomplete UTF-8 sequence
    /// at the end of the result become NUL bytes.
    String SimplifyWhiteSpace() const;

    // Lists

    /// Replaces the contents of `out` by the parts between the separators. There is always at least one part.
    void Split(char sep, std::vector<String>& out) const;
    /// Returns the parts with `sep` between them. Returns null if there are no parts.
    static String Join(const String& sep, const std::vector<String>& parts);

private:
    friend class StringBuilder;

    /// The header of a buffer. The bytes of the text and a NUL follow the header in the same allocation.
    struct Block {
        unsigned int holders; // the number of `String` objects that share the buffer
        unsigned int length;
        unsigned int capacity; // the largest length that the allocation can store
        char* Bytes() { return reinterpret_cast<char*>(this + 1); }
    };

    explicit String(std::string_view bytes);

    static Block* NewBlock(std::size_t length, std::size_t capacity);
    static void Free(Block* b) noexcept;

    /// Returns the first `part` in the `size` bytes of `s`, or null, as strstr does.
    static const char* FindExact(const char* s, std::size_t size, const char* part);
    /// Returns the first `part` in `s`, or null, as strstr does. Treats "A"-"Z" as equal to "a"-"z".
    static const char* FindFolded(const char* s, const char* part);

    std::string_view Bytes() const { return {Latin1(), GetLength()}; }
    /// Returns whether the `String` has a buffer that no other `String` shares.
    bool IsSoleHolder() const { return block && block->holders == 1; }
    String& Append(std::string_view piece);

    friend String operator+(String a, const String& b);
    friend String operator+(String a, const char* b);

    Block* block = nullptr; // null in the null state
};

/// Returns the concatenation. If one text is empty, the result shares the buffer of the other text.
String operator+(String a, const String& b);
/// Returns the concatenation. A null `b` appends nothing.
String operator+(String a, const char* b);

///@{
/// Compares the bytes before the first NUL as unsigned numbers. Every comparison with a null character
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

inline const char* String::FindExact(const char* s, std::size_t size, const char* part) {
    constexpr std::size_t longText = 256; // strchr finds a rare first byte of a long text faster than strstr
    if (size < longText || !*part) return std::strstr(s, part);
    const char* const first = std::strchr(s, *part);
    if (!first || std::strncmp(first, part, std::strlen(part)) == 0) return first;
    return std::strstr(first, part);
}

inline checked_value<unsigned int> String::Find(const char* s, unsigned int start, bool caseSensitive) const {
    if (!s || start >= GetLength()) return {};
    const char* const from = Latin1() + start;
    const char* const found = caseSensitive ? FindExact(from, GetLength() - start, s) : FindFolded(from, s);
    if (!found) return {};
    return static_cast<unsigned int>(found - Latin1());
}
