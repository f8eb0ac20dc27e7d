#include "Fixups.h"

#include <mach-o/loader.h>
#include <map>

namespace macplatform {

namespace {

constexpr std::uint32_t kPointerSize = 4;

/// The action of each operation of a table, by the upper four bits of the operation.
using Actions = std::map<std::uint8_t, std::function<void()>>;

/// Reads a table of fix-ups. Its operations set the next pointer and change pointers. The masks of rebases
/// and of binds are the same.
class FixUpTable {
public:
    FixUpTable(const char* tableName, std::string_view tableBytes, const ImageFile& imageFile)
        : name(tableName), bytes(tableBytes), file(imageFile) {}

    void Run(const Actions& actions) {
        while (place < bytes.Size()) {
            operation = bytes.U8(place++);
            const auto action = actions.find(operation & BIND_OPCODE_MASK);
            Require(action != actions.end());
            action->second();
        }
    }
    void End() { place = bytes.Size(); }
    void Require(bool isSupported) const {
        if (!isSupported)
            throw UnsupportedMachO(std::string("unsupported operation in the table of ") + name + ": " +
                                   std::to_string(operation));
    }

    std::uint32_t SmallOperand() const { return operation & BIND_IMMEDIATE_MASK; }
    std::uint32_t Operand() { return bytes.Uleb(place); }
    std::uint32_t SignedOperand() { return static_cast<std::uint32_t>(bytes.Sleb(place)); }
    std::string_view TextOperand() { return bytes.Text(place); }

