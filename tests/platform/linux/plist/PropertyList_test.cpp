#include <macplatform/PropertyList.h>

#include "support/BinaryPlist.h"
#include "support/CommaLocale.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <sys/stat.h>
#include <utility>
#include <vector>

using namespace std::string_literals;
using macplatform::PropertyListFormat;
using macplatform::PropertyValue;
using macplatform::ReadPropertyList;

namespace {

const char kOneOfEach[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0"><dict>
<key>text</key><string>caf&#233; &lt;1&gt;</string><key>integer</key><integer>-5</integer>
<key>real</key><real>0.5</real><key>yes</key><true/><key>data</key><data>CgsM</data>
<key>date</key><date>2011-02-03T04:05:06Z</date><key>array</key><array><string/><dict/><date>2040-02-29T23:59:58Z</date></array>
</dict></plist>)";

/// Returns the value that is read, or the error.
std::string Read(const std::string& bytes) {
    const TemporaryFolder folder;
    const auto plist = ReadPropertyList(folder.Write("list.plist", bytes));
    return plist.error.empty() ? plist.root.Describe() : "error: " + plist.error;
}

bool IsRefused(const std::string& bytes) { return Read(bytes).compare(0, 6, "error:") == 0; }

/// Returns the text in UTF-16 or UTF-32 with a byte order mark. The text must be ASCII.
std::string Wide(const std::string& text, std::size_t width, bool isBigEndian) {
    const std::string mark = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    const std::string zeros(width - 1, '\0'), markZeros(width - 2, '\0');
    std::string bytes = isBigEndian ? markZeros + mark : mark + markZeros;
    for (const char c : text) bytes += isBigEndian ? zeros + c : c + zeros;
    return bytes;
}

/// Returns a binary property list with a key for each object: {"a": ..., "b": ...}.
std::string BinaryDictionary(const std::vector<std::string>& values) {
    std::vector<std::string> objects = {std::string(1, static_cast<char>(0xD0 | values.size()))};
    for (std::size_t i = 0; i < 2 * values.size(); ++i) objects[0] += static_cast<char>(i + 1);
    for (std::size_t i = 0; i < values.size(); ++i) objects.push_back({'\x51', static_cast<char>('a' + i)});
    objects.insert(objects.end(), values.begin(), values.end());
    return BinaryPlist(objects);
}

} // namespace

TEST(PropertyList, ReadsBothFormatsAlike) {
    const TemporaryFolder folder;
    const std::string xml = folder.Write("list.plist", kOneOfEach);
    const std::string binary = (folder / "binary.plist").string();
    ASSERT_EQ(std::system(("plistutil -f bin -i '" + xml + "' -o '" + binary + "'").c_str()), 0);

    const auto fromXml = ReadPropertyList(xml), fromBinary = ReadPropertyList(binary);
    EXPECT_EQ(fromXml.error, "");
    EXPECT_EQ(fromXml.format, PropertyListFormat::kXml);
    EXPECT_EQ(fromBinary.format, PropertyListFormat::kBinary);
    EXPECT_EQ(fromXml.root, fromBinary.root);
    EXPECT_EQ(
        fromXml.root.Describe(),
        "{\"text\": \"caf\xC3\xA9 <1>\", \"integer\": -5, \"real\": 0.5, \"yes\": true, \"data\": <0a0b0c>, "
        "\"date\": 2011-02-03T04:05:06Z, \"array\": [\"\", {}, 2040-02-29T23:59:58Z]}");
    EXPECT_EQ(fromXml.root.Find("integer")->integer, -5);
    EXPECT_STREQ(fromXml.root.Find("text")->KindName(), "string");
    EXPECT_EQ(fromXml.root.Find("none"), nullptr);
}

