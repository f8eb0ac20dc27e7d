#include "Fixups.h"

#include <mach-o/loader.h>

namespace macplatform {

namespace {

constexpr std::uint32_t kPointerSize = 4;

/// Reads the pointers that a table of fix-ups lists. The operations of the table set the next pointer.
class Cursor {
public:
    explicit Cursor(const ImageFile& imageFile) : file(imageFile) {}

    void SetSegment(std::uint8_t number, std::uint32_t offset) {
        if (number >= file.segments.size()) throw UnsupportedMachO("a fix-up refers to a missing segment");
        address = file.segments[number].memory.start + offset;
        isSet = true;
    }
    void Skip(std::uint32_t bytes) { address += bytes; }
    /// Calls `fixUp` with the addresses of `count` pointers. Skips `gap` bytes after each pointer.
    template <typename FixUp>
    void Visit(std::uint32_t count, std::uint32_t gap, const FixUp& fixUp) {
        for (; count > 0; --count) {
            if (!isSet) throw UnsupportedMachO("a fix-up has no address");
            fixUp(address);
            address += kPointerSize + gap;
        }
    }

private:
    const ImageFile& file;
    std::uint32_t address = 0;
    bool isSet = false;
};

[[noreturn]] void refuseOperation(const char* table, std::uint8_t operation) {
    throw UnsupportedMachO("unsupported operation in the table of " + std::string(table) + ": " +
                           std::to_string(operation));
}

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
    const ByteView table(file.rebases);
    Cursor cursor(file);
    const auto rebase = [&](std::uint32_t count, std::uint32_t gap) {
        cursor.Visit(count, gap, [&](std::uint32_t address) {
            memory.SetWord(address, memory.Word(address) + memory.Slide());
        });
    };
    for (std::uint32_t place = 0; place < table.Size();) {
        const std::uint8_t operation = table.U8(place++);
        const std::uint8_t operand = operation & REBASE_IMMEDIATE_MASK;
        switch (operation & REBASE_OPCODE_MASK) {
        case REBASE_OPCODE_DONE:
            return;
        case REBASE_OPCODE_SET_TYPE_IMM:
            if (operand != REBASE_TYPE_POINTER) refuseOperation("rebases", operation);
            break;
        case REBASE_OPCODE_SET_SEGMENT_AND_OFFSET_ULEB:
            cursor.SetSegment(operand, table.Uleb(place));
            break;
        case REBASE_OPCODE_ADD_ADDR_ULEB:
            cursor.Skip(table.Uleb(place));
            break;
        case REBASE_OPCODE_ADD_ADDR_IMM_SCALED:
            cursor.Skip(operand * kPointerSize);
            break;
        case REBASE_OPCODE_DO_REBASE_IMM_TIMES:
            rebase(operand, 0);
            break;
        case REBASE_OPCODE_DO_REBASE_ULEB_TIMES:
            rebase(table.Uleb(place), 0);
            break;
        case REBASE_OPCODE_DO_REBASE_ADD_ADDR_ULEB:
            rebase(1, table.Uleb(place));
            break;
        case REBASE_OPCODE_DO_REBASE_ULEB_TIMES_SKIPPING_ULEB: {
            const std::uint32_t count = table.Uleb(place);
            rebase(count, table.Uleb(place));
            break;
        }
        default:
            refuseOperation("rebases", operation);
        }
    }
}

void Bind(const ImageFile& file, std::string_view bytes, ImageMemory& memory,
          const std::function<std::uint32_t(const std::string& name)>& find) {
    const ByteView table(bytes);
    Cursor cursor(file);
    std::uint32_t library = 0;
    std::string name;
    std::uint32_t addend = 0;
    const auto bind = [&](std::uint32_t count, std::uint32_t gap) {
        if (library == 0 || library > file.libraries)
            throw UnsupportedMachO("the import " + name + " names no library of the file");
        const std::uint32_t value = find(name) + addend;
        cursor.Visit(count, gap, [&](std::uint32_t address) { memory.SetWord(address, value); });
    };
    for (std::uint32_t place = 0; place < table.Size();) {
        const std::uint8_t operation = table.U8(place++);
        const std::uint8_t operand = operation & BIND_IMMEDIATE_MASK;
        switch (operation & BIND_OPCODE_MASK) {
        case BIND_OPCODE_DONE: // ends one lazy bind, or fills the end of the table
            break;
        case BIND_OPCODE_SET_DYLIB_ORDINAL_IMM:
            library = operand;
            break;
        case BIND_OPCODE_SET_DYLIB_ORDINAL_ULEB:
            library = table.Uleb(place);
            break;
        case BIND_OPCODE_SET_SYMBOL_TRAILING_FLAGS_IMM:
            name = table.Text(place);
            break;
        case BIND_OPCODE_SET_TYPE_IMM:
            if (operand != BIND_TYPE_POINTER) refuseOperation("binds", operation);
            break;
        case BIND_OPCODE_SET_ADDEND_SLEB:
            addend = static_cast<std::uint32_t>(table.Sleb(place));
            break;
        case BIND_OPCODE_SET_SEGMENT_AND_OFFSET_ULEB:
            cursor.SetSegment(operand, table.Uleb(place));
            break;
        case BIND_OPCODE_ADD_ADDR_ULEB:
            cursor.Skip(table.Uleb(place));
            break;
        case BIND_OPCODE_DO_BIND:
            bind(1, 0);
            break;
        case BIND_OPCODE_DO_BIND_ADD_ADDR_ULEB:
            bind(1, table.Uleb(place));
            break;
        case BIND_OPCODE_DO_BIND_ADD_ADDR_IMM_SCALED:
            bind(1, operand * kPointerSize);
            break;
        case BIND_OPCODE_DO_BIND_ULEB_TIMES_SKIPPING_ULEB: {
            const std::uint32_t count = table.Uleb(place);
            bind(count, table.Uleb(place));
            break;
        }
        default:
            refuseOperation("binds", operation);
        }
    }
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
