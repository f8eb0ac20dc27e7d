#include <Kelbase/common/common_string.h>

#include <gtest/gtest.h>

#include <random>

namespace {

std::string Bytes(const String& s) { return {s.Latin1(), s.GetLength()}; }

constexpr int absent = -1;
int Position(const checked_value<unsigned int>& found) {
    return found.IsGiven() ? static_cast<int>(static_cast<unsigned int>(found)) : absent;
}

} // namespace

TEST(StringFind, GivesPositionsOrAbsent) {
    EXPECT_EQ(Position(String("abcb").Find('b')), 1);
    EXPECT_EQ(Position(String("abcb").Find('b', 2)), 3);
    EXPECT_EQ(Position(String("abcb").Find('b', 4)), absent);
    EXPECT_EQ(Position(String("abc").Find('B', 0, false)), 1);
    EXPECT_EQ(Position(String("\xC3\xA9").Find('\x89', 0, false)), absent) << "folds ASCII alone";
    EXPECT_EQ(Position(String().Find('b')), absent);

    EXPECT_EQ(Position(String("abcb").FindRev('b')), 3);
    EXPECT_EQ(Position(String("abcb").FindRev('b', 2u)), 1);
    EXPECT_EQ(Position(String("abcb").FindRev('b', 4u)), absent);
    EXPECT_EQ(Position(String("B").FindRev('b', 0u, false)), 0);
    EXPECT_EQ(Position(String().FindRev('b')), absent);

    EXPECT_EQ(Position(String("abc").Find("", 2)), 2);
    EXPECT_EQ(Position(String("ab").Find("", 2)), absent);
    EXPECT_EQ(Position(String("aab").Find("ab")), 1);
    EXPECT_EQ(Position(String("xaaBC").Find("abc", 0, false)), 2);
    EXPECT_EQ(Position(String("ab").Find("abc", 0, false)), absent);
    String cut("a");
    cut += '\0';
    cut += String("b");
    EXPECT_EQ(Position(cut.Find("b")), absent) << "texts end at the NUL";
    EXPECT_EQ(Position(cut.Find('b')), 2) << "bytes do not";
}

TEST(StringFind, TellsPrefixAndSuffix) {
    EXPECT_TRUE(String("abc").BeginsWith("AB", false));
    EXPECT_FALSE(String("abc").BeginsWith("AB"));
    EXPECT_FALSE(String("abc").BeginsWith("abcd"));
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
    EXPECT_EQ(Bytes(String("abc").Mid(1, 1)), "b");
    EXPECT_EQ(Bytes(String("abc").Mid(1, 0xFFFFFFFF)), "bc");
    EXPECT_EQ(Bytes(String("abc").Mid(3)), "");
    EXPECT_EQ(Bytes(String("abc").Right(2)), "bc");
    EXPECT_EQ(Bytes(String("ab").Insert(99, "x")), "abx");
    String twice("ab");
    EXPECT_EQ(Bytes(twice.Insert(1, twice)), "aabb");
    EXPECT_EQ(Bytes(String("abc").Remove(1)), "a");
    EXPECT_EQ(Bytes(String("abc").Remove(1, 1u)), "ac");
    EXPECT_EQ(Bytes(String("abc").Remove(1, 0xFFFFFFFF)), "a");
    EXPECT_EQ(Bytes(String("abc").Remove(3, 1u)), "abc");
    EXPECT_EQ(Bytes(String("abc").Truncate(1)), "a");
}

TEST(StringEdit, ReplacesMapsAndCleans) {
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
        << "a cut end is blanked";
    const String clean("a b");
    EXPECT_EQ(clean.StripWhiteSpace().Latin1(), clean.Latin1()) << "nothing to strip shares";
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
    EXPECT_EQ(Bytes(String::Join("", parts)), "xy") << "the list may hold the text itself";
    EXPECT_EQ(Bytes(String::Join(",", {})), "");
}

/// Random programs of edits, against the same edits of a plain byte string.
TEST(StringEdit, AgreesWithPlainByteStrings) {
    std::mt19937 random(20030);
    const auto upTo = [&random](unsigned int n) { return static_cast<unsigned int>(random() % (n + 1)); };
    for (int program = 0; program < 300; ++program) {
        String s;
        std::string model;
        for (int step = 0; step < 30; ++step) {
            const String before = s;
            const std::string modelBefore = model;
            const auto pos = upTo(static_cast<unsigned int>(model.size()) + 2), n = upTo(4);
            const std::string piece(n, static_cast<char>('a' + upTo(3)));
            const std::size_t at = std::min<std::size_t>(pos, model.size());
            switch (upTo(6)) {
            case 0:
                s += String(piece.c_str()), model += piece;
                break;
            case 1:
                s.Insert(pos, piece.c_str()), model.insert(at, piece);
                break;
            case 2:
                s.Remove(pos, n), model.erase(at, n);
                break;
            case 3:
                s.Truncate(pos), model.resize(at);
                break;
            case 4:
                s = s.Left(pos) + s.Mid(pos);
                break;
            case 5:
                s = s.Mid(pos, n), model = model.substr(at, n);
                break;
            default:
                s = s.Replace("ab", "c"); // one pass, so no new "ab" counts
                for (std::size_t hit = 0; (hit = model.find("ab", hit)) != std::string::npos; ++hit) {
                    model.replace(hit, 2, "c");
                }
            }
            ASSERT_EQ(Bytes(s), model) << "program " << program << ", step " << step;
            ASSERT_EQ(Bytes(before), modelBefore) << "a sharer changed";
        }
    }
}
