// Runs a sequence of operations on a string. The same sequence on a std::string must have the same results. A
// copy of the string must not change when the string is edited.

#include "Property.h"
#include "Text.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

namespace {

char folded(char c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c); }
char raised(char c) { return static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c); }

template <typename Map>
std::string mapped(std::string bytes, Map map) {
    std::transform(bytes.begin(), bytes.end(), bytes.begin(), map);
    return bytes;
}

std::string asCompared(const std::string& bytes, bool caseSensitive) {
    return caseSensitive ? bytes : mapped(bytes, folded);
}

bool isSpace(char c) { return c != 0 && std::strchr(" \t\n\v\f\r\xA0", c); }

/// Replaces an incomplete UTF-8 sequence at the end of the bytes by NULs.
std::string repaired(std::string bytes) {
    if (bytes.empty() || static_cast<signed char>(bytes.back()) >= 0) return bytes;
    for (std::size_t i = bytes.size(); i-- > 0;) {
        const auto lead = static_cast<unsigned char>(bytes[i]);
        if (lead < 0xC0) continue;
        std::size_t length = 2;
        for (unsigned mask = 0x20; mask > 1 && (lead & mask); mask >>= 1) ++length;
        if (i + length > bytes.size())
            std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(i), bytes.end(), '\0');
        break;
    }
    return bytes;
}

std::string wordsOf(const std::string& bytes) {
    std::string words;
    for (const char c : bytes) {
        if (!isSpace(c)) {
            words += c;
        } else if (!words.empty() && words.back() != ' ') {
            words += ' ';
        }
    }
    if (!words.empty() && words.back() == ' ') words.pop_back();
    return repaired(words);
}

std::string stripped(std::string bytes) {
    while (!bytes.empty() && isSpace(bytes.front())) bytes.erase(0, 1);
    while (!bytes.empty() && isSpace(bytes.back())) bytes.pop_back();
    return bytes;
}

std::string replaced(const std::string& bytes, const std::string& from, const std::string& to) {
    std::string result;
    std::size_t at = 0;
    for (std::size_t hit; !from.empty() && (hit = bytes.find(from, at)) != bytes.npos;
         at = hit + from.size()) {
        result += bytes.substr(at, hit - at) + to;
    }
    return result + bytes.substr(at);
}

std::string shown(const checked_value<unsigned int>& place) {
    return place.IsGiven() ? std::to_string(static_cast<unsigned int>(place)) : "absent";
}

std::string shown(std::size_t place) { return place == std::string::npos ? "absent" : std::to_string(place); }

class Program {
public:
    explicit Program(FuzzedDataProvider& program) : input(program) {}

    void Run() {
        while (input.remaining_bytes() > 0) {
            const String copy = text;
            const std::string before = bytes;
            Step();
            RequireEqual(BytesOf(text), bytes, "the string equals the bytes");
            RequireEqual(BytesOf(copy), before, "a copy does not change");
        }
    }

private:
    unsigned int Place() {
        return input.ConsumeBool() ? input.ConsumeIntegral<unsigned int>()
                                   : input.ConsumeIntegralInRange<unsigned int>(0, 40);
    }
    checked_value<unsigned int> Count() {
        checked_value<unsigned int> count;
        if (input.ConsumeBool()) count = Place();
        return count;
    }
    std::string Piece() { return input.ConsumeRandomLengthString(24); }
    char Byte() { return input.ConsumeIntegral<char>(); }

    void Step() {
        switch (input.ConsumeIntegralInRange<int>(0, 3)) {
        case 0: return EditInPlace();
        case 1: return ReplaceByCopy();
        case 2: return Search();
        default: return SplitAndJoin();
        }
    }

    void EditInPlace() {
        const unsigned int place = Place(), length = text.GetLength();
        switch (input.ConsumeIntegralInRange<int>(0, 6)) {
        case 0: {
            const std::string piece = Piece();
            text.Insert(place, TextOf(piece));
            bytes.insert(std::min(place, length), piece);
            break;
        }
        case 1: {
            const checked_value<unsigned int> count = Count();
            text.Remove(place, count);
            if (place < length)
                bytes.erase(place, count.IsGiven() ? static_cast<std::size_t>(count) : bytes.npos);
            break;
        }
        case 2:
            text.Truncate(place);
            if (place < length) bytes = repaired(bytes.substr(0, place));
            break;
        case 3: {
            const unsigned int size = place % 4096;
            const bool whole = input.ConsumeBool();
            text.Resize(size, whole);
            bytes.resize(size);
            if (whole) bytes = repaired(bytes);
            break;
        }
        case 4:
            text.detachAndExtend(place % 4096);
            if (place % 4096 >= length) bytes.resize(place % 4096 + std::size_t{1});
            break;
        case 5: {
            const char c = Byte();
            text += c;
            bytes += c;
            break;
        }
        default: {
            const std::string piece = Piece();
            text += TextOf(piece);
            bytes += piece;
        }
        }
    }

