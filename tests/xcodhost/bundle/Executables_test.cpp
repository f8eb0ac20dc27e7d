// Tests of the readers of ELF and Mach-O files with valid and malformed files, and of the command `info`.

#include "bundle/ElfFile.h"
#include "bundle/MachOFile.h"
#include "support/CommandOutput.h"
#include "support/HostTool.h"
#include "support/TestBundle.h"

#include <elf.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <numeric>
#include <sstream>

using namespace xcodhost;
using testing::HasSubstr;

namespace {

const char* const kOwnArchitecture = sizeof(void*) == 8 ? "x86_64" : "i386";

TEST(ElfFile, ListsTheExportedSymbols) {
    const ElfFile file = ReadElf(ReadBytes(TEST_PLUGIN));
    EXPECT_EQ(file.problem, "");
    EXPECT_EQ(file.architecture, kOwnArchitecture);
    for (const char* name : {"Make", "MakeCrash", "MakeNothing", "MakeRefusing", "PreInstall"}) {
        EXPECT_THAT(file.exports, testing::Contains(name));
    }
    EXPECT_THAT(file.exports, testing::Not(testing::Contains("CFStringCreateWithCString"))) << "an import";
}

TEST(ElfFile, GivesAllExportsOrAProblemForATruncatedFile) {
    const std::string bytes = ReadBytes(TEST_PLUGIN);
    const std::vector<std::string> exports = ReadElf(bytes).exports;
    for (std::size_t size = 4; size < bytes.size(); size += size < 1024 ? 1 : 997) {
        // In an allocation of exactly this size a sanitizer detects every read behind the end.
        const std::string start = bytes.substr(0, size);
        const ElfFile file = ReadElf(start);
        EXPECT_EQ(file.exports, file.problem.empty() ? exports : std::vector<std::string>()) << size;
    }
}

TEST(ElfFile, GivesAllExportsOrAProblemForADamagedHeader) {
    const std::string bytes = ReadBytes(TEST_PLUGIN);
    const std::vector<std::string> exports = ReadElf(bytes).exports;
    for (std::size_t place = 4; place < 64; ++place) {
        std::string broken = bytes;
        broken[place] = '\xFF';
        const ElfFile file = ReadElf(broken);
        EXPECT_EQ(file.exports, file.problem.empty() ? exports : std::vector<std::string>()) << place;
    }
}

TEST(ElfFile, RejectsATableLargerThanTheFile) {
    Elf64_Ehdr header{};
    std::memcpy(header.e_ident, "\177ELF\2\1", 6);
    header.e_shoff = sizeof header;
    header.e_shnum = 1;
    Elf64_Shdr table{};
    table.sh_type = SHT_DYNSYM;
    table.sh_size = 1 << 20;
    std::string bytes(sizeof header + sizeof table, '\0');
    std::memcpy(bytes.data(), &header, sizeof header);
    std::memcpy(&bytes[sizeof header], &table, sizeof table);
    EXPECT_EQ(ReadElf(bytes).problem, "a table is outside the file");
}

std::string toBytes(std::initializer_list<int> values) { return {values.begin(), values.end()}; }

std::string word(std::uint32_t value, bool isBigEndian = false) {
    std::string bytes(4, '\0');
    for (unsigned int i = 0; i < 4; ++i) {
        bytes[isBigEndian ? 3 - i : i] = static_cast<char>(value >> (8 * i) & 0xFF);
    }
    return bytes;
}

std::uint32_t wordAt(const std::string& bytes, std::size_t place) {
    std::uint32_t value = 0;
    std::memcpy(&value, bytes.data() + place, sizeof value);
    return value;
}

/// Returns the offset of a load command in a 64-bit image. The image must have the command.
std::size_t commandAt(const std::string& image, std::uint32_t kind) {
    std::size_t place = 32;
    while (wordAt(image, place) != kind) place += wordAt(image, place + 4);
    return place;
}

/// Returns a universal file that contains one image, without its last `cut` bytes.
std::string universal(bool isBigEndian, bool isWide, const std::string& image, std::size_t cut = 0) {
    const std::string high = isWide ? word(0) : "";
    const std::uint32_t place = isWide ? 40 : 28;
    const auto number = [&](std::size_t value) {
        const std::string low = word(static_cast<std::uint32_t>(value), isBigEndian);
        return isBigEndian ? high + low : low + high;
    };
    std::string list = word(isWide ? 0xCAFEBABF : 0xCAFEBABE, isBigEndian) + word(1, isBigEndian) +
                       word(0x01000007, isBigEndian) + word(3, isBigEndian) + number(place) +
                       number(image.size());
    list.resize(place);
    return (list + image).substr(0, place + image.size() - cut);
}

/// Mach-O files that clang and lld have made.
class MachOFiles : public testing::Test {
protected:
    void SetUp() override {
        folder.Write("f.c", "int counter = 3;\n"
                            "static int Local(void) { return counter; }\n"
                            "__attribute__((visibility(\"hidden\"))) int Hidden(void) { return Local(); }\n"
                            "int Make(void) { return Hidden(); }\n"
                            "int MakeNothing(void) { return 0; }\n");
        Tool("clang-14 -target i386-apple-macosx10.6 -c f.c -o thin.o");
        Tool("clang-14 -target x86_64-apple-macosx10.9 -c f.c -o wide.o");
        Tool("ld64.lld-14 -arch x86_64 -platform_version macos 10.9 10.9 -dylib wide.o -o library");
        Tool("llvm-lipo-14 -create thin.o library -output universal");
    }
    void Tool(const std::string& command) const {
        const std::string line = "cd '" + folder.Path().string() + "' && " + command;
        ASSERT_EQ(std::system(line.c_str()), 0) << command;
    }
    /// Returns the exported names that llvm-nm lists, sorted.
    std::vector<std::string> NamesFromNm(const std::string& file) const {
        std::vector<std::string> names;
        std::istringstream lines(Printed("llvm-nm-14 --extern-only --defined-only --just-symbol-name '" +
                                         (folder / file).string() + "'"));
        for (std::string line; std::getline(lines, line);) names.push_back(line.substr(1));
        std::sort(names.begin(), names.end());
        return names;
    }
    /// Returns whether the name differs from an exported name in at most one byte.
    bool IsAlmostAnExport(const std::string& name) const {
        return std::any_of(exports.begin(), exports.end(), [&name](const std::string& known) {
            if (known.size() != name.size()) return false;
            const auto differs = [](char a, char b) { return a != b; };
            return std::inner_product(name.begin(), name.end(), known.begin(), 0, std::plus<>(), differs) <=
                   1;
        });
    }
    MachOFile Read(const std::string& file) const { return ReadMachO(ReadBytes(folder / file)); }

