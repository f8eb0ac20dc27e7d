#include <macplatform/PropertyList.h>

#include "support/BinaryPlist.h"
#include "support/CommaLocale.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <vector>

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

std::vector<std::string> Split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
    return parts;
}

std::string FromHexadecimal(const std::string& digits) {
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
    return bytes;
}

/// Replaces \n, \r, \t, \\ and \xNN.
std::string Unescaped(const std::string& text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i] == '\\' ? text[++i] : '\0';
        result += c == '\0' ? text[i] : c == 'n' ? '\n' : c == 'r' ? '\r' : c == 't' ? '\t' : c;
        if (c != 'x') continue;
        result.back() = FromHexadecimal(text.substr(i + 1, 2))[0];
        i += 2;
    }
    return result;
}

/// Returns the bytes for an input of the table.
std::string BytesFrom(const std::string& kind, const std::string& input) {
    if (kind == "binary") {
        std::vector<std::string> objects = Split(input, ' ');
        std::transform(objects.begin(), objects.end(), objects.begin(), FromHexadecimal);
        return BinaryPlist(objects);
    }
    if (kind == "text") return Unescaped(input);
    const std::size_t width = kind.substr(0, 5) == "utf16" ? 2 : 4;
    std::string bytes = std::string(width - 2, '\0') + "\xFE\xFF"; // the byte order mark
    for (const char c : Unescaped(input)) bytes += std::string(width - 1, '\0') + c;
    for (std::size_t i = 0; i < bytes.size() && kind.substr(5) == "le"; i += width)
        std::reverse(&bytes[i], &bytes[i] + width);
    return bytes;
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

TEST(PropertyList, IsReadAsTheMacReadsIt) {
    std::ifstream table(PROPERTY_LISTS);
    unsigned rows = 0;
    for (std::string line; std::getline(table, line);) {
        if (line.empty() || line[0] == '#') continue;
        const std::vector<std::string> row = Split(line, '\t');
        ASSERT_EQ(row.size(), 3U) << line;
        const std::string seen = Read(BytesFrom(row[0], row[1]));
        EXPECT_EQ(row[2] == "refused" ? seen.substr(0, 6) : seen,
                  row[2] == "refused" ? "error:" : Unescaped(row[2]))
            << line;
        ++rows;
    }
    EXPECT_GT(rows, 110U);
}

TEST(PropertyList, ComparesNumbersExactly) {
    const TemporaryFolder folder;
    const auto value = [&folder](const std::string& xml) {
        return ReadPropertyList(folder.Write("list.plist", xml)).root;
    };
    EXPECT_NE(value("<real>0</real>"), value("<real>-0.0</real>"));
    EXPECT_EQ(value("<real>nan</real>"), value("<real>NaN</real>"));
    EXPECT_NE(value("<integer>-1</integer>"), value("<integer>18446744073709551615</integer>"));
}

TEST(PropertyList, KeepsFractionsWithADecimalComma) {
    const TemporaryFolder folder;
    const std::string path = folder.Write("list.plist", "<plist><real>-0.25</real></plist>");
    const CommaLocale locale;
    if (!locale.IsSet()) GTEST_SKIP() << "no locale with a decimal comma is installed";
    EXPECT_EQ(ReadPropertyList(path).root.Describe(), "-0.25");
}
