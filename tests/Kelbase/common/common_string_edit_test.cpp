#include <Kelbase/common/common_string.h>
#include <Kelbase/common/detail/common_string_sort.h>

#include "TextBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>

namespace {

constexpr int kAbsent = -1;
int position(const checked_value<unsigned int>& found) {
    return found.IsGiven() ? static_cast<int>(static_cast<unsigned int>(found)) : kAbsent;
}

} // namespace

TEST(StringFind, ReturnsThePositionOrAbsent) {
    EXPECT_EQ(position(String("abcb").Find('b')), 1);
    EXPECT_EQ(position(String("abcb").Find('b', 2)), 3);
    EXPECT_EQ(position(String("abcb").Find('b', 4)), kAbsent);
    EXPECT_EQ(position(String("abc").Find('B', 0, false)), 1);
    EXPECT_EQ(position(String("\xC3\xA9").Find('\x89', 0, false)), kAbsent)
        << "case is ignored for ASCII only";
    EXPECT_EQ(position(String().Find('b')), kAbsent);

    EXPECT_EQ(position(String("abcb").FindRev('b')), 3);
    EXPECT_EQ(position(String("abcb").FindRev('b', 2u)), 1);
    EXPECT_EQ(position(String("abcb").FindRev('b', 4u)), kAbsent);
    EXPECT_EQ(position(String("B").FindRev('b', 0u, false)), 0);
    EXPECT_EQ(position(String().FindRev('b')), kAbsent);

    EXPECT_EQ(position(String("abc").Find("", 2)), 2);
    EXPECT_EQ(position(String("ab").Find("", 2)), kAbsent);
    EXPECT_EQ(position(String("aab").Find("ab")), 1);
    EXPECT_EQ(position(String("xaaBC").Find("abc", 0, false)), 2);
    EXPECT_EQ(position(String("ab").Find("abc", 0, false)), kAbsent);
    String cut("a");
    cut += '\0';
    cut += String("b");
    EXPECT_EQ(position(cut.Find("b")), kAbsent) << "a search for text ends at the NUL";
    EXPECT_EQ(position(cut.Find('b')), 2) << "a search for a byte does not";
}

TEST(StringFind, DetectsPrefixAndSuffix) {
    EXPECT_TRUE(String("abc").BeginsWith("AB", false));
    EXPECT_FALSE(String("abc").BeginsWith("AB"));
    EXPECT_FALSE(String("abc").BeginsWith("abcd"));
    EXPECT_TRUE(String("abc").BeginsWith("abc"));
    EXPECT_TRUE(String("Folder and file").BeginsWith("FOLDER", false));
    EXPECT_TRUE(String("abc").EndsWith("Bc", false));
    EXPECT_TRUE(String().EndsWith(""));
    EXPECT_FALSE(String("aXb").EndsWith("yb", false));
    String cut("a");
    cut += '\0';
    EXPECT_TRUE((cut + "b").BeginsWith(cut, false));
    EXPECT_FALSE(cut.BeginsWith(cut + "b"));
    EXPECT_TRUE((cut + "b").EndsWith(cut + "c")) << "compared up to the NUL";
}

TEST(StringEdit, SlicesAndChangesInPlace) {
    EXPECT_EQ(Bytes(String("abc").Mid(1, 0xFFFFFFFF)), "bc");
    EXPECT_EQ(Bytes(String("ab").Insert(99, "x")), "abx");
    String twice("ab");
    EXPECT_EQ(Bytes(twice.Insert(1, twice)), "aabb");
    EXPECT_EQ(Bytes(String("abc").Remove(1)), "a");
    EXPECT_EQ(Bytes(String("abc").Remove(1, 0xFFFFFFFF)), "a");
}

TEST(StringEdit, ReplacesConvertsAndTrims) {
    EXPECT_EQ(Bytes(String("1.2.3").ReplaceChar('.', ',')), "1,2,3");
    EXPECT_EQ(Bytes(String("aaa").Replace("aa", "b")), "ba");
    EXPECT_EQ(Bytes(String("abab").Replace("b", String())), "aa");
    EXPECT_EQ(Bytes(String("ab").Replace("", "x")), "ab");
    EXPECT_EQ(Bytes(String("az\xC3\xA9[`{").ToUpper()), "AZ\xC3\xA9[`{");
    EXPECT_EQ(Bytes(String("AZ\xC3\x89@[").ToLower()), "az\xC3\x89@[");
    EXPECT_EQ(Bytes(String("\t\xA0 a b\n").StripWhiteSpace()), "a b");
    EXPECT_EQ(Bytes(String(" \n").StripWhiteSpace()), "");
    EXPECT_EQ(Bytes(String("  a \t\n b  ").SimplifyWhiteSpace()), "a b");
    EXPECT_EQ(Bytes(String("   ").SimplifyWhiteSpace()), "");
    EXPECT_EQ(Bytes(String("x\xC3\xA0y").SimplifyWhiteSpace()), "x\xC3 y") << "0xA0 is white space";
    EXPECT_EQ(Bytes(String("x\xE2\x82 ").SimplifyWhiteSpace()), std::string("x\0\0", 3))
        << "the cut character at the end becomes NUL bytes";
    const String clean("a b");
    EXPECT_EQ(clean.StripWhiteSpace().Latin1(), clean.Latin1()) << "an unchanged string shares the bytes";
}