TEST(PropertyList, RejectsFilesThatAreNotPropertyLists) {
    const TemporaryFolder folder;
    for (const std::string text : {"", "a b", "bplist00", "{ a = b }", "<plist><dict><key>a", "<"}) {
        const auto plist = ReadPropertyList(folder.Write("bad.plist", text));
        EXPECT_NE(plist.error, "") << text;
        EXPECT_EQ(plist.root.kind, PropertyValue::Kind::kNone);
    }
    EXPECT_EQ(ReadPropertyList((folder / "missing").string()).errorNumber, ENOENT);
    EXPECT_EQ(ReadPropertyList(folder.Path().string()).errorNumber, EISDIR);
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(ReadPropertyList((folder / "pipe").string()).errorNumber, EINVAL)
        << "the pipe is not opened, because opening it would wait for a writer";
}

TEST(PropertyList, RejectsInputThatWouldHarmTheParser) {
    const TemporaryFolder folder;
    const auto errorOf = [&folder](const std::string& bytes) {
        return ReadPropertyList(folder.Write("hostile.plist", bytes)).error;
    };
    const auto nested = [](const std::string& open) {
        std::string text = "<plist>";
        for (int i = 0; i < 100000; ++i) text += open;
        return text;
    };
    const auto closed = [](std::size_t depth) {
        std::string text = "<true/>";
        for (std::size_t i = 0; i < depth; ++i) text = "<array>" + text + "</array>";
        return "<plist>" + text + "</plist>";
    };
    EXPECT_EQ(errorOf(closed(512)), "");
    EXPECT_EQ(errorOf(closed(513)), "nested deeper than 512 levels");
    EXPECT_EQ(errorOf(nested("<array>")), "nested deeper than 512 levels");
    std::string values = "<array>";
    for (int i = 0; i < 1048576; ++i) values += "<true/>";
    EXPECT_EQ(errorOf(values + "</array>"), "more than 1048576 values");
    EXPECT_EQ(errorOf(nested("<array><!-- </array> -->")), "nested deeper than 512 levels");
    EXPECT_EQ(
        errorOf("<plist><array>" + std::string(std::size_t{7} << 20, '\n') + nested("<true/>").substr(7)),
        "line 7340033: the text ends too early");

    folder.Write("hostile.plist", "<plist>");
    std::filesystem::resize_file(folder / "hostile.plist", 100'000'000);
    EXPECT_EQ(ReadPropertyList((folder / "hostile.plist").string()).error, "larger than 64 MiB");
    EXPECT_EQ(errorOf("bplist00" + std::string(std::size_t{60} << 20, '\xFF')),
              "the binary property list is damaged");
    EXPECT_EQ(errorOf("<plist>" + std::string(std::size_t{60} << 20, '\xFF')),
              "line 1: text outside of a string");

    EXPECT_EQ(errorOf(BinaryPlist({"\xA1\x01", "\xA1\x02", "\x09"})), "")
        << "the header and trailer of the other rows are valid";
    EXPECT_EQ(errorOf(BinaryPlist({std::string("\xA1\x01", 2), std::string("\xA1\x00", 2)})),
              "an object contains itself");
    EXPECT_EQ(errorOf(BinaryPlist({"\xA1\x09", "\x09"})), "the binary property list is damaged");
    std::vector<std::string> doubling;
    for (char i = 1; i <= 30; ++i) doubling.push_back(std::string("\xA2") + i + i);
    doubling.push_back("\x09");
    EXPECT_EQ(errorOf(BinaryPlist(doubling)), "more than 1048576 values");

    std::vector<std::string> levels; // Each has 15 references to the next; a string of 60 bytes is the last.
    for (char i = 1; i <= 4; ++i) levels.push_back("\xAF\x10\x1E" + std::string(30, i));
    levels.push_back("\x5F\x10\x3C" + std::string(60, 'x'));
    EXPECT_EQ(errorOf(BinaryPlist(levels)), "") << "30^4 values";
    for (const std::string open : {"(", "{a=", "<plist>", "<dict><key/>"})
        EXPECT_NE(errorOf(nested(open).substr(7)).find("nested deeper than 512 levels"), open.npos) << open;

    std::string whole = BinaryPlist({"\xD1\x01\x02", "\121k", "\xA2\x03\x03", "\x10\x07"});
    EXPECT_EQ(errorOf(whole), "");
    std::string outside = whole; // the root is the object after the last, which begins at byte 8
    outside[outside.size() - 32] = 8;
    outside[outside.size() - 9] = 4;
    EXPECT_EQ(errorOf(outside), "the binary property list is damaged");
    for (std::size_t length = 8; length < whole.size(); ++length) {
        EXPECT_NE(errorOf(whole.substr(0, length)), "") << length;
    }
}

