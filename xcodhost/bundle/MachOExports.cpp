#include "MachOExports.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace xcodhost {

namespace {

// The numbers of the load commands, and the bits of a symbol's type, in the Mach-O format.
constexpr std::uint32_t kSymbolTable = 2;
constexpr std::uint32_t kDyldInfo = 0x22;
constexpr std::uint32_t kDyldInfoOnly = 0x80000022;
constexpr std::uint32_t kExportsTrie = 0x80000033;
constexpr unsigned int kDebugging = 0xE0;
constexpr unsigned int kPrivateExternal = 0x10;
constexpr unsigned int kDefinedIn = 0x0E;
constexpr unsigned int kExternal = 0x01;

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

void addSymbols(Names& names, const MachOBytes& image, std::uint64_t command, bool is64Bit) {
    const std::uint64_t entrySize = is64Bit ? 16 : 12;
    const std::uint64_t count = image.U32(command + 12);
    const MachOBytes symbols = image.Inner(image.U32(command + 8), count * entrySize);
    const MachOBytes texts = image.Inner(image.U32(command + 16), image.U32(command + 20));
    for (std::uint64_t i = 0; i < count; ++i) {
        const unsigned int type = symbols.Byte(i * entrySize + 4);
        const bool isExport = (type & (kDebugging | kPrivateExternal)) == 0 && (type & kExternal) != 0 &&
                              (type & kDefinedIn) != 0;
        if (isExport) names.Add(texts.Text(symbols.U32(i * entrySize)));
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
    std::uint64_t place = is64Bit ? 32 : 28;
    for (std::uint32_t left = image.U32(16); left > 0; --left) {
        const std::uint32_t kind = image.U32(place);
        const std::uint32_t size = image.U32(place + 4);
        if (size < 8) throw BrokenMachO{"a load command has no size"};
        image.Part(place, size);
        if (kind == kSymbolTable) addSymbols(names, image, place, is64Bit);
        if (kind == kDyldInfo || kind == kDyldInfoOnly) {
            addTrie(names, image.Inner(image.U32(place + 40), image.U32(place + 44)));
        }
        if (kind == kExportsTrie) addTrie(names, image.Inner(image.U32(place + 8), image.U32(place + 12)));
        place += size;
    }
    return std::move(names).Sorted();
}

} // namespace xcodhost