TEST(StringEdit, SplitsAndJoins) {
    std::vector<String> parts;
    String("a,,b,").Split(',', parts);
    ASSERT_EQ(parts.size(), 4u);
    EXPECT_EQ(Bytes(String::Join("|", parts)), "a||b|");
    String(",").Split(',', parts);
    EXPECT_EQ(parts.size(), 2u);
    String().Split(',', parts);
    EXPECT_EQ(parts.size(), 1u);
    parts = {String("x,y")};
    parts[0].Split(',', parts);
    EXPECT_EQ(Bytes(String::Join("", parts)), "xy") << "the list may hold the split text";
    EXPECT_EQ(Bytes(String::Join(",", {})), "");
}

TEST(StringList, SortOrderMatchesTheOperator) {
    std::mt19937 random(99);
    for (const std::size_t prefix : {0u, 3u, 9u}) {
        std::vector<String> texts(prefix == 0 ? 2 : 0), expected;
        for (int i = 0; i < 500; ++i) {
            String text(std::string(prefix, 'p').c_str());
            for (std::size_t n = random() % 20; n > 0; --n) text += "ab\xE9\x01"[random() % 4];
            texts.push_back(text);
        }
        expected = texts;
        std::sort(expected.begin(), expected.end());
        SortTexts(texts);
        EXPECT_EQ(Bytes(String::Join("|", texts)), Bytes(String::Join("|", expected)));
    }
    std::vector<String> none;
    SortTexts(none);
}

namespace {

/// The arguments of an edit.
struct Choice {
    unsigned int pos; ///< A position, at most 2 past the end.
    unsigned int n;   ///< A length.
    std::size_t at;   ///< `pos`, but not past the end.
    char letter;
    std::string piece; ///< `n` times the letter.
};

using Edit = void (*)(String& t, std::string& model, const Choice& c);

/// Each row applies one edit to a String and to a std::string.
const Edit kEdits[] = {
    [](String& t, std::string& model, const Choice& c) { t += String(c.piece.c_str()), model += c.piece; },
    [](String& t, std::string& model, const Choice& c) { t += c.letter, model += c.letter; },
    [](String& t, std::string& model, const Choice& c) {
        t.Insert(c.pos, c.piece.c_str()), model.insert(c.at, c.piece);
    },
    [](String& t, std::string& model, const Choice& c) {
        if (model.size() < 500) t.Insert(c.pos, t), model.insert(c.at, std::string(model));
    },
    [](String& t, std::string& model, const Choice& c) { t.Remove(c.pos, c.n), model.erase(c.at, c.n); },
    [](String& t, std::string& model, const Choice& c) { t.Truncate(c.pos), model.resize(c.at); },
    [](String& t, std::string& model, const Choice& c) { t.Resize(c.n, true), model.resize(c.n); },
    [](String& t, std::string& model, const Choice& c) {
        t.detachAndExtend(c.pos), model.resize(std::max<std::size_t>(c.pos + 1, model.size()));
    },
    [](String& t, std::string&, const Choice& c) { t = t.Left(c.pos) + t.Mid(c.pos); },
    [](String& t, std::string& model, const Choice& c) {
        t = t.Mid(c.pos, c.n), model = model.substr(c.at, c.n);
    },
    [](String& t, std::string& model, const Choice& c) {
        t = t.Right(c.pos), model.erase(0, model.size() - c.at);
    },
    [](String& t, std::string& model, const Choice&) {
        t = t.Replace("ab", "c"); // one pass: replaces no "ab" that the replacement creates
        for (std::size_t i = 0; (i = model.find("ab", i)) != model.npos; ++i) model.replace(i, 2, "c");
    },
    [](String& t, std::string& model, const Choice& c) {
        t = t.ReplaceChar(c.letter, 'b'), std::replace(model.begin(), model.end(), c.letter, 'b');
    },
    [](String& t, std::string&, const Choice& c) {
        std::vector<String> fields;
        t.Split(c.letter, fields), t = String::Join(c.letter, fields);
    },
};

} // namespace

TEST(StringEdit, AgreesWithStdString) {
    std::mt19937 random(20030);
    const auto below = [&random](std::size_t n) { return static_cast<unsigned int>(random() % n); };
    for (int program = 0; program < 300; ++program) {
        String text;
        std::string model;
        for (int step = 0; step < 40; ++step) {
            const bool shared = below(2); // an unshared text is edited in place
            const String sharer = shared ? text : String();
            const std::string modelBefore = shared ? model : "";
            const unsigned int pos = below(model.size() + 3), n = below(9), edit = below(std::size(kEdits));
            const char letter = static_cast<char>('a' + below(3));
            kEdits[edit](text, model,
                         {pos, n, std::min<std::size_t>(pos, model.size()), letter, std::string(n, letter)});
            ASSERT_EQ(Bytes(text), model) << "program " << program << ", step " << step << ", edit " << edit;
            ASSERT_EQ(Bytes(sharer), modelBefore) << "a copy is changed by edit " << edit;
        }
    }
}
