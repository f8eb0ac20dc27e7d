#include "MachOExports.h"

#include <algorithm>
#include <cstddef>
#include <mach-o/loader.h>
#include <mach-o/nlist.h>
#include <unordered_set>
#include <utility>

namespace xcodhost {

namespace {

/// Limit of all names together. In a malicious file many names can share the same bytes, so that the size of
/// the file does not limit the names.
constexpr std::size_t kMostNameBytes = std::size_t{128} << 20;

/// Collects the exported names and counts their bytes.
class Names {
public:
    void Add(std::string_view name) {
        if (!name.empty() && name.front() == '_') name.remove_prefix(1);
        Spend(name.size());
        names.emplace_back(name);
    }
    /// Counts a string of this length. Throws BrokenMachO when the limit is exceeded.
    void Spend(std::size_t length) {
        size += length + sizeof(std::string);
        if (size > kMostNameBytes) throw BrokenMachO{"the exported names are too long"};
    }
    std::vector<std::string> Sorted() && {
        std::sort(names.begin(), names.end());
        names.erase(std::unique(names.begin(), names.end()), names.end());
        return std::move(names);
    }

private:
    std::vector<std::string> names;
    std::size_t size = 0;
};

void addSymbols(Names& names, const MachOBytes& image, const symtab_command& table, bool is64Bit) {
    const std::uint64_t entrySize = is64Bit ? sizeof(nlist_64) : sizeof(nlist);
    const MachOBytes symbols = image.Inner(table.symoff, table.nsyms * entrySize);
    const MachOBytes texts = image.Inner(table.stroff, table.strsize);
    for (std::uint64_t entry = 0; entry < symbols.Size(); entry += entrySize) {
        const unsigned int type = symbols.Byte(entry + offsetof(nlist, n_type));
        const bool isExport =
            (type & (N_STAB | N_PEXT)) == 0 && (type & N_EXT) != 0 && (type & N_TYPE) != N_UNDF;
        if (isExport) names.Add(texts.Text(symbols.U32(entry + offsetof(nlist, n_strx))));
    }
}

/// Adds the names in an export trie. A node consists of the size of its export data, the data, the number of
/// branches, and for each branch its text and the offset of its node.
void addTrie(Names& names, const MachOBytes& trie) {
    if (trie.Size() == 0) return;
    std::vector<std::pair<std::uint64_t, std::string>> nodes{{0, {}}};
    std::unordered_set<std::uint64_t> seen{0};
    while (!nodes.empty()) {
        auto [place, name] = std::move(nodes.back());
        nodes.pop_back();
        const std::uint64_t exportSize = trie.Compressed(place);
        if (exportSize != 0) names.Add(name);
        trie.Part(place, exportSize);
        place += exportSize;
        for (unsigned int left = trie.Byte(place++); left > 0; --left) {
            const std::string_view text = trie.Text(place);
            place += text.size() + 1;
            const std::uint64_t node = trie.Compressed(place);
            if (!seen.insert(node).second) throw BrokenMachO{"the export trie is not a tree"};
            names.Spend(name.size() + text.size());
            nodes.emplace_back(node, name + std::string(text));
        }
    }
}

} // namespace

std::vector<std::string> MachOExports(const MachOBytes& image, bool is64Bit) {
    Names names;
    std::uint64_t place = is64Bit ? sizeof(mach_header_64) : sizeof(mach_header);
    for (std::uint32_t left = image.Words<mach_header>(0).ncmds; left > 0; --left) {
        const auto command = image.Words<load_command>(place);
        if (command.cmdsize < sizeof command) throw BrokenMachO{"a load command has no size"};
        image.Part(place, command.cmdsize);
        if (command.cmd == LC_SYMTAB) {
            addSymbols(names, image, image.Words<symtab_command>(place), is64Bit);
        } else if (command.cmd == LC_DYLD_INFO || command.cmd == LC_DYLD_INFO_ONLY) {
            const auto tables = image.Words<dyld_info_command>(place);
            addTrie(names, image.Inner(tables.export_off, tables.export_size));
        } else if (command.cmd == LC_DYLD_EXPORTS_TRIE) {
            const auto table = image.Words<linkedit_data_command>(place);
            addTrie(names, image.Inner(table.dataoff, table.datasize));
        }
        place += command.cmdsize;
    }
    return std::move(names).Sorted();
}

} // namespace xcodhost
