#include <macplatform/PropertyList.h>

#include "support/BinaryPlist.h"
#include "support/CommaLocale.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <vector>

using macplatform::ReadPropertyList;

namespace {

const char kOneOfEach[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0"><dict>
<key>text</key><string>caf&#233; &lt;1&gt;</string><key>integer</key><integer>-5</integer>
<key>real</key><real>0.5</real><key>yes</key><true/><key>data</key><data>CgsM</data>
<key>date</key><date>2011-02-03T04:05:06Z</date><key>array</key><array><string/><dict/><date>2040-02-29T23:59:58Z</date></array>
</dict></plist>)";

macplatform::PropertyListFile parse(const std::string& bytes) {
    const TemporaryFolder folder;
    return ReadPropertyList(folder.Write("list.plist", bytes));
}

/// Returns a binary property list of these objects, which are in hexadecimal. The first object is the root.
std::string binary(const std::string& hexadecimal) {
    std::vector<std::string> objects;
    std::istringstream words(hexadecimal);
    for (std::string word; words >> word;) {
        objects.emplace_back();
        for (std::size_t i = 0; i < word.size(); i += 2)
            objects.back() += static_cast<char>(std::stoi(word.substr(i, 2), nullptr, 16));
    }
    return BinaryPlist(objects);
}

/// Returns the bytes of a line of PropertyLists.txt, in which \xNN is a byte.
std::string unescaped(const std::string& line) {
    std::string bytes;
    for (std::size_t at = 0; at < line.size(); ++at) {
        const bool isByte = line.compare(at, 2, "\\x") == 0;
        bytes += isByte ? static_cast<char>(std::stoi(line.substr(at + 2, 2), nullptr, 16)) : line[at];
        if (isByte) at += 3;
    }
    return bytes;
}

} // namespace

TEST(PropertyList, ReadsBothFormatsAlike) {
    const TemporaryFolder folder;
    const std::string xml = folder.Write("list.plist", kOneOfEach);
    const std::string binary = (folder / "binary.plist").string();
    ASSERT_EQ(std::system(("plistutil -f bin -i '" + xml + "' -o '" + binary + "'").c_str()), 0);

    const auto fromXml = ReadPropertyList(xml), fromBinary = ReadPropertyList(binary);
    EXPECT_NE(fromXml.format, fromBinary.format);
    EXPECT_EQ(fromXml.root, fromBinary.root);
    EXPECT_EQ(
        fromXml.root.Describe(),
        "{\"text\": \"caf\xC3\xA9 <1>\", \"integer\": -5, \"real\": 0.5, \"yes\": true, \"data\": <0a0b0c>, "
        "\"date\": 2011-02-03T04:05:06Z, \"array\": [\"\", {}, 2040-02-29T23:59:58Z]}");
    EXPECT_EQ(fromXml.root.Find("integer")->integer, -5);
    EXPECT_EQ(fromXml.root.Find("yes")->integer, 1);
    EXPECT_EQ(fromXml.root.Find("date")->real, 318398706);
    EXPECT_EQ(fromXml.root.Find("none"), nullptr);
}

TEST(PropertyList, IsReadOnlyFromARegularFile) {
    const TemporaryFolder folder;
    EXPECT_EQ(ReadPropertyList((folder / "missing").string()).errorNumber, ENOENT);
    EXPECT_EQ(ReadPropertyList(folder.Path().string()).errorNumber, EISDIR);
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(ReadPropertyList((folder / "pipe").string()).errorNumber, EINVAL)
        << "the pipe is not opened, because opening it would wait for a writer";
}

TEST(PropertyList, RejectsInputThatWouldHarmTheParser) {
    const auto errorOf = [](const std::string& bytes) { return parse(bytes).error; };
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
    EXPECT_EQ(errorOf(std::string(512, '(') + std::string(512, ')')), "");
    EXPECT_EQ(errorOf(std::string(513, '(') + std::string(513, ')')).substr(21),
              "nested deeper than 512 levels");
    std::string values = "<array>";
    for (int i = 0; i < 1048576; ++i) values += "<true/>";
    EXPECT_EQ(errorOf(values + "</array>"), "more than 1048576 values");
    EXPECT_EQ(
        errorOf("<plist><array>" + std::string(std::size_t{7} << 20, '\n') + nested("<true/>").substr(7)),
        "line 7340033: the text ends too early");

    EXPECT_EQ(errorOf(std::string(100'000'000, '\0')), "larger than 64 MiB");
    EXPECT_EQ(errorOf("bplist00" + std::string(std::size_t{60} << 20, '\xFF')),
              "the binary property list is damaged");
    EXPECT_EQ(errorOf("<plist>" + std::string(std::size_t{60} << 20, '\xFF')),
              "line 1: text outside of a string");

    std::vector<std::string> doubling;
    for (char i = 1; i <= 30; ++i) doubling.push_back(std::string("\xA2") + i + i);
    doubling.push_back("\x09");
    EXPECT_EQ(errorOf(BinaryPlist(doubling)), "more than 1048576 values");

    for (const std::string open : {"(", "{a=", "<plist>", "<array><!-- </array> -->", "<dict><key/>"})
        EXPECT_NE(errorOf(nested(open).substr(7)).find("nested deeper than 512 levels"), open.npos) << open;

    std::string whole = BinaryPlist({"\xD1\x01\x02", "\121k", "\xA2\x03\x03", "\x10\x07"});
    std::string outside = whole; // the root is the object after the last, which begins at byte 8
    outside[outside.size() - 32] = 8;
    outside[outside.size() - 9] = 4;
    EXPECT_EQ(errorOf(outside), "the binary property list is damaged");
    for (std::size_t length = 8; length < whole.size(); ++length) {
        EXPECT_NE(errorOf(whole.substr(0, length)), "") << length;
    }
}

TEST(PropertyList, IsReadAsTheMacReadsIt) {
    std::ifstream file(PROPERTY_LISTS);
    for (std::string line; std::getline(file, line);) {
        const std::size_t arrow = line.find(" => ");
        if (arrow == std::string::npos) continue; // a comment
        const bool isBinary = line.compare(0, 7, "binary ") == 0;
        const auto plist =
            parse(isBinary ? binary(line.substr(7, arrow - 7)) : unescaped(line.substr(0, arrow)));
        const std::string seen = plist.error.empty() ? plist.root.Describe() : "error: " + plist.error;
        EXPECT_EQ(seen, line.substr(arrow + 4)) << line;
    }
    EXPECT_TRUE(file.eof());
}

TEST(PropertyList, ComparesNumbersExactly) {
    EXPECT_NE(parse("<real>0</real>").root, parse("<real>-0.0</real>").root);
    EXPECT_EQ(parse("<real>nan</real>").root, parse("<real>NaN</real>").root);
    EXPECT_NE(parse("<integer>-1</integer>").root, parse("<integer>18446744073709551615</integer>").root);
}

TEST(PropertyList, KeepsFractionsWithADecimalComma) {
    const TemporaryFolder folder;
    const std::string path = folder.Write("list.plist", "<plist><real>-0.25</real></plist>");
    const CommaLocale locale;
    if (!locale.IsSet()) GTEST_SKIP() << "no locale with a decimal comma is installed";
    EXPECT_EQ(ReadPropertyList(path).root.Describe(), "-0.25");
}
