#include <macplatform/PropertyList.h>

#include "support/BinaryPlist.h"
#include "support/CommaLocale.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <sys/stat.h>

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
    for (const std::string text :
         {"", "UpdatesEnabled", "bplist00", "{ old = style; }", "<plist><dict><key>a", "<"}) {
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
        "the XML is damaged in line 7340033");

    folder.Write("hostile.plist", "<plist>");
    std::filesystem::resize_file(folder / "hostile.plist", 100'000'000);
    EXPECT_EQ(ReadPropertyList((folder / "hostile.plist").string()).error, "larger than 64 MiB");
    EXPECT_EQ(errorOf("bplist00" + std::string(std::size_t{60} << 20, '\xFF')),
              "the binary property list is damaged");
    EXPECT_EQ(errorOf("<plist>" + std::string(std::size_t{60} << 20, '\xFF')),
              "the XML is damaged in line 1");

    EXPECT_EQ(errorOf(BinaryPlist({"\xA1\x01", "\xA1\x02", "\x09"})), "")
        << "the header and trailer of the other rows are valid";
    EXPECT_EQ(errorOf(BinaryPlist({std::string("\xA1\x01", 2), std::string("\xA1\x00", 2)})),
              "an object contains itself");
    EXPECT_EQ(errorOf(BinaryPlist({"\xA1\x09", "\x09"})), "the binary property list is damaged");
    for (const std::string& key :
         {std::string("\122a\0", 3), std::string("\x10\x07"), std::string("\x51\xE9")}) {
        EXPECT_EQ(errorOf(BinaryPlist({"\xD1\x01\x02", key, "\x09"})), "the binary property list is damaged");
    }
    std::vector<std::string> doubling;
    for (char i = 1; i <= 30; ++i) doubling.push_back(std::string("\xA2") + i + i);
    doubling.push_back("\x09");
    EXPECT_EQ(errorOf(BinaryPlist(doubling)), "more than 1048576 values");

    std::string whole = BinaryPlist({"\xD1\x01\x02", "\121k", "\xA2\x03\x03", "\x10\x07"});
    EXPECT_EQ(errorOf(whole), "");
    std::string outside = whole; // the root is the object after the last, which begins at byte 8
    outside[outside.size() - 32] = 8;
    outside[outside.size() - 9] = 4;
    EXPECT_EQ(errorOf(outside), "the binary property list is damaged");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_NE(errorOf(whole.substr(0, length)), "") << length;
    }
}

TEST(PropertyList, FollowsTheRulesOfXml) {
    const TemporaryFolder folder;
    const struct {
        const char* xml;
        const char* described; ///< The value, or the error.
    } rows[] = {
        {"\xEF\xBB\xBF<dict/>", "{}"},
        {"<plist><!-- <a> --><?note?><true></true></plist>\n<!---->", "true"},
        {"<string>a\r\nb\r<![CDATA[<&]]>&#x41;&apos;</string>", "\"a\\nb\\n<&A'\""},
        {"<array><integer> +0x1F </integer><integer>-9223372036854775808</integer></array>",
         "[31, -9223372036854775808]"},
        {"<array><real>-0.25</real><real>-0e1</real><data>\n AA EC\t</data></array>", "[-0.25, 0, <000102>]"},
        {"<array><date>1936-02-29T23:59:58Z</date><date>2001-01-01T00:00:00Z</date></array>",
         "[1936-02-29T23:59:58Z, 2001-01-01T00:00:00Z]"},
        {"<string>\xEF\xBB\xBF\xC3\xA9\xF0\x9F\x8E\xB5</string>", "\"\xEF\xBB\xBF\xC3\xA9\xF0\x9F\x8E\xB5\""},
        {"<data>AA==AAAA</data>", "the XML is damaged in line 1"},
        {"<string>a & b</string>", "the XML is damaged in line 1"},
        {"<plist>\n<string>&nbsp;</string></plist>", "the XML is damaged in line 2"},
        {"<!DOCTYPE plist [<!ENTITY a \"b\">]><string>&a;</string>", "the XML is damaged in line 1"},
        {"<true ></true >", "true"},
        {"<string>&#0;</string>", "the XML is damaged in line 1"},
        {"<string>&#xD7FF;</string>", "\"\xED\x9F\xBF\""},
        {"<string>&#xD800;</string>", "the XML is damaged in line 1"},
        {"<string>\xEF\xBF\xBE</string>", "the XML is damaged in line 1"},
        {"<string>\x01</string>", "the XML is damaged in line 1"},
        {"<string>\xC0\xAF</string>", "the XML is damaged in line 1"},
        {"<string>\xA9</string>", "the XML is damaged in line 1"},
        {"<array><true></array></true>", "the XML is damaged in line 1"},
        {"<true/><true/>", "the XML is damaged in line 1"},
        {"<array>text<true/></array>", "the XML is damaged in line 1"},
        {"<array a=\"/>\"></array>", "the XML is damaged in line 1"},
        {"<array><true/>", "the XML is damaged in line 1"},
        {"<plist version=\"><true/></plist>", "the XML is damaged in line 1"},
        {"<dict><key>a</key></dict>", "the XML is damaged in line 1"},
        {"<dict><true/><true/></dict>", "the XML is damaged in line 1"},
        {"<dict><key/><true/></dict>", "a dictionary has an empty key"},
        {"<dict><key>a</key><true/><key>&#97;</key><false/></dict>", "a dictionary has the same key twice"},
        {"<integer>18446744073709551616</integer>", "the XML is damaged in line 1"},
        {"<date>2011-02-30</date>", "the XML is damaged in line 1"},
        {"<data>AAE</data>", "the XML is damaged in line 1"},
        {"<?xml version=\"1.0\" encoding=\"UTF-16\"?><true/>", "the XML is not encoded in UTF-8"},
        {"<?xml version=\"1.0\" encoding=\"UTF\r8\"?><true/>",
         "the XML is not encoded in UTF-8"}, // '\r' | 0x20 is '-'
    };
    for (const auto& row : rows) {
        const auto plist = ReadPropertyList(folder.Write("list.plist", row.xml));
        EXPECT_EQ(plist.error.empty() ? plist.root.Describe() : plist.error, row.described) << row.xml;
    }
    EXPECT_EQ(ReadPropertyList(folder.Write("twice.plist", BinaryPlist({"\xD2\x01\x02\x03\x03", "\x51k",
                                                                        std::string("\x61\0k", 3), "\x09"})))
                  .error,
              "a dictionary has the same key twice");
}

TEST(PropertyList, KeepsFractionsWithADecimalComma) {
    const TemporaryFolder folder;
    const std::string path = folder.Write("list.plist", "<plist><real>-0.25</real></plist>");
    const CommaLocale locale;
    if (!locale.IsSet()) GTEST_SKIP() << "no locale with a decimal comma is installed";
    EXPECT_EQ(ReadPropertyList(path).root.Describe(), "-0.25");
}