    void SetAddress(std::uint32_t segment, std::uint32_t offset) {
        if (segment >= file.segments.size()) throw UnsupportedMachO("a fix-up refers to a missing segment");
        address = file.segments[segment].memory.start + offset;
    }
    void Skip(std::uint32_t count) {
        if (address) *address += count;
    }
    /// Calls `fixUp` with the addresses of `count` pointers. Skips `gap` bytes after each pointer.
    template <typename FixUp>
    void Visit(std::uint32_t count, std::uint32_t gap, const FixUp& fixUp) {
        for (; count > 0; --count) {
            if (!address) throw UnsupportedMachO("a fix-up has no address");
            fixUp(*address);
            *address += kPointerSize + gap;
        }
    }

private:
    const char* const name;
    const ByteView bytes;
    const ImageFile& file;
    std::uint32_t place = 0;
    std::uint8_t operation = 0;
    std::optional<std::uint32_t> address; ///< Of the next pointer.
};

/// Finds the branch of a node of the export trie whose text is a prefix of `left`, and removes this prefix
/// from `left`. `branches` is the offset of the branches of the node. Returns the offset of the node at the
/// end of the branch. Returns no value if no branch matches.
std::optional<std::uint32_t> nextNode(const ByteView& trie, std::uint32_t branches, std::string_view& left) {
    std::uint32_t place = branches;
    for (unsigned count = trie.U8(place++); count > 0; --count) {
        const std::string_view text = trie.Text(place);
        const std::uint32_t node = trie.Uleb(place);
        if (text.empty() || left.substr(0, text.size()) != text) continue;
        left.remove_prefix(text.size());
        return node;
    }
    return std::nullopt;
}

} // namespace

void Rebase(const ImageFile& file, ImageMemory& memory) {
    FixUpTable table("rebases", file.rebases, file);
    const auto rebase = [&](std::uint32_t count, std::uint32_t gap) {
        table.Visit(count, gap, [&](std::uint32_t address) {
            memory.SetWord(address, memory.Word(address) + memory.Slide());
        });
    };
    const auto rebaseWithGaps = [&](std::uint32_t count) { rebase(count, table.Operand()); };
    table.Run({
        {REBASE_OPCODE_DONE, [&] { table.End(); }},
        {REBASE_OPCODE_SET_TYPE_IMM, [&] { table.Require(table.SmallOperand() == REBASE_TYPE_POINTER); }},
        {REBASE_OPCODE_SET_SEGMENT_AND_OFFSET_ULEB,
         [&] { table.SetAddress(table.SmallOperand(), table.Operand()); }},
        {REBASE_OPCODE_ADD_ADDR_ULEB, [&] { table.Skip(table.Operand()); }},
        {REBASE_OPCODE_ADD_ADDR_IMM_SCALED, [&] { table.Skip(table.SmallOperand() * kPointerSize); }},
        {REBASE_OPCODE_DO_REBASE_IMM_TIMES, [&] { rebase(table.SmallOperand(), 0); }},
        {REBASE_OPCODE_DO_REBASE_ULEB_TIMES, [&] { rebase(table.Operand(), 0); }},
        {REBASE_OPCODE_DO_REBASE_ADD_ADDR_ULEB, [&] { rebase(1, table.Operand()); }},
        {REBASE_OPCODE_DO_REBASE_ULEB_TIMES_SKIPPING_ULEB, [&] { rebaseWithGaps(table.Operand()); }},
    });
}

void Bind(const ImageFile& file, std::string_view bytes, ImageMemory& memory,
          const std::function<std::uint32_t(const std::string& name)>& find) {
    FixUpTable table("binds", bytes, file);
    std::uint32_t library = 0;
    std::string name;
    std::uint32_t addend = 0;
    const auto bind = [&](std::uint32_t count, std::uint32_t gap) {
        if (library == 0 || library > file.libraries)
            throw UnsupportedMachO("the import " + name + " names no library of the file");
        const std::uint32_t value = find(name) + addend;
        table.Visit(count, gap, [&](std::uint32_t address) { memory.SetWord(address, value); });
    };
    const auto bindWithGaps = [&](std::uint32_t count) { bind(count, table.Operand()); };
    table.Run({
        {BIND_OPCODE_DONE, [] {}}, // ends one lazy bind, or fills the end of the table
        {BIND_OPCODE_SET_DYLIB_ORDINAL_IMM, [&] { library = table.SmallOperand(); }},
        {BIND_OPCODE_SET_DYLIB_ORDINAL_ULEB, [&] { library = table.Operand(); }},
        {BIND_OPCODE_SET_SYMBOL_TRAILING_FLAGS_IMM, [&] { name = table.TextOperand(); }},
        {BIND_OPCODE_SET_TYPE_IMM, [&] { table.Require(table.SmallOperand() == BIND_TYPE_POINTER); }},
        {BIND_OPCODE_SET_ADDEND_SLEB, [&] { addend = table.SignedOperand(); }},
        {BIND_OPCODE_SET_SEGMENT_AND_OFFSET_ULEB,
         [&] { table.SetAddress(table.SmallOperand(), table.Operand()); }},
        {BIND_OPCODE_ADD_ADDR_ULEB, [&] { table.Skip(table.Operand()); }},
        {BIND_OPCODE_DO_BIND, [&] { bind(1, 0); }},
        {BIND_OPCODE_DO_BIND_ADD_ADDR_ULEB, [&] { bind(1, table.Operand()); }},
        {BIND_OPCODE_DO_BIND_ADD_ADDR_IMM_SCALED, [&] { bind(1, table.SmallOperand() * kPointerSize); }},
        {BIND_OPCODE_DO_BIND_ULEB_TIMES_SKIPPING_ULEB, [&] { bindWithGaps(table.Operand()); }},
    });
}

std::optional<std::uint32_t> FindExport(const ImageFile& file, const std::string& name) {
    const ByteView trie(file.exports);
    if (trie.Size() == 0) return std::nullopt;
    std::string_view left = name;
    std::optional<std::uint32_t> node = 0;
    while (node) {
        std::uint32_t place = *node;
        const std::uint32_t size = trie.Uleb(place);
        if (!left.empty()) {
            node = nextNode(trie, place + size, left);
        } else if (size == 0) {
            break;
        } else if (trie.Uleb(place) != EXPORT_SYMBOL_FLAGS_KIND_REGULAR) {
            throw UnsupportedMachO("unsupported kind of the export " + name);
        } else {
            return file.memory.start + trie.Uleb(place);
        }
    }
    return std::nullopt;
}

} // namespace macplatform
