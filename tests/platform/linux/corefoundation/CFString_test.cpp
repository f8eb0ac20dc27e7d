#include <CoreFoundation/CFString.h>

#include <gmock/gmock.h>

#include <iterator>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::Optional;

namespace {

using Units = std::vector<UniChar>;
const auto kRefused = std::nullopt;

/// Returns the units of the string and releases the string. Returns nothing for null.
std::optional<Units> releasedUnits(CFStringRef string) {
    if (!string) return std::nullopt;
    Units units(static_cast<std::size_t>(CFStringGetLength(string)));
    CFStringGetCharacters(string, CFRangeMake(0, CFStringGetLength(string)), units.data());
    CFRelease(string);
    return units;
}

std::optional<Units> decoded(const std::string& bytes, CFStringEncoding encoding) {
    return releasedUnits(CFStringCreateWithCString(kCFAllocatorDefault, bytes.c_str(), encoding));
}

std::optional<std::string> encoded(const Units& units, CFStringEncoding encoding) {
    const CFStringRef string =
        CFStringCreateWithCharacters(kCFAllocatorDefault, units.data(), static_cast<CFIndex>(units.size()));
    char buffer[64] = "rubbish";
    const bool done = CFStringGetCString(string, buffer, sizeof buffer, encoding);
    CFRelease(string);
    if (!done) {
        EXPECT_STREQ(buffer, "");
        return std::nullopt;
    }
    return std::string(buffer);
}

TEST(String, DecodesValidUtf8Only) {
    const struct {
        const char* name;
        const char* bytes;
        std::optional<Units> units;
    } rows[] = {
        // name, UTF-8 bytes, decoded UTF-16 units
        {"Ascii", "a\x7F", Units{'a', 0x7F}},
        {"LowestOfTwoThreeAndFourBytes", "\xC2\x80\xE0\xA0\x80\xF0\x90\x80\x80",
         Units{0x80, 0x800, 0xD800, 0xDC00}},
        {"HighestOfTwoThreeAndFourBytes", "\xDF\xBF\xEF\xBF\xBF\xF4\x8F\xBF\xBF",
         Units{0x7FF, 0xFFFF, 0xDBFF, 0xDFFF}},
        {"NextToTheSurrogates", "\xED\x9F\xBF\xEE\x80\x80", Units{0xD7FF, 0xE000}},
        {"Noncharacter", "\xEF\xBF\xBE", Units{0xFFFE}},
        {"OverlongTwoBytes", "\xC1\xBF", kRefused},
        {"OverlongThreeBytes", "\xE0\x9F\xBF", kRefused},
        {"OverlongFourBytes", "\xF0\x8F\xBF\xBF", kRefused},
        {"FirstSurrogate", "\xED\xA0\x80", kRefused},
        {"SurrogatePair", "\xED\xA0\x80\xED\xB0\x80", kRefused},
        {"AboveTheLastCharacter", "\xF4\x90\x80\x80", kRefused},
        {"LeadByteF5", "\xF5\x80\x80\x80", kRefused},
        {"FiveBytes", "\xF8\x88\x80\x80\x80", kRefused},
        {"TruncatedTwoBytes", "a\xC3", kRefused},
        {"TruncatedThreeBytes", "a\xE2\x82", kRefused},
        {"TruncatedFourBytes", "a\xF0\x90\x80", kRefused},
        {"WrongContinuationByte", "\xE2\x82(", kRefused},
        {"LeadByteAsContinuationByte", "\xC3\xC3", kRefused},
        {"StrayContinuationByte", "a\x80", kRefused},
        {"LoneByteA9", "\2512\xA9", Units{0xFFFD, '2', 0xFFFD}},
        {"ByteA9AsContinuationByte", "\xC2\xA9", Units{0xA9}},
        {"ByteOrderMarkAtTheStart", "\xEF\xBB\xBFx", Units{'x'}},
        {"ByteOrderMarkOnly", "\xEF\xBB\xBF", Units{}},
        {"SecondByteOrderMark", "\xEF\xBB\xBF\xEF\xBB\xBF", Units{0xFEFF}},
        {"Empty", "", Units{}},
    };
    for (const auto& row : rows) EXPECT_EQ(decoded(row.bytes, kCFStringEncodingUTF8), row.units) << row.name;
}

TEST(String, EncodesOnlyCharactersOfTheEncoding) {
    const CFStringEncoding utf8 = kCFStringEncodingUTF8;
    const CFStringEncoding roman = kCFStringEncodingMacRoman;
    const struct {
        const char* name;
        Units units;
        CFStringEncoding encoding;
        std::optional<std::string> bytes;
    } rows[] = {
        // name, UTF-16 units, encoding, encoded bytes
        {"Utf8OneAndTwoBytes", {'a', 0xE9}, utf8, "a\xC3\xA9"},
        {"Utf8ThreeAndFourBytes", {0x20AC, 0xD834, 0xDD1E}, utf8, "\xE2\x82\xAC\xF0\x9D\x84\x9E"},
        {"LoneHighSurrogate", {'a', 0xD834}, utf8, kRefused},
        {"LoneLowSurrogates", {0xDC00, 0xDC00}, utf8, kRefused},
        {"SurrogatesInWrongOrder", {0xDD1E, 0xD834}, utf8, kRefused},
        {"RomanMissingCharacter", {0x0394}, roman, kRefused},
        {"RomanOldCurrencySign", {0xA4}, roman, kRefused},
        {"RomanOmegaAndOhm", {0x03A9, 0x2126}, roman, "\xBD\xBD"},
        {"RomanMarkOfNoLetter", {'=', 0x338}, roman, kRefused},
        {"RomanMarkOnWrongLetter", {'x', 0x301}, roman, kRefused},
        {"RomanSecondMark", {'e', 0x301, 0x301}, roman, kRefused},
        {"RomanMarkAlone", {0x301}, roman, kRefused},
        {"RomanSurrogatePair", {0xD834, 0xDD1E}, roman, kRefused},
        {"Ascii", {'~', 0x7F}, kCFStringEncodingASCII, "~\x7F"},
        {"AsciiMissingCharacter", {0x80}, kCFStringEncodingASCII, kRefused},
        {"UnknownEncoding", {'a'}, 0xFFFFFFFF, kRefused},
        {"EmbeddedNul", {'a', 0, 'b'}, utf8, "a"},
    };
    for (const auto& row : rows) EXPECT_EQ(encoded(row.units, row.encoding), row.bytes) << row.name;
}

TEST(String, ConvertsAllOfMacRoman) {
    unsigned char all[256] = {255};
    for (unsigned i = 1; i < 256; ++i) all[i] = static_cast<unsigned char>(i);
    const auto units =
        releasedUnits(CFStringCreateWithPascalString(kCFAllocatorDefault, all, kCFStringEncodingMacRoman));
    ASSERT_TRUE(units);
    EXPECT_EQ(units->size(), 255U);
    const auto at = [&](unsigned byte) { return (*units)[byte - 1]; };
    const char16_t upper[] = u"ÄÅÇÉÑÖÜáàâäãåçéèêëíìîïñóòôöõúùûü"
                             u"†°¢£§•¶ß®©™´¨≠ÆØ∞±≤≥¥µ∂∑∏π∫ªºΩæø"
                             u"¿¡¬√ƒ≈∆«»…\u00A0ÀÃÕŒœ–—“”‘’÷◊ÿŸ⁄€‹›ﬁﬂ"
                             u"‡·‚„‰ÂÊÁËÈÍÎÏÌÓÔ\uF8FFÒÚÛÙı\u02C6\u02DC¯\u02D8\u02D9\u02DA¸\u02DD\u02DB\u02C7";
    for (unsigned i = 1; i < 256; ++i) {
        EXPECT_EQ(at(i), i < 0x80 ? i : upper[i - 0x80]) << i;
        EXPECT_EQ(encoded({at(i)}, kCFStringEncodingMacRoman), std::string(1, static_cast<char>(i))) << i;
    }
    EXPECT_THAT(decoded("\x80\xFF", kCFStringEncodingASCII), Optional(ElementsAre(0x80, 0xFF)));
}

TEST(String, ComposesTheLettersOfMacRoman) {
    const struct {
        char16_t mark;
        std::string composed; // each base is followed by its composed character in Mac Roman
    } rows[] = {
        {0x300, "A\xCB\105\xE9I\xEDO\xF1U\xF4\141\x88\145\x8Fi\x93o\x98u\x9D"},
        {0x301, "A\xE7\105\x83I\xEAO\xEEU\xF2\141\x87\145\x8Ei\x92o\x97u\x9C"},
        {0x302, "A\xE5\105\xE6I\xEBO\xEFU\xF3\141\x89\145\x90i\x94o\x99u\x9E"},
        {0x303, "A\xCCN\x84O\xCD\141\x8Bn\x96o\x9B"},
        {0x308, "A\x80\105\xE8I\xECO\x85U\x86Y\xD9\141\x8A\145\x91i\x95o\x9Au\x9Fy\xD8"},
        {0x30A, "A\x81\141\x8C"},
        {0x327, "C\x82\143\x8D"},
    };
    for (const auto& [mark, composed] : rows) {
        for (std::size_t i = 0; i < composed.size(); i += 2) {
            const Units units = {static_cast<UniChar>(composed[i]), mark};
            EXPECT_EQ(encoded(units, kCFStringEncodingMacRoman), composed.substr(i + 1, 1)) << composed[i];
        }
    }
}

TEST(String, CopiesTheCStringIfTheNulFits) {
    const CFStringRef text = CFSTR("abc");
    char buffer[8] = "zzzzzzz";
    EXPECT_FALSE(CFStringGetCString(text, buffer, 0, kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer, "zzzzzzz");
    EXPECT_FALSE(CFStringGetCString(text, buffer, 1, kCFStringEncodingUTF8));
    EXPECT_EQ(std::string(buffer, 7), std::string("\0zzzzzz", 7));
    EXPECT_FALSE(CFStringGetCString(text, buffer, 3, kCFStringEncodingUTF8));
    EXPECT_EQ(std::string(buffer, 7), std::string("\0zzzzzz", 7));
    EXPECT_TRUE(CFStringGetCString(text, buffer, 4, kCFStringEncodingUTF8));
    EXPECT_EQ(std::string(buffer, 7), std::string("abc\0zzz", 7));
    EXPECT_TRUE(CFStringGetCString(CFSTR(""), buffer, 1, kCFStringEncodingUTF8));
    EXPECT_STREQ(buffer, "");
}

TEST(String, StoresAnyUnitsAndCopiesRanges) {
    const Units units = {0xDC00, 0, 0xFFFF, 'x'};
    const CFStringRef text = CFStringCreateWithCharacters(kCFAllocatorDefault, units.data(), 4);
    UniChar part[4] = {1, 1, 1, 1};
    CFStringGetCharacters(text, CFRangeMake(1, 2), part);
    EXPECT_THAT(part, ElementsAre(0, 0xFFFF, 1, 1));
    CFStringGetCharacters(text, CFRangeMake(4, 0), part);
    EXPECT_DEATH(CFStringGetCharacters(text, CFRangeMake(3, 2), part),
                 "the range .3, 2. is outside a string");
    EXPECT_EQ(releasedUnits(text), units);
    EXPECT_EQ(CFStringCreateWithCharacters(kCFAllocatorDefault, units.data(), -1), nullptr);
}

TEST(String, ComparesUnits) {
    const CFStringRef one = CFStringCreateWithCString(kCFAllocatorDefault, "abc", kCFStringEncodingMacRoman);
    EXPECT_NE(one, CFSTR("abc"));
    EXPECT_TRUE(CFEqual(one, CFSTR("abc")));
    EXPECT_FALSE(CFEqual(one, CFSTR("abd")));
    EXPECT_FALSE(CFEqual(one, CFSTR("abcd")));
    EXPECT_FALSE(CFEqual(one, kCFAllocatorSystemDefault));
    EXPECT_EQ(CFGetTypeID(one), CFStringGetTypeID());
    EXPECT_EQ(CFSTR("abc"), CFSTR("abc"));
    CFRelease(one);
}

TEST(String, RejectsLiteralsThatAreNotAscii) {
    EXPECT_DEATH(CFSTR("\x80"), "CFSTR: the string is not ASCII");
}

} // namespace
