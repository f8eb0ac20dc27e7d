#include <Kelbase/common/common_string.h>

#include "TextBytes.h"
#include "support/Allocations.h"

#include <gtest/gtest.h>

#include <stdexcept>

TEST(Char, CategoriesAreThoseOfLatin1) {
    struct Range {
        int first, last, category;
    };
    const Range ranges[] = {
        {0x30, 0x39, 4},  {0xB2, 0xB3, 6},  {0xB9, 0xB9, 6},  {0xBC, 0xBE, 6},  {0x20, 0x20, 7},
        {0xA0, 0xA0, 7},  {0x00, 0x1F, 10}, {0x7F, 0x9F, 10}, {0x41, 0x5A, 15}, {0xC0, 0xD6, 15},
        {0xD8, 0xDE, 15}, {0x61, 0x7A, 16}, {0xAA, 0xAA, 16}, {0xB5, 0xB5, 16}, {0xBA, 0xBA, 16},
        {0xDF, 0xF6, 16}, {0xF8, 0xFF, 16}, {0x5F, 0x5F, 20}, {0x2D, 0x2D, 21}, {0xAD, 0xAD, 21},
        {0x28, 0x28, 22}, {0x5B, 0x5B, 22}, {0x7B, 0x7B, 22}, {0x29, 0x29, 23}, {0x5D, 0x5D, 23},
        {0x7D, 0x7D, 23}, {0xAB, 0xAB, 24}, {0xBB, 0xBB, 25}, {0x21, 0x23, 26}, {0x25, 0x27, 26},
        {0x2A, 0x2A, 26}, {0x2C, 0x2C, 26}, {0x2E, 0x2F, 26}, {0x3A, 0x3B, 26}, {0x3F, 0x40, 26},
        {0x5C, 0x5C, 26}, {0xA1, 0xA1, 26}, {0xB7, 0xB7, 26}, {0xBF, 0xBF, 26}, {0x2B, 0x2B, 27},
        {0x3C, 0x3E, 27}, {0x7C, 0x7C, 27}, {0x7E, 0x7E, 27}, {0xAC, 0xAC, 27}, {0xB1, 0xB1, 27},
        {0xD7, 0xD7, 27}, {0xF7, 0xF7, 27}, {0x24, 0x24, 28}, {0xA2, 0xA5, 28}, {0x5E, 0x5E, 29},
        {0x60, 0x60, 29}, {0xA8, 0xA8, 29}, {0xAF, 0xAF, 29}, {0xB4, 0xB4, 29}, {0xB8, 0xB8, 29},
        {0xA6, 0xA7, 30}, {0xA9, 0xA9, 30}, {0xAE, 0xAE, 30}, {0xB0, 0xB0, 30}, {0xB6, 0xB6, 30}};
    int covered = 0;
    for (const Range& range : ranges) {
        for (int byte = range.first; byte <= range.last; ++byte, ++covered) {
            EXPECT_EQ(CHAR_CATEGORIES[byte], range.category) << byte;
        }
    }
    EXPECT_EQ(covered, 256);
}

TEST(String, EmptyStatesAreAlike) {
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

TEST(String, TakesBytesUpToNulOrLimit) {
    EXPECT_EQ(Bytes(String("abc", 2)), "ab");
    EXPECT_EQ(Bytes(String("a\0b", 3)), "a");
    EXPECT_EQ(Bytes(String("abc", 0xFFFFFFFF)), "abc");
    EXPECT_EQ(Bytes(String('\0')), std::string(1, '\0'));
    EXPECT_TRUE(String('\0') == "");
}

TEST(String, ComparesBytesAsUnsignedNumbers) {
    EXPECT_TRUE(String("B") < String("a"));
    EXPECT_TRUE(String("ab") < String("a\xE9"));
    EXPECT_TRUE(String("a") < "b");
    EXPECT_FALSE(String("b") <= "a");
}

TEST(String, EditsLeaveSharersAlone) {
    String a("text");
    const String b = a;
    EXPECT_EQ(a.Latin1(), b.Latin1()) << "a copy shares";
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
    EXPECT_EQ(e.Latin1(), b.Latin1()) << "appending to nothing shares";
    e += e;
    EXPECT_EQ(Bytes(e), "texttext");
    e = e.Latin1() + 4;
    EXPECT_EQ(Bytes(e), "text");
}

TEST(String, CutCharactersBecomeNulBytes) {
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
        {"\xF8\x88\x80\x80\x80", 4, std::string(4, '\0')},
        {"\xFE\x80\x80\x80\x80\x80\x80", 7, "\xFE\x80\x80\x80\x80\x80\x80"},
        {"\x80\x80x", 2, "\x80\x80"}, // no lead byte to start from
        {"ab", 4, std::string("ab\0\0", 4)},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Bytes(String(row.text).Resize(row.length, true)), row.expected) << row.text;
}

TEST(String, RejectsALengthThatNoMemoryHolds) {
    for (const char* const original : {"", "text"}) {
        String text(original);
        EXPECT_THROW(text.detachAndExtend(0xFFFFFFFF), std::length_error);
        const ScarceMemory scarce(std::size_t{64} << 20); // a 32-bit process rejects the length before
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
    EXPECT_EQ(AllocationsOf([&] { copies.resize(100); }), 0u) << "default-made";
    EXPECT_EQ(AllocationsOf([&] { copies[0] = std::move(copies[1]); }), 0u) << "moves";
    EXPECT_LE(AllocationsOf([&] { copies[60] = "new text, and longer than any small buffer"; }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[2] += mark; }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[3].Insert(4, mark); }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[4].Remove(4, 1u); }), 2u);
    EXPECT_EQ(AllocationsOf([&] { copies[4].Remove(4, 1u).Truncate(40); }), 0u) << "a text of its own";
    EXPECT_LE(AllocationsOf([&] { copies[5].detachAndExtend(100); }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[6].Resize(100, true); }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[61] = text.Left(40); }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[62] = text.ReplaceChar('a', 'b'); }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[63] = text.Arg(text); }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[64] = String::Number(0xFFFFFFFFu, 2); }), 2u);
    EXPECT_LE(AllocationsOf([&] { copies[65] = String::Join(mark, copies); }), 2u);
    EXPECT_EQ(AllocationsOf([&] { text.BeginsWith(text, false); }), 0u);
}