    const TemporaryFolder folder;
    const std::vector<std::string> exports{"Make", "MakeNothing", "counter"};
};

TEST_F(MachOFiles, HaveTheExportsThatNmLists) {
    EXPECT_EQ(NamesFromNm("library"), exports);
    for (const char* file : {"thin.o", "library"}) {
        const MachOFile read = Read(file);
        ASSERT_EQ(read.images.size(), 1u);
        EXPECT_EQ(read.images[0].exports, exports) << file << ": " << read.images[0].problem;
    }
    const MachOFile both = Read("universal");
    ASSERT_EQ(both.images.size(), 2u) << both.problem;
    EXPECT_EQ(both.images[0].architecture, "i386");
    EXPECT_EQ(both.images[0].exports, exports);
    EXPECT_EQ(both.images[1].architecture, "x86_64");
    EXPECT_EQ(both.images[1].exports, exports);
}

TEST_F(MachOFiles, AreReadFromTheExportTrieOnly) {
    std::string library = ReadBytes(folder / "library");
    library.replace(commandAt(library, 2) + 12, 4, word(0)); // no symbols
    EXPECT_EQ(ReadMachO(library).images[0].exports, exports);
    const std::size_t old = commandAt(library, 0x80000022);
    const std::string trie = library.substr(old + 40, 8);
    library.replace(old + 40, 8, word(0) + word(0));
    EXPECT_THAT(ReadMachO(library).images[0].exports, testing::IsEmpty());
    const std::size_t other = commandAt(library, 0x26);
    library.replace(other, 16, word(0x80000033) + word(16) + trie);
    EXPECT_EQ(ReadMachO(library).images[0].exports, exports);
}

TEST_F(MachOFiles, AreReadInEveryKindOfUniversalFile) {
    const std::string image = ReadBytes(folder / "library");
    for (const bool isBigEndian : {false, true}) {
        for (const bool isWide : {false, true}) {
            const MachOFile file = ReadMachO(universal(isBigEndian, isWide, image));
            ASSERT_EQ(file.images.size(), 1u);
            EXPECT_EQ(file.images[0].exports, exports) << file.images[0].problem;
            EXPECT_EQ(ReadMachO(universal(isBigEndian, isWide, image, 1)).images[0].problem,
                      "the image is outside the file");
        }
    }
    EXPECT_EQ(ReadMachO(universal(true, false, ReadBytes(folder / "thin.o"))).images[0].problem,
              "the list of images names another architecture: x86_64");
}

TEST_F(MachOFiles, GiveNoWrongExportsWhenTruncatedOrDamaged) {
    const std::string bytes = ReadBytes(folder / "library");
    for (std::size_t size = 8; size < bytes.size(); size += size < 2048 ? 1 : 7) {
        const std::string start = bytes.substr(0, size);
        const MachOFile file = ReadMachO(start);
        EXPECT_TRUE(file.images[0].problem != "" || file.images[0].exports == exports) << size;
    }
    for (std::size_t place = 8; place < bytes.size(); place += place < 2048 ? 1 : 7) {
        std::string broken = bytes;
        broken[place] = '\xFF';
        const MachOFile file = ReadMachO(broken);
        if (!file.problem.empty() || !file.images[0].problem.empty()) continue;
        for (const std::string& name : file.images[0].exports)
            EXPECT_TRUE(IsAlmostAnExport(name)) << name << " with a damaged byte " << place;
    }
}

TEST(MachOFile, ReportsTheFault) {
    const std::string header =
        word(0xFEEDFACE) + word(7) + std::string(8, '\0') + word(1) + std::string(8, '\0');
    const auto problem = [](const std::string& bytes) { return ReadMachO(bytes).images[0].problem; };
    const std::string tables = header + word(0x22) + word(48) + std::string(32, '\0') + word(76);
    EXPECT_EQ(problem(tables + word(5) + toBytes({0, 1, 'a', 0, 0})), "the export trie is not a tree");
    const std::string name(40, 'a'), trie = toBytes({0, 1}) + name + toBytes({0, 44, 2, 0, 0, 0});
    EXPECT_THAT(ReadMachO(tables + word(48) + trie).images[0].exports, testing::ElementsAre(name));
    EXPECT_EQ(problem(header + word(2) + word(0)), "a load command has no size");
    EXPECT_EQ(problem(header), "a table is outside the file");
    EXPECT_EQ(ReadMachO(toBytes({0xFE, 0xED, 0xFA, 0xCE, 0, 0, 0, 18})).images[0].architecture, "ppc");
    EXPECT_EQ(ReadMachO(toBytes({0xCA, 0xFE, 0xBA, 0xBE, 0, 0, 0, 2})).problem,
              "the list of images is cut off");
    EXPECT_FALSE(IsMachO(toBytes({0xCA, 0xFE, 0xBA, 0xBE, 0, 0, 0, 52}))) << "a Java class";
    EXPECT_FALSE(IsMachO("\xCE\xFA\xED"));
}

TEST_F(MachOFiles, ArePrintedByArchitecture) {
    const TestBundle bundle(InfoPlist("Make"), ReadBytes(folder / "universal"));
    const HostTool info = RunHost({"info", bundle.Path()});
    EXPECT_THAT(info.out, HasSubstr("Linux/Test: Mach-O i386, x86_64\n"
                                    "  exports of i386  Make, MakeNothing, counter\n"
                                    "  exports of x86_64  Make, MakeNothing, counter\n"));
}

TEST(Info, UsesTheNameOfTheBundleIfTheListNamesNoExecutable) {
    const std::string named = "<key>CFBundleExecutable</key><string>Test</string>";
    std::string list = InfoPlist("Make");
    list.erase(list.find(named), named.size());
    const TestBundle bundle(list);
    const HostTool info = RunHost({"info", bundle.Path() + '/'});
    EXPECT_THAT(info.out, HasSubstr("/Contents/Linux/Test: ELF ")) << info.err;
}

} // namespace
