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
/// Text, its concatenation and its comparison.

/// UTF-8 text, shared on copy.
///
/// A `String` is a handle on bytes that it shares with its copies; an edit never reaches the copies, they
/// keep the old text. There are two empty states, no text at all (null) and zero bytes; both read as "", are
/// equal and have length 0. Positions and lengths are byte counts. NUL bytes may stand in the text: they
/// count in `GetLength` and end every comparison and every C string taken from it.
///
/// The bytes are not checked to be UTF-8. Copies of one text belong to one thread at a time: the count is not
/// locked. Running out of memory throws `std::bad_alloc` and leaves the `String` as it was; so does a text of
/// 4 GiB or more (`std::length_error`; in a 32-bit process from 2 GiB on). Nothing else here fails.
class String {
public:
    String() noexcept = default;
    /// Shares the text; neither can change the other's from then on.
    String(const String& other) noexcept : block(other.block) {
        if (block) ++block->holders;
    }
    /// The source becomes null.
    String(String&& other) noexcept : block(std::exchange(other.block, nullptr)) {}
    ~String() {
        if (block && --block->holders == 0) Free(block);
    }
    String(const char* s);                 ///< Up to the NUL; null gives null.
    String(const char* s, unsigned int n); ///< Up to the NUL, `n` bytes at most; null gives null.
    String(char c);                        ///< One byte, also when it is 0.
    /// From UTF-16, ended by a 0 unit, to Mac Roman where `encoding` is 2 and else to UTF-8. Null from null,
    /// from 100,000 units or more, and when a character cannot be converted.
    String(const unsigned short* s, unsigned int encoding);

    /// Shares the text, or takes it over from a temporary.
    String& operator=(String other) noexcept {
        std::swap(block, other.block);
        return *this;
    }
    String& operator=(const char* s); ///< Up to the NUL; null gives null.

    // Reading

    /// In bytes, without the terminator; 0 for both empty states.
    unsigned int GetLength() const { return block ? block->length : 0; }
    /// The bytes as they are stored, ended by a NUL; valid until this `String` changes. Never null.
    const char* Latin1() const { return block ? block->Bytes() : ""; }
    /// Returns the text up to its first NUL as UTF-16 units, followed by 0. Returns a null array if the bytes
    /// are not valid in the encoding (2 Mac Roman, else UTF-8) or make more than 100,000 units.
    shared_array<unsigned short> Unicode(unsigned int encoding) const;
    static String GetPlatformLinefeed(); ///< One line feed: the Mac of today, not the classic one.

    // Appending

    String& operator+=(const String& r); ///< Shares `r` when this one is empty.
    /// One byte, also when it is 0; room for more is made ahead, so that many of these cost little.
    String& operator+=(char c) {
        if (!IsSoleHolder() || block->length == block->capacity) return Append(std::string_view(&c, 1));
        char* const end = block->Bytes() + block->length++;
        end[0] = c;
        end[1] = '\0';
        return *this;
    }