TEST(PropertyList, ReadsXmlAsTheMacDoes) {
    const std::pair<std::string, const char*> rows[] = {
        {"\xEF\xBB\xBF<dict/>", "{}"},
        {"<plist><!-- <a> -- --><?note?><true></true></plist>\n<!----> behind <", "true"},
        {"\n<?xml version='1.0'?><!DOCTYPE plist 'odd'><!DOCTYPE x><plist><plist><false/></plist></plist>",
         "false"},
        {"<array a='1'><string b=\"2\">x</string><true c=''/></array>", "[\"x\", true]"},
        {"<string>a\r\nb\r<![CDATA[\r\n<&]]>&#x41;&apos;&#13;]]></string>",
         "\"a\\r\\nb\\r\\r\\n<&A'\\r]]>\""},
        {"<string>\x01&#2;\xEF\xBF\xBE&#xFFFE;</string>", "\"\\x01\\x02\xEF\xBF\xBE\xEF\xBF\xBE\""},
        {"<string>\0&#0;</string>"s, "\"\\x00\\x00\""},
        {"<string>\xEF\xBB\xBF\xC3\xA9\xF0\x9F\x8E\xB5&#x1F3B5;</string>",
         "\"\xEF\xBB\xBF\xC3\xA9\xF0\x9F\x8E\xB5\xF0\x9F\x8E\xB5\""},
        {"<array><integer> +0x1F</integer><integer>- 5</integer><integer>-9223372036854775808</integer>"
         "<integer>18446744073709551615</integer></array>",
         "[31, -5, -9223372036854775808, 18446744073709551615]"},
        {"<array><real>-0.25</real><real>-0.0</real><real>5.</real><real>NaN</real><real>Infinity</real>"
         "<real>-inf</real><real>1e400</real><real>1e-400</real><real><![CDATA[1]]>&#50;</real></array>",
         "[-0.25, -0, 5, nan, inf, -inf, inf, 0, 12]"},
        {"<array><data>\n AA EC\t</data><data>AA==AAAA</data><data>AAECAA</data><data></data>"
         "<data>&#65;AE</data></array>",
         "[<000102>, <00000000>, <000102>, <>, <eb9004>]"},
        {"<array><date>1904-01-01T00:00:00Z</date><date>2100-02-28T23:59:59Z</date>"
         "<date>0001-01-01T00:00:00Z</date><date>9999-12-31T00:00:00Z</date>"
         "<date>2011-13-01T00:00:00Z</date><date>2011-02-30T24:60:61Z</date></array>",
         "[1904-01-01T00:00:00Z, 2100-02-28T23:59:59Z, 0001-01-01T00:00:00Z, 9999-12-31T00:00:00Z, "
         "2012-01-01T00:00:00Z, 2011-03-03T01:01:01Z]"},
        {"<dict><key/><true/><key>a</key><true/><key>b</key><true/><key>&#97;</key><key>last</key></dict>",
         "{\"\": true, \"a\": \"last\", \"b\": true}"},
        {"<array><dict><key>CF$UID</key><integer>7</integer></dict></array>", "[7]"},
        {"<?xml version='1.0' encoding=\"utf8\"?><string>\xC3\xA9</string>", "\"\xC3\xA9\""},
        {"<?xml version='1.0' encoding=\"US-ASCII\"?><string>a\xE9</string>", "\"a\xC3\xA9\""},
        {"<?xml version='1.0' encoding='iso-8859-1'?><string>\xE9</string>", "\"\xC3\xA9\""},
        {Wide("<?xml version='1.0' encoding='UTF-16'?><string>a</string>", 2, true), "\"a\""},
        {Wide("<string>a</string>", 2, false), "\"a\""},
        {Wide("<string>a</string>", 4, true), "\"a\""},
        {Wide("<string>a</string>", 4, false), "\"a\""},
    };
    for (const auto& [xml, described] : rows) EXPECT_EQ(Read(xml), described) << xml;
    EXPECT_EQ(Read("<plist>\n<string>&nbsp;</string></plist>"), "error: line 2: unknown reference");
}

