// Reads Linux executables. The reader must find the exports of a symbol table that is built from the input. A
// truncated copy of any bytes must give the same result as the whole, or have a problem.

#include "Property.h"

#include "bundle/ElfFile.h"

#include <algorithm>
#include <cstring>
#include <elf.h>
#include <vector>

namespace {

std::string summaryOf(const xcodhost::ElfFile& file) {
    std::string summary = file.architecture + '\n';
    for (const std::string& name : file.exports) summary += name + '\n';
    return summary;
}

template <typename T>
void appendBytes(std::string& bytes, const T& structure) {
    bytes.append(reinterpret_cast<const char*>(&structure), sizeof structure);
}

/// An ELF file with one table of dynamic symbols and their names, after a gap.
class SymbolFile {
public:
    explicit SymbolFile(FuzzedDataProvider& input) : gap(input.ConsumeIntegralInRange<std::size_t>(0, 9)) {
        while (input.remaining_bytes() > 0 && symbols.size() < 32) Add(input);
        std::sort(exports.begin(), exports.end());
    }

    std::string Bytes() const {
        Elf64_Ehdr header{};
        std::memcpy(header.e_ident, ELFMAG, SELFMAG);
        header.e_ident[EI_CLASS] = ELFCLASS64;
        header.e_ident[EI_DATA] = ELFDATA2LSB;
        header.e_machine = EM_X86_64;
        header.e_shnum = 3;
        header.e_shoff = sizeof header + gap;
        Elf64_Shdr none{}, table{}, texts{};
        table.sh_type = SHT_DYNSYM;
        table.sh_link = 2;
        table.sh_offset = header.e_shoff + 3 * sizeof none;
        table.sh_size = symbols.size() * sizeof(Elf64_Sym);
        texts.sh_offset = table.sh_offset + table.sh_size;
        texts.sh_size = names.size();
        std::string bytes;
        appendBytes(bytes, header);
        bytes.append(gap, 'x');
        for (const Elf64_Shdr& section : {none, table, texts}) appendBytes(bytes, section);
        for (const Elf64_Sym& symbol : symbols) appendBytes(bytes, symbol);
        return bytes + names;
    }

    std::vector<std::string> exports;

private:
    void Add(FuzzedDataProvider& input) {
        Elf64_Sym symbol{};
        symbol.st_info = input.ConsumeIntegral<unsigned char>();
        symbol.st_other = input.ConsumeIntegral<unsigned char>();
        symbol.st_shndx = input.ConsumeIntegralInRange<Elf64_Half>(0, 2);
        symbol.st_name = static_cast<Elf64_Word>(names.size());
        const std::string name(BeforeNul(input.ConsumeRandomLengthString(12)));
        names += name + '\0';
        symbols.push_back(symbol);
        const int binding = ELF64_ST_BIND(symbol.st_info), visibility = ELF64_ST_VISIBILITY(symbol.st_other);
        const bool isShared = binding == STB_GLOBAL || binding == STB_WEAK || binding == STB_GNU_UNIQUE;
        if (isShared && symbol.st_shndx != 0 && visibility != STV_HIDDEN && visibility != STV_INTERNAL)
            exports.push_back(name);
    }

    std::size_t gap;
    std::string names;
    std::vector<Elf64_Sym> symbols;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const std::size_t cut = input.ConsumeIntegral<std::uint16_t>();
    const std::string bytes(Bytes(data, size));
    const xcodhost::ElfFile whole = xcodhost::ReadElf(bytes), part = xcodhost::ReadElf(bytes.substr(0, cut));
    Require(std::is_sorted(whole.exports.begin(), whole.exports.end()), "the exports are sorted");
    for (const std::string& name : whole.exports)
        Require(bytes.find(name + '\0') != bytes.npos, "the file contains the names");
    if (part.problem.empty())
        RequireEqual(summaryOf(part), summaryOf(whole),
                     "a truncated file without a problem has the same exports");

    const SymbolFile made(input);
    const xcodhost::ElfFile seen = xcodhost::ReadElf(made.Bytes());
    RequireEqual(seen.problem, "", "a valid file has no problem");
    Require(seen.exports == made.exports, "the exports are those of the table");
    return 0;
}
