#include "DisplayText.h"

#include <gtest/gtest.h>

using namespace xcodhost;

TEST(DisplayText, EscapesControlCharactersAndInvalidUtf8) {
    EXPECT_EQ(Printable("Icon\r"), "Icon\\r");
    EXPECT_EQ(Printable("\x1B[31m\n\t\x7F"), "\\x1B[31m\\n\\t\\x7F");
    EXPECT_EQ(Printable("\xC3\xA9 \xE6\x97\xA5 \xF0\x9F\x8E\xB5"), "\xC3\xA9 \xE6\x97\xA5 \xF0\x9F\x8E\xB5");
    EXPECT_EQ(Printable("\xC2\x9B"), "\\xC2\\x9B") << "the control sequence introducer as one character";
    EXPECT_EQ(Printable("\xC0\xAF"), "\\xC0\\xAF") << "overlong";
    EXPECT_EQ(Printable("\xED\xA0\x80"), "\\xED\\xA0\\x80") << "surrogate";
    EXPECT_EQ(Printable("\xF4\x90\x80\x80"), "\\xF4\\x90\\x80\\x80") << "above U+10FFFF";
    EXPECT_EQ(Printable("a\xE6\x97"), "a\\xE6\\x97") << "cut off";
    EXPECT_EQ(Printable(std::string_view("\xC3\xA9", 1)), "\\xC3") << "cut off inside a text";
}