    ///@{
    /// A copy with the argument in place of a placeholder, "%" and one digit: of the lowest digit, its
    /// leftmost one. Without a placeholder the argument goes to the end. See `Number` for base, width,
    /// precision and format.
    String Arg(const String& a) const;
    String Arg(char c) const;
    String Arg(const Char& c) const;
    ///@}
    ///@{
    /// The same. Base 16 formats the bits as an unsigned number: 32 bits for an `int` and for a `long` whose
    /// value fits them (-1 gives "FFFFFFFF"), all bits for a wider `long`.
    String Arg(int v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    String Arg(long v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    ///@}
    /// The same; keeps its sign in every base.
    String Arg(short v, unsigned int base = 10, const checked_value<unsigned int>& width = {}) const;
    ///@{
    /// As for text.
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
    /// Bases 2 to 36, any other is 10; upper-case digits. `width` pads with "0" on the left and does not
    /// count the sign. The smallest `int` with a width is written as two pieces, each padded by itself.
    static String Number(int v, unsigned int base = 10, const checked_value<unsigned int>& width = {});
    static String Number(long v, unsigned int base = 10, const checked_value<unsigned int>& width = {});
    static String Number(unsigned int v, unsigned int base = 10,
                         const checked_value<unsigned int>& width = {});
    static String Number(unsigned long v, unsigned int base = 10,
                         const checked_value<unsigned int>& width = {});
    ///@}
    ///@{
    /// Base 16 (of the bits, unsigned) or decimal; no other base.
    static String Number(long long v, unsigned int base = 10, const checked_value<unsigned int>& width = {});
    static String Number(unsigned long long v, unsigned int base = 10,
                         const checked_value<unsigned int>& width = {});
    ///@}
    ///@{
    /// As printf writes it: `format` is one of the letters f F e E g G, anything else is f. `precision` is
    /// cut to 99; 0xFFFFFFFF means the default of 6. At most 1023 characters.
    static String Number(double v, unsigned int precision = 0xFFFFFFFF,
                         const checked_value<unsigned int>& format = {});
    static String Number(float v, unsigned int precision = 0xFFFFFFFF,
                         const checked_value<unsigned int>& format = {});
    ///@}

    /// @name Text to numbers
    /// The whole text, less the white space around it, must be one number; otherwise the result is 0 and
    /// `*ok` false. "." and "," are both decimal separators; full-width digits and signs are read. Bases up
    /// to 36, letters in either case and no prefix; base 0 and those above 36 read nothing.
    ///@{

    /// Behind "-" every magnitude up to 65535 is taken and cut to 16 bits: "-40000" gives 25536.
    short ToShort(bool* ok = nullptr, unsigned int base = 10) const;
    /// 0 to 65535; "-" fails in all unsigned types, also before 0.
    unsigned short ToUShort(bool* ok = nullptr, unsigned int base = 10) const;
    /// -2147483648 to 2147483647.
    int ToInt(bool* ok = nullptr, unsigned int base = 10) const;
    /// 0 to 4294967295.
    unsigned int ToUInt(bool* ok = nullptr, unsigned int base = 10) const;
    /// Takes 32 bits and extends their sign: "3000000000" gives -1294967296, "4294967296" fails. Behind "-"
    /// nothing but 0 is taken.
    long long ToInt64(bool* ok = nullptr, unsigned int base = 10) const;
    /// 0 to 18446744073709551615, unlike `ToInt64`.
    unsigned long long ToUInt64(bool* ok = nullptr, unsigned int base = 10) const;
    /// Exponents, hexadecimal numbers, infinities and NaN as strtod reads them.
    double ToDouble(bool* ok = nullptr) const;
    /// `ToDouble`, narrowed: infinite when no float is that large.
    float ToFloat(bool* ok = nullptr) const;
    ///@}

    /// @name Searching
    /// Without `caseSensitive`, "A"-"Z" and "a"-"z" are the same; no other letters fold.
    ///@{

    /// First position at or after `start`; absent also when `start` is at or past the end.
    checked_value<unsigned int> Find(char c, unsigned int start = 0, bool caseSensitive = true) const;
    /// Reads both texts up to their next NUL. An empty `s` stands at `start`, a null one nowhere.
    checked_value<unsigned int> Find(const char* s, unsigned int start = 0, bool caseSensitive = true) const;
    /// Last position at or before `start` (absent: the last byte); absent also when `start` is at or past the
    /// end.
    checked_value<unsigned int> FindRev(char c, const checked_value<unsigned int>& start = {},
                                        bool caseSensitive = true) const;
    /// True for an empty `p`. Bytes behind a NUL that both have are not compared.
    bool BeginsWith(const String& p, bool caseSensitive = true) const;
    /// As `BeginsWith`.
    bool EndsWith(const String& p, bool caseSensitive = true) const;
    ///@}

    // Slices

    ///@{
    /// `n` bytes, which may cut a character; the whole text, shared, where there are no more.
    String Left(unsigned int n) const;
    String Right(unsigned int n) const;
    ///@}
    /// From `start`, at most `n` bytes (absent: to the end); null when `start` is at or past the end.
    String Mid(unsigned int start, const checked_value<unsigned int>& n = {}) const;

    // Editing in place: these change this `String` and answer it

    String& Insert(unsigned int pos, const String& s); ///< At or past the end it appends.
    /// From `pos`, at most `n` bytes (absent: to the end); nothing when `pos` is at or past the end.
    String& Remove(unsigned int pos, const checked_value<unsigned int>& n = {});
    String& Truncate(unsigned int n); ///< As `Resize(n, true)` when that is shorter; else nothing.
    /// Exactly `n` bytes, new ones NUL. With `keepWholeCharacters` a UTF-8 sequence that is cut off at the
    /// end becomes NUL bytes, which still count in the length.
    String& Resize(unsigned int n, bool keepWholeCharacters);
    /// Gives this `String` bytes that no other shares, grown by NUL bytes to `n` + 1 unless `n` is below the
    /// length.
    String& detachAndExtend(unsigned int n);

    // Edited copies

    String ReplaceChar(const Char& from, const Char& to) const; ///< Every byte that is `from`.
    String Replace(const String& from, const String& to) const; ///< Every occurrence, left to right.
    ///@{
    /// "a"-"z" and "A"-"Z" alone, whatever the locale.
    String ToUpper() const;
    String ToLower() const;
    ///@}
    String StripWhiteSpace() const;    ///< Without that of `Char::IsSpace` at both ends.
    String SimplifyWhiteSpace() const; ///< Stripped, and every run of white space made one blank.

    // Lists

    /// Empties `out` and fills it with what stands between the separators: one element at least.
    void Split(char sep, std::vector<String>& out) const;
    /// Null for no parts.
    static String Join(const String& sep, const std::vector<String>& parts);

private:
    friend class StringBuilder;

    /// What stands in front of the bytes and their NUL, in the one block of memory that a text takes.
    struct Block {
        unsigned int holders;
        unsigned int length;
        unsigned int capacity; // bytes that there is room for, less the NUL
        char* Bytes() { return reinterpret_cast<char*>(this + 1); }
    };

    explicit String(std::string_view bytes);

    static Block* NewBlock(std::size_t length, std::size_t capacity);
    static void Free(Block* b) noexcept;

    /// As strstr, with "A"-"Z" and "a"-"z" taken as the same.
    static const char* FindFolded(const char* s, const char* part);

    std::string_view Bytes() const { return {Latin1(), GetLength()}; }
    /// Nobody else sees the text: it may be edited in place.
    bool IsSoleHolder() const { return block && block->holders == 1; }
    String& Append(std::string_view piece);

    friend String operator+(String a, const String& b);
    friend String operator+(String a, const char* b);

    Block* block = nullptr; // null for no text
};

/// Shares the other text if one is empty.
String operator+(String a, const String& b);
/// A null pointer adds nothing.
String operator+(String a, const char* b);

///@{
/// Compare the bytes up to the first NUL, as unsigned numbers. Every comparison with a null character pointer
/// is false.
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
