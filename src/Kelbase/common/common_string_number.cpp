#include <Kelbase/common/common_string.h>

#include <Kelbase/common/detail/common_string_builder.h>
#include <Kelbase/common/detail/common_string_decimal.h>
#include <Kelbase/common/detail/common_string_digits.h>
#include <Kelbase/common/detail/common_string_float_text.h>
#include <Kelbase/common/detail/common_string_length.h>
#include <Kelbase/common/detail/common_string_scan.h>

#include <algorithm>
#include <climits>

char g_chDecimalPoint = '.';

namespace {

using Width = checked_value<unsigned int>;

unsigned int usableBase(unsigned int base) { return base < 2 || base > 36 ? 10 : base; }

// A formatter describes its result as a part. `Length` returns the number of bytes of a part, and `AddTo`
// appends these bytes to a builder. The result is thus written once, into a buffer of the right size.

/// A part that consists of given bytes.
struct TextPart {
    std::string_view bytes;

    unsigned long long Length() const { return bytes.size(); }
    void AddTo(StringBuilder& text) const { text.Add(bytes); }
};

/// A part that consists of the sign, the zeros and the digits of an integer. The zeros and the digits
/// together have at least `width` bytes.
class IntegerPart {
public:
    IntegerPart(unsigned long long m, bool negative, unsigned int b, const Width& width)
        : magnitude(m), base(b), digits(Count()), minus(negative) {
        if (width > digits) zeros = width - digits;
    }

    unsigned long long Length() const { return 0ull + minus + zeros + digits; }
    void AddTo(StringBuilder& text) const {
        if (minus) text.Add('-');
        if (zeros) std::memset(text.Take(zeros), '0', zeros);
        char* const end = text.Take(digits) + digits;
        if (base == 10)
            WriteDecimal(end, magnitude);
        else if (base == 16)
            WriteHexadecimal(end, magnitude, digits);
        else
            WriteDigits(end, magnitude, base);
    }

private:
    unsigned int Count() const {
        return base == 10   ? CountDecimal(magnitude)
               : base == 16 ? CountHexadecimal(magnitude)
                            : CountDigits(magnitude, base);
    }

    unsigned long long magnitude;
    unsigned int base, digits, zeros = 0;
    bool minus;
};

/// Returns `pattern` with `part` in place of its lowest placeholder. Appends `part` if there is no
/// placeholder.
template <typename Part>
String fill(const String& pattern, const Part& part) {
    const std::string_view bytes(pattern.Latin1(), pattern.GetLength());
    const std::size_t before = std::min(text_scan::LowestPlaceholder(bytes), bytes.size());
    const std::size_t after = std::min(before + 2, bytes.size());
    StringBuilder text(bytes.size() - (after - before) + part.Length());
    text.Add(bytes.substr(0, before));
    part.AddTo(text);
    return text.Add(bytes.substr(after)).Finish();
}

template <typename Part>
String textOf(const Part& part) {
    StringBuilder text(part.Length());
    part.AddTo(text);
    return text.Finish();
}

// A formatter calls one of these two function objects with its part. `ToText` returns the part as a text.
// `ToTemplate` inserts the part in a pattern.

struct ToText {
    template <typename Part>
    String operator()(const Part& part) const {
        return textOf(part);
    }
};
class ToTemplate {
public:
    explicit ToTemplate(const String& p) : pattern(p) {}
    template <typename Part>
    String operator()(const Part& part) const {
        return fill(pattern, part);
    }

private:
    const String& pattern;
};

// Returns whether `Arg` formats a `long` as an `int`. Any other `long` is formatted with all its bits.
bool fitsInt(long v) { return v >= INT_MIN && v <= INT_MAX; }

// Each formatter calls `use` with the part for its number and returns the result of `use`.

template <typename Use>
String formatInteger(unsigned long v, unsigned int base, const Width& width, Use use) {
    return use(IntegerPart(v, false, usableBase(base), width));
}
template <typename Use>
String formatInteger(long v, unsigned int base, const Width& width, Use use) {
    const unsigned long magnitude = v < 0 ? 0 - static_cast<unsigned long>(v) : static_cast<unsigned long>(v);
    if (v != INT_MIN || !width.IsGiven()) return use(IntegerPart(magnitude, v < 0, usableBase(base), width));
    // The smallest int is formatted as two integers. Each of them is padded to the width.
    CheckedLength(2ull * width + 1);
    base = usableBase(base);
    const String pieces = textOf(IntegerPart(magnitude / base, true, base, width)) +
                          textOf(IntegerPart(magnitude % base, false, base, width));
    return use(TextPart{std::string_view(pieces.Latin1(), pieces.GetLength())});
}
template <typename Use>
String formatInteger(unsigned long long v, unsigned int base, const Width& width, Use use) {
    return use(IntegerPart(v, false, base == 16 ? 16 : 10, width));
}
template <typename Use>
String formatInteger(long long v, unsigned int base, const Width& width, Use use) {
    const auto bits = static_cast<unsigned long long>(v);
    const bool minus = v < 0 && base != 16;
    return use(IntegerPart(minus ? 0 - bits : bits, minus, base == 16 ? 16 : 10, width));
}
template <typename Use>
String formatFloat(double v, unsigned int precision, const checked_value<unsigned int>& format, Use use) {
    const FloatText text(v, precision, format);
    if (g_chDecimalPoint == '.') return use(TextPart{text.View()});
    const String pointed = textOf(TextPart{text.View()}).StripWhiteSpace().ReplaceChar('.', g_chDecimalPoint);
    return use(TextPart{std::string_view(pointed.Latin1(), pointed.GetLength())});
}

} // namespace