TEST(PropertyList, RefusesXmlThatTheMacRefuses) {
    for (const char* const xml : {"<integer>1 </integer>",
                                  "<integer>1<!----></integer>",
                                  "<integer><![CDATA[1]]></integer>",
                                  "<integer>&#49;</integer>",
                                  "<integer/>",
                                  "<integer></integer>",
                                  "<integer>0x</integer>",
                                  "<integer>18446744073709551616</integer>",
                                  "<integer>-9223372036854775809</integer>",
                                  "<real> 1</real>",
                                  "<real>1 </real>",
                                  "<real>1<!----></real>",
                                  "<real>+nan</real>",
                                  "<real>-nan</real>",
                                  "<real>0x1</real>",
                                  "<real>1e</real>",
                                  "<real></real>",
                                  "<real/>",
                                  "<date> 2011-01-01T00:00:00Z</date>",
                                  "<date>2011-01-01T00:00:00Z </date>",
                                  "<date>2011-02-30</date>",
                                  "<date/>",
                                  "<data/>",
                                  "<data>AA<!----></data>",
                                  "<data><![CDATA[AA]]></data>",
                                  "<string>a<!----></string>",
                                  "<string><?a?></string>",
                                  "<dict><key>a<!----></key><true/></dict>",
                                  "<string>a & b</string>",
                                  "<string>&#xD800;</string>",
                                  "<string>&#x110000;</string>",
                                  "<string>&#;</string>",
                                  "<!DOCTYPE plist [<!ENTITY a \"b\">]><string>&a;</string>",
                                  "<string>\xC0\xAF</string>",
                                  "<string>\xA9</string>",
                                  "<array><true></array></true>",
                                  "<array>text<true/></array>",
                                  "<array><true/>",
                                  "<plist/>",
                                  "<plist></plist>",
                                  "<plist><true/><true/></plist>",
                                  "<dict><key>a</key></dict>",
                                  "<dict><true/><true/></dict>",
                                  "<Dict/>",
                                  "<nul/>",
                                  "<true> </true>",
                                  "<?xml version='1.0' encoding='none'?><true/>",
                                  "<?xml version='1.0' encoding='UTF-8//IGNORE'?><string>\xFF</string>",
                                  "\xFF\xFE<\0d"}) {
        EXPECT_TRUE(IsRefused(xml)) << xml;
    }
}

