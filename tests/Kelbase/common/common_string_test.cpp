#include <Kelbase/common/common_string.h>

#include "TextBytes.h"
#include "support/Allocations.h"
#include "support/CommandOutput.h"

#include <gtest/gtest.h>

#include <stdexcept>

// Compares with Python's Unicode tables. Unicode has changed five of the categories since
// the table was fixed.
TEST(Char, CategoriesMatchUnicode) {
    const std::string script =
        "import unicodedata; "
        "names = '-- Mn Mc Me Nd Nl No Zs Zl Zp Cc Cf Cs Co Cn Lu Ll Lt Lm Lo Pc Pd Ps Pe Pi Pf Po Sm Sc Sk "
        "So'.split(); "
        "older = {0xA7: 'So', 0xAA: 'Ll', 0xAD: 'Pd', 0xB6: 'So', 0xBA: 'Ll'}; "
        "print(*[names.index(older.get(i, unicodedata.category(chr(i)))) for i in range(256)])";
    std::string categories;
    for (const int category : CHAR_CATEGORIES) categories += std::to_string(category) + " ";
    categories.back() = '\n';
    EXPECT_EQ(categories, Printed("/usr/bin/python3 -c \"" + script + "\""));
}

TEST(String, AllEmptyStringsAreEqual) {
    const String states[] = {String(), String(""), String(static_cast<const char*>(nullptr)),
                             String("abc", 0u)};
    for (const String& s : states) {
        EXPECT_EQ(s.GetLength(), 0u);
        EXPECT_STREQ(s.Latin1(), "");
        for (const String& other : states) EXPECT_TRUE(s == other && s <= other && !(s < other));
        const char* const null = nullptr;
        EXPECT_FALSE(s == null || s < null || s <= null);
    }
}

TEST(String, CopiesBytesUpToNulOrLimit) {
    EXPECT_EQ(Bytes(String("abc", 2)), "ab");
    EXPECT_EQ(Bytes(String("a\0b", 3)), "a");
    EXPECT_EQ(Bytes(String("abc", 0xFFFFFFFF)), "abc");
    EXPECT_EQ(Bytes(String('\0')), std::string(1, '\0'));
    EXPECT_TRUE(String('\0') == "");
}

TEST(String, HasOneLineFeedOfThePlatform) { EXPECT_EQ(Bytes(String::GetPlatformLinefeed()), "\n"); }

TEST(String, ComparesBytesAsUnsignedNumbers) {
    EXPECT_TRUE(String("B") < String("a"));
    EXPECT_TRUE(String("ab") < String("a\xE9"));
    EXPECT_TRUE(String("a") < "b");
    EXPECT_FALSE(String("b") <= "a");
}

TEST(String, EditsDoNotChangeCopies) {
    String a("text");
    const String b = a;
    EXPECT_EQ(a.Latin1(), b.Latin1()) << "a copy shares the bytes";
    a += String("!");
    EXPECT_EQ(Bytes(a), "text!");
    EXPECT_EQ(Bytes(b), "text");
    String c = b;
    c.Resize(2, false);
    String d = b;
    d.detachAndExtend(4);
    EXPECT_EQ(Bytes(d), std::string("text\0", 5));
    EXPECT_EQ(Bytes(b), "text");
    String e;
    e += b;
    EXPECT_EQ(e.Latin1(), b.Latin1()) << "an empty string shares the appended bytes";
    e += e;
    EXPECT_EQ(Bytes(e), "texttext");
    e = e.Latin1() + 4;
    EXPECT_EQ(Bytes(e), "text");
}

TEST(String, ResizeReplacesCutCharactersByNulBytes) {
    struct Row {
        const char* text;
        unsigned int length;
        std::string expected;
    };
    const Row rows[] = {
        {"a\xC3\xA9", 2, std::string("a\0", 2)},
        {"a\xC3\xA9", 3, "a\xC3\xA9"},
        {"\xE2\x82\xAC", 2, std::string(2, '\0')},
        {"\xF0\x9F\x98\x80z", 4, "\xF0\x9F\x98\x80"},
        {"\xF0\x9F\x98\x80z", 3, std::string(3, '\0')},
        {"\xFC\x80\x80\x80\x80\x80z", 6, "\xFC\x80\x80\x80\x80\x80"},
        {"\xF8\x88\x80\x80\x80", 4, std::string(4, '\0')},
        {"\xFE\x80\x80\x80\x80\x80\x80", 7, "\xFE\x80\x80\x80\x80\x80\x80"},
        {"\x80\x80x", 2, "\x80\x80"}, // no lead byte
        {"ab", 4, std::string("ab\0\0", 4)},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Bytes(String(row.text).Resize(row.length, true)), row.expected) << row.text;
}

TEST(String, RejectsLengthsThatExceedTheMemory) {
    for (const char* const original : {"", "text"}) {
        String text(original);
        EXPECT_THROW(text.detachAndExtend(0xFFFFFFFF), std::length_error);
        // A 32-bit process rejects the length before it allocates.
        const ScarceMemory scarce(std::size_t{64} << 20);
        EXPECT_ANY_THROW(text.Resize(0xFFFFFFFF, false)) << original;
        EXPECT_EQ(Bytes(text), original);
    }
}

TEST(String, AllocatesOnlyForItsOwnText) {
    const String text("a text that is longer than any small buffer holds");
    const String mark("!");
    std::vector<String> copies;
    copies.reserve(100);
    EXPECT_EQ(AllocationsOf([&] { copies.resize(50, text); }), 0u) << "copies";
    EXPECT_EQ(AllocationsOf([&] { copies.resize(100); }), 0u) << "default construction";
    EXPECT_EQ(AllocationsOf([&] { copies[0] = std::move(copies[1]); }), 0u) << "moves";
    EXPECT_LE(AllocationsOf([&] { copies[60] = "new text, and longer than any small buffer"; }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[2] += mark; }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[3].Insert(4, mark); }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[4].Remove(4, 1u); }), 2u);
    EXPECT_EQ(AllocationsOf([&] { copies[4].Remove(4, 1u).Truncate(40); }), 0u)
        << "an edit of an unshared text";
    EXPECT_LE(AllocationsOf([&] { copies[5].detachAndExtend(100); }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[6].Resize(100, true); }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[61] = text.Left(40); }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[62] = text.ReplaceChar('a', 'b'); }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[63] = text.Arg(text); }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[64] = String::Number(0xFFFFFFFFu, 2); }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[65] = String::Join(mark, copies); }), 2u);
    EXPECT_EQ(AllocationsOf([&] { text.BeginsWith(text, false); }), 0u);
}
