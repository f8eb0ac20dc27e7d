#include "ElfFile.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <elf.h>
#include <optional>

namespace xcodhost {

namespace {

struct Elf32 {
    using Header = Elf32_Ehdr;
    using Section = Elf32_Shdr;
    using Symbol = Elf32_Sym;
};
struct Elf64 {
    using Header = Elf64_Ehdr;
    using Section = Elf64_Shdr;
    using Symbol = Elf64_Sym;
};

/// Thrown if the file is malformed.
struct Broken {
    const char* reason;
};

/// Returns the structure at an offset, which need not be aligned. Throws Broken if the structure is not
/// inside the file.
template <typename T>
T at(std::string_view bytes, std::uint64_t offset) {
    if (offset > bytes.size() || bytes.size() - offset < sizeof(T))
        throw Broken{"a table is outside the file"};
    T value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
}

std::string architectureOf(unsigned int machine, bool is64Bit) {
    switch (machine) {
    case EM_386: return "i386";
    case EM_X86_64: return is64Bit ? "x86_64" : "x32";
    case EM_AARCH64: return "arm64";
    case EM_ARM: return "arm";
    case EM_PPC: return "ppc";
    case EM_PPC64: return "ppc64";
    case EM_RISCV: return is64Bit ? "riscv64" : "riscv32";
    default: return "machine " + std::to_string(machine) + (is64Bit ? " (64-bit)" : " (32-bit)");
    }
}

template <typename Symbol>
bool isExport(const Symbol& symbol) {
    const int binding = symbol.st_info >> 4;
    const int visibility = symbol.st_other & 3;
    return symbol.st_shndx != SHN_UNDEF &&
           (binding == STB_GLOBAL || binding == STB_WEAK || binding == STB_GNU_UNIQUE) &&
           (visibility == STV_DEFAULT || visibility == STV_PROTECTED);
}

template <typename Elf>
class Reader {
public:
    explicit Reader(std::string_view fileBytes)
        : bytes(fileBytes), header(at<typename Elf::Header>(fileBytes, 0)) {}

    std::string Machine() const { return architectureOf(header.e_machine, std::is_same_v<Elf, Elf64>); }

    std::vector<std::string> Exports() const {
        const auto table = DynamicSymbols();
        if (!table) throw Broken{"the file has no table of dynamic symbols"};
        const auto texts = SectionAt(table->sh_link);
        if (table->sh_offset > bytes.size() || table->sh_size > bytes.size() - table->sh_offset) {
            throw Broken{"a table is outside the file"};
        }
        const std::uint64_t count = table->sh_size / sizeof(Symbol);
        std::vector<std::string> names;
        for (std::uint64_t i = 0; i < count; ++i) {
            const auto symbol = at<Symbol>(bytes, table->sh_offset + i * sizeof(Symbol));
            if (isExport(symbol)) names.push_back(TextAt(texts, symbol.st_name));
        }
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    using Section = typename Elf::Section;
    using Symbol = typename Elf::Symbol;

    Section SectionAt(std::uint32_t index) const {
        if (index >= header.e_shnum) throw Broken{"a section is missing"};
        return at<Section>(bytes, header.e_shoff + std::uint64_t{index} * sizeof(Section));
    }

    std::optional<Section> DynamicSymbols() const {
        for (std::uint32_t i = 0; i < header.e_shnum; ++i) {
            const Section section = SectionAt(i);
            if (section.sh_type == SHT_DYNSYM) return section;
        }
        return std::nullopt;
    }

    std::string TextAt(const Section& texts, std::uint64_t place) const {
        if (texts.sh_offset > bytes.size() || place >= texts.sh_size ||
            place >= bytes.size() - texts.sh_offset) {
            throw Broken{"the name of a symbol is outside the file"};
        }
        const std::string_view rest = bytes.substr(static_cast<std::size_t>(texts.sh_offset + place));
        const std::size_t end = rest.find('\0');
        if (end == std::string_view::npos) throw Broken{"the name of a symbol has no end"};
        return std::string(rest.substr(0, end));
    }

    std::string_view bytes;
    typename Elf::Header header;
};

template <typename Elf>
ElfFile readAs(std::string_view bytes) {
    ElfFile file;
    try {
        const Reader<Elf> reader(bytes);
        file.architecture = reader.Machine();
        file.exports = reader.Exports();
    } catch (const Broken& broken) {
        file.problem = broken.reason;
    }
    return file;
}

} // namespace

bool IsElf(std::string_view bytes) { return bytes.substr(0, SELFMAG) == std::string_view(ELFMAG, SELFMAG); }

ElfFile ReadElf(std::string_view bytes) {
    const auto byte = [&](std::size_t i) { return i < bytes.size() ? bytes[i] : '\0'; };
    if (byte(EI_DATA) != ELFDATA2LSB) return {{}, {}, "the file is big-endian, for another processor"};
    if (byte(EI_CLASS) == ELFCLASS32) return readAs<Elf32>(bytes);
    if (byte(EI_CLASS) == ELFCLASS64) return readAs<Elf64>(bytes);
    return {{}, {}, "the file is neither 32-bit nor 64-bit"};
}

} // namespace xcodhost