String String::Arg(const String& a) const { return fill(*this, TextPart{a.Bytes()}); }
String String::Arg(char c) const { return fill(*this, TextPart{std::string_view(&c, 1)}); }
String String::Arg(const Char& c) const { return Arg(static_cast<char>(c)); }

String String::Arg(int v, unsigned int base, const Width& width) const {
    if (base == 16) return Arg(static_cast<unsigned int>(v), base, width);
    return formatInteger(long{v}, base, width, ToTemplate(*this));
}
String String::Arg(long v, unsigned int base, const Width& width) const {
    if (fitsInt(v)) return Arg(static_cast<int>(v), base, width);
    if (base == 16) return Arg(static_cast<unsigned long>(v), base, width);
    return formatInteger(v, base, width, ToTemplate(*this));
}
String String::Arg(short v, unsigned int base, const Width& width) const {
    return formatInteger(long{v}, base, width, ToTemplate(*this));
}
String String::Arg(unsigned short v, unsigned int base, const Width& width) const {
    return formatInteger(long{v}, base, width, ToTemplate(*this));
}
String String::Arg(unsigned int v, unsigned int base, const Width& width) const {
    return formatInteger(static_cast<unsigned long>(v), base, width, ToTemplate(*this));
}
String String::Arg(unsigned long v, unsigned int base, const Width& width) const {
    return formatInteger(v, base, width, ToTemplate(*this));
}
String String::Arg(long long v, unsigned int base, const Width& width) const {
    return formatInteger(v, base, width, ToTemplate(*this));
}
String String::Arg(unsigned long long v, unsigned int base, const Width& width) const {
    return formatInteger(v, base, width, ToTemplate(*this));
}
String String::Arg(double v, unsigned int precision, const checked_value<unsigned int>& format) const {
    return formatFloat(v, precision, format, ToTemplate(*this));
}
String String::Arg(float v, unsigned int precision, const checked_value<unsigned int>& format) const {
    return formatFloat(double{v}, precision, format, ToTemplate(*this));
}

String String::Number(int v, unsigned int base, const Width& width) {
    return formatInteger(long{v}, base, width, ToText());
}
String String::Number(unsigned int v, unsigned int base, const Width& width) {
    return formatInteger(static_cast<unsigned long>(v), base, width, ToText());
}
String String::Number(long v, unsigned int base, const Width& width) {
    return formatInteger(v, base, width, ToText());
}
String String::Number(unsigned long v, unsigned int base, const Width& width) {
    return formatInteger(v, base, width, ToText());
}
String String::Number(long long v, unsigned int base, const Width& width) {
    return formatInteger(v, base, width, ToText());
}
String String::Number(unsigned long long v, unsigned int base, const Width& width) {
    return formatInteger(v, base, width, ToText());
}
String String::Number(double v, unsigned int precision, const checked_value<unsigned int>& format) {
    return formatFloat(v, precision, format, ToText());
}
String String::Number(float v, unsigned int precision, const checked_value<unsigned int>& format) {
    return formatFloat(double{v}, precision, format, ToText());
}