    void Become(const String& result, const std::string& expected, const char* claim) {
        RequireEqual(BytesOf(result), expected, claim);
        text = result;
        bytes = expected;
    }

    void ReplaceByCopy() {
        const unsigned int place = Place();
        switch (input.ConsumeIntegralInRange<int>(0, 8)) {
        case 0: return Become(text.Left(place), bytes.substr(0, place), "Left");
        case 1:
            return Become(text.Right(place),
                          bytes.substr(bytes.size() - std::min<std::size_t>(place, bytes.size())), "Right");
        case 2: {
            const checked_value<unsigned int> count = Count();
            const std::size_t most = count.IsGiven() ? static_cast<std::size_t>(count) : bytes.npos;
            return Become(text.Mid(place, count), place < bytes.size() ? bytes.substr(place, most) : "",
                          "Mid");
        }
        case 3: return Become(text.ToUpper(), mapped(bytes, raised), "ToUpper");
        case 4: return Become(text.ToLower(), mapped(bytes, folded), "ToLower");
        case 5: return Become(text.StripWhiteSpace(), stripped(bytes), "StripWhiteSpace");
        case 6: return Become(text.SimplifyWhiteSpace(), wordsOf(bytes), "SimplifyWhiteSpace");
        case 7: {
            const char from = Byte(), to = Byte();
            std::string expected = bytes;
            std::replace(expected.begin(), expected.end(), from, to);
            return Become(text.ReplaceChar(from, to), expected, "ReplaceChar");
        }
        default: {
            const std::string from = Piece(), to = Piece();
            return Become(text.Replace(TextOf(from), TextOf(to)), replaced(bytes, from, to), "Replace");
        }
        }
    }

    void Search() {
        const char c = Byte();
        const bool exact = input.ConsumeBool();
        const unsigned int start = Place();
        const std::string piece = Piece();
        const std::string where = asCompared(bytes, exact), what = asCompared(piece, exact);
        const char key = exact ? c : folded(c);
        RequireEqual(shown(text.Find(c, start, exact)), shown(where.find(key, start)), "Find with a byte");

        const checked_value<unsigned int> from = Count();
        const bool isInside = !from.IsGiven() || from < bytes.size();
        const std::size_t last = from.IsGiven() ? static_cast<std::size_t>(from) : bytes.npos;
        RequireEqual(shown(text.FindRev(c, from, exact)),
                     shown(isInside ? where.rfind(key, last) : bytes.npos), "FindRev");

        const std::string part(BeforeNul(what));
        const std::string readable(start < where.size() ? BeforeNul(std::string_view(where).substr(start))
                                                        : "");
        const std::size_t hit = start < where.size() ? readable.find(part) : readable.npos;
        RequireEqual(shown(text.Find(piece.c_str(), start, exact)),
                     shown(hit == readable.npos ? hit : hit + start), "Find with a string");

        const bool fits = piece.size() <= bytes.size();
        const std::size_t rest = fits ? where.size() - what.size() : 0;
        Require(text.BeginsWith(TextOf(piece), exact) ==
                    (fits && BeforeNul(where.substr(0, what.size())) == part),
                "BeginsWith");
        Require(text.EndsWith(TextOf(piece), exact) == (fits && BeforeNul(where.substr(rest)) == part),
                "EndsWith");
    }

    void SplitAndJoin() {
        const char separator = Byte();
        std::vector<String> parts;
        text.Split(separator, parts);
        const auto hits = static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), separator));
        Require(parts.size() == hits + 1, "there is one more part than separators");
        for (const String& part : parts)
            Require(BytesOf(part).find(separator) == std::string::npos, "no part contains the separator");
        RequireEqual(BytesOf(String::Join(separator, parts)), bytes, "Join reverses Split");
    }

    FuzzedDataProvider& input;
    String text;
    std::string bytes;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    Program(input).Run();
    return 0;
}
