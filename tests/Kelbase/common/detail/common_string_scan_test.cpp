#include <Kelbase/common/detail/common_string_scan.h>

#include <Kelbase/common/detail/common_string_scan_scalar.h>

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace text_scan {

namespace {

/// Returns a random text of up to 80 characters of the alphabet.
std::string textOf(const std::string& alphabet, std::mt19937& random) {
    std::string text(random() % 81, '\0');
    for (char& c : text) c = alphabet[random() % alphabet.size()];
    return text;
}

std::string wordsOf(const std::string& text, char* (*write)(std::string_view, char*)) {
    std::string out(text.size(), '?');
    out.resize(static_cast<std::size_t>(write(text, out.data()) - out.data()));
    return out;
}

} // namespace

// The texts have several blocks of sixteen bytes and a rest. Each text has its own buffer, so that the
// sanitizers detect a read past its end.
TEST(TextScan, AgreesWithTheScalarFunctions) {
    std::mt19937 random(4711);
    for (int round = 0; round < 20000; ++round) {
        const std::string text = textOf("aAbB@[`{", random);
        const std::string part =
            text.substr(random() % (text.size() + 1), 1 + random() % 4) + (random() % 2 ? "" : "a");
        if (!part.empty()) {
            EXPECT_EQ(Find(text, part), text.find(part)) << text << " " << part;
            EXPECT_EQ(FindFolded(text, part), scalar::Find<true>(text, part)) << text << " " << part;
        }
        std::string other = text;
        for (char& c : other) c = random() % 2 ? c : static_cast<char>(c ^ (random() % 30 ? 0 : 0x20));
        if (!other.empty()) other[random() % other.size()] ^= static_cast<char>(random() % 2 << 5);
        std::string ended = text;
        for (std::string* s : {&ended, &other})
            if (!s->empty() && random() % 4 == 0) (*s)[random() % s->size()] = '\0';
        EXPECT_EQ(EqualFolded(ended.data(), other.data(), ended.size()),
                  scalar::EqualFolded(ended.data(), other.data(), ended.size()));

        const std::string pattern = textOf(random() % 2 ? "%%01359:/x" : "%39abcdefghijklm", random);
        EXPECT_EQ(LowestPlaceholder(pattern), scalar::LowestPlaceholder(pattern)) << pattern;

        const std::string path = textOf(random() % 9 ? "abcdefghijklm/.." : "/.\\", random);
        EXPECT_EQ(HasDirtyPath(path), scalar::HasDirtyPath(path)) << path;
        EXPECT_EQ(LastSeparator(path), scalar::LastSeparator(path)) << path;
        std::string copied(path.size(), '?');
        copied.resize(CopyName(path, copied.data()));
        EXPECT_EQ(copied, path.substr(0, path.find_first_of("/\\"))) << path;

        const std::string untidy = textOf(random() % 2 ? " \t\r\x0E\x08\xA0xyz" : "uvwxyz ", random);
        const auto withScalar = [](std::string_view s, char* out) {
            return scalar::WriteWords(s, out, true);
        };
        EXPECT_EQ(wordsOf(untidy, WriteWords), wordsOf(untidy, withScalar)) << testing::PrintToString(untidy);
    }
}

} // namespace text_scan