TEST(PropertyList, ReadsBinaryObjectsAsTheMacDoes) {
    const std::pair<std::string, const char*> rows[] = {
        {BinaryDictionary({"\x51\x80", "\x52\xC3\xA9", "\122a\0"s, "\x61\xD8\x00"s, "\x62\xDC\x00\xD8\x00"s}),
         "{\"a\": \"\xC2\x80\", \"b\": \"\xC3\x83\xC2\xA9\", \"c\": \"a\\x00\", "
         "\"d\": \"\\uD800\", \"e\": \"\\uDC00\\uD800\"}"},
        {BinaryDictionary({"\0"s, "\x08", "\xC2\x01\x02", "\x84\x00\x00\x00\x00\x07"s.substr(0, 6)}),
         R"({"a": null, "b": false, "c": ("a", "b"), "d": 7})"},
        {BinaryPlist({"\xD3\x01\x02\x01\x03\x04\x05", "\x51k", "\x10\x07", "\x08", "\x09", "\x51z"}),
         R"({"k": false, integer 7: true})"},
        {BinaryPlist({"\xD2\x01\x02\x03\x03", "\x51k", "\x61\0k"s, "\x09"}), R"({"k": true})"},
        {BinaryPlist({"\xAF\x14"s + std::string(15, '\0') + "\x01\x01", "\x09"}), "[true]"},
        {BinaryDictionary({"\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE",
                           "\x14"s + std::string(8, '\0') + std::string(8, '\xFF'), "\x10\xFF",
                           "\x22\xBF\x00\x00\x00"s, "\x23\x80" + std::string(7, '\0')}),
         R"({"a": -2, "b": 18446744073709551615, "c": 255, "d": -0.5, "e": -0})"},
        {BinaryDictionary({"\x33\xBF\xE0"s + std::string(6, '\0'), "\x33\xC2\x2D\x6B\x4A\xF0\x00\x00\x00"s,
                           "\x33\x7F\xF8" + std::string(6, '\0')}),
         R"({"a": 2000-12-31T23:59:59.5Z, "b": -001-01-01T00:00:00Z, "c": nan seconds from 2001})"},
    };
    for (const auto& [bytes, described] : rows) EXPECT_EQ(Read(bytes), described);

    std::string list = BinaryPlist({"\x09"});
    for (const char version : {'1', 'A'}) {
        list[7] = version;
        EXPECT_EQ(Read(list), "true");
    }
    const std::string wide = "bplist00\x09" + std::string(15, '\0') + '\x08' + std::string(6, '\0') +
                             "\x10\x01" + std::string(7, '\0') + '\x01' + std::string(15, '\0') + '\x09';
    EXPECT_EQ(Read(wide), "true") << "offsets of 16 bytes";
    for (const std::string& object : {"\x0F"s, "\x15"s + std::string(32, '\1'), "\x21\1\1"s, "\x32\1\1\1\1"s,
                                      "\x70"s, "\xAF\x15"s + std::string(32, '\0'), "\xD1\x00\x01"s}) {
        EXPECT_TRUE(IsRefused(BinaryPlist({object})));
    }
}

TEST(PropertyList, ReadsOldStyleListsAsTheMacDoes) {
    const std::pair<std::string, const char*> rows[] = {
        {" ", "{}"},
        {"UpdatesEnabled", "\"UpdatesEnabled\""},
        {"// c\n{ a = b; \"c d\" = ( 1, 'x y', ); e = <0A 0b>; a = z; /* c */ f; }",
         R"({"a": "z", "c d": ["1", "x y"], "e": <0a0b>, "f": "f"})"},
        {"a = b;\nc = { d = (); };", R"({"a": "b", "c": {"d": []}})"},
        {R"("\"\\\n\101\U00e9\200\a\x")", "\"\\\"\\\\\\nA\xC3\xA9\xC2\xA0\\x07x\""},
        {Wide("{ a = b; }", 2, true), R"({"a": "b"})"},
    };
    for (const auto& [text, described] : rows) EXPECT_EQ(Read(text), described) << text;
    for (const char* const text : {"{ a = b }", "{ a = ; }", "( a b )", "<0>", "<0g>", "\"a", "a b",
                                   "{ a = b; } c", "{", "(", "a = b; )", "\"\xFF\""}) {
        EXPECT_TRUE(IsRefused(text)) << text;
    }
}

TEST(PropertyList, ComparesNumbersExactly) {
    const TemporaryFolder folder;
    const auto value = [&folder](const std::string& xml) {
        return ReadPropertyList(folder.Write("list.plist", xml)).root;
    };
    EXPECT_NE(value("<real>0</real>"), value("<real>-0.0</real>"));
    EXPECT_EQ(value("<real>nan</real>"), value("<real>NaN</real>"));
    EXPECT_NE(value("<date>1904-01-01T00:00:00Z</date>"), value("<date>2100-01-01T00:00:00Z</date>"));
    EXPECT_NE(value("<integer>-1</integer>"), value("<integer>18446744073709551615</integer>"));
}

TEST(PropertyList, KeepsFractionsWithADecimalComma) {
    const TemporaryFolder folder;
    const std::string path = folder.Write("list.plist", "<plist><real>-0.25</real></plist>");
    const CommaLocale locale;
    if (!locale.IsSet()) GTEST_SKIP() << "no locale with a decimal comma is installed";
    EXPECT_EQ(ReadPropertyList(path).root.Describe(), "-0.25");
}
