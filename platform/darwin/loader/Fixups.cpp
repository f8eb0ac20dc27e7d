#include "Fixups.h"

#include <algorithm>

namespace macplatform {

namespace {

constexpr std::uint8_t kOperationBits = 0xF0, kOperandBits = 0x0F;
constexpr std::uint8_t kPointerType = 1;

[[noreturn]] void refuseOperation(const char* table, std::uint8_t byte) {
    throw UnsupportedMachO("unsupported operation in the table of " + std::string(table) + ": " +
                           std::to_string(byte));
}

/// The address of the next pointer. The operations of the tables change this address.
class Cursor {
public:
    explicit Cursor(const ImageFile& imageFile) : file(imageFile) {}

    void SetSegment(std::uint8_t number, std::uint32_t offset) {
        if (number >= file.segments.size()) throw UnsupportedMachO("a fix-up refers to a missing segment");
        address = file.segments[number].memory.start + offset;
        isSet = true;
    }
    void Skip(std::uint32_t bytes) { address += bytes; }
    std::uint32_t Next() {
        if (!isSet) throw UnsupportedMachO("a fix-up has no address");
        address += 4;
        return address - 4;
    }

private:
    const ImageFile& file;
    std::uint32_t address = 0;
    bool isSet = false;
};

/// Executes the operations of the table of rebases.
class Rebaser {
public:
    Rebaser(const ImageFile& file, ImageMemory& imageMemory)
        : table(file.rebases), memory(imageMemory), cursor(file) {}

    void Run() {
        while (place < table.Size()) {
            const std::uint8_t byte = table.U8(place++);
            if (!Do(byte, byte & kOperandBits)) return;
        }
    }

private:
    /// Executes one operation. Returns false at the end of the table.
    bool Do(std::uint8_t byte, std::uint8_t operand) {
        switch (byte & kOperationBits) {
        case 0x00:
            return false;
        case 0x10: // set the type
            if (operand != kPointerType) refuseOperation("rebases", byte);
            break;
        case 0x20: // set the segment and the offset
            cursor.SetSegment(operand, table.Uleb(place));
            break;
        case 0x30: // add to the address
            cursor.Skip(table.Uleb(place));
            break;
        case 0x40: // add a small number of pointers to the address
            cursor.Skip(operand * 4u);
            break;
        case 0x50: // rebase a small number of pointers
            Move(operand, 0);
            break;
        case 0x60: // rebase a number of pointers
            Move(table.Uleb(place), 0);
            break;
        case 0x70: // rebase a pointer, then add to the address
            Move(1, table.Uleb(place));
            break;
        case 0x80: { // rebase a number of pointers, each followed by a gap
            const std::uint32_t count = table.Uleb(place);
            Move(count, table.Uleb(place));
            break;
        }
        default:
            refuseOperation("rebases", byte);
        }
        return true;
    }

    void Move(std::uint32_t count, std::uint32_t skip) {
        for (; count > 0; --count) {
            const std::uint32_t address = cursor.Next();
            memory.SetWord(address, memory.Word(address) + memory.Slide());
            cursor.Skip(skip);
        }
    }

    ByteView table;
    ImageMemory& memory;
    Cursor cursor;
    std::uint32_t place = 0;
};

/// Executes the operations of one table of binds.
class Binder {
public:
    Binder(const ImageFile& imageFile, std::string_view bindTable, ImageMemory& imageMemory,
           const std::function<std::uint32_t(const std::string&)>& findImport)
        : file(imageFile), table(bindTable), memory(imageMemory), find(findImport), cursor(imageFile) {}

    void Run() {
        while (place < table.Size()) {
            const std::uint8_t byte = table.U8(place++);
            Do(byte, byte & kOperandBits);
        }
    }

private:
    void Do(std::uint8_t byte, std::uint8_t operand) {
        switch (byte & kOperationBits) {
        case 0x00: // the end of a lazy bind, or padding at the end of the table
            break;
        case 0x10: // set the library, a small number
            library = operand;
            break;
        case 0x20: // set the library
            library = table.Uleb(place);
            break;
        case 0x40: // set the name
            name = table.Text(place);
            break;
        case 0x50: // set the type
            if (operand != kPointerType) refuseOperation("binds", byte);
            break;
        case 0x60: // set the addend
            addend = static_cast<std::uint32_t>(table.Sleb(place));
            break;
        case 0x70: // set the segment and the offset
            cursor.SetSegment(operand, table.Uleb(place));
            break;
        case 0x80: // add to the address
            cursor.Skip(table.Uleb(place));
            break;
        default:
            DoBind(byte, operand);
        }
    }

    void DoBind(std::uint8_t byte, std::uint8_t operand) {
        switch (byte & kOperationBits) {
        case 0x90: // bind a pointer
            Set(1, 0);
            break;
        case 0xA0: // bind a pointer, then add to the address
            Set(1, table.Uleb(place));
            break;
        case 0xB0: // bind a pointer, then add a small number of pointers to the address
            Set(1, operand * 4u);
            break;
        case 0xC0: { // bind a number of pointers, each followed by a gap
            const std::uint32_t count = table.Uleb(place);
            Set(count, table.Uleb(place));
            break;
        }
        default:
            refuseOperation("binds", byte);
        }
    }

    void Set(std::uint32_t count, std::uint32_t skip) {
        if (library == 0 || library > file.libraries)
            throw UnsupportedMachO("the import " + std::string(name) + " names no library of the file");
        const std::uint32_t value = find(std::string(name)) + addend;
        for (; count > 0; --count) {
            memory.SetWord(cursor.Next(), value);
            cursor.Skip(skip);
        }
    }

    const ImageFile& file;
    ByteView table;
    ImageMemory& memory;
    const std::function<std::uint32_t(const std::string&)>& find;
    Cursor cursor;
    std::uint32_t place = 0;
    std::uint32_t library = 0;
    std::string_view name;
    std::uint32_t addend = 0;
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

void Rebase(const ImageFile& file, ImageMemory& memory) { Rebaser(file, memory).Run(); }

void Bind(const ImageFile& file, std::string_view table, ImageMemory& memory,
          const std::function<std::uint32_t(const std::string& name)>& find) {
    Binder(file, table, memory, find).Run();
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
        } else if (trie.Uleb(place) != 0) {
            throw UnsupportedMachO("unsupported kind of the export " + name);
        } else {
            return file.memory.start + trie.Uleb(place);
        }
    }
    return std::nullopt;
}

} // namespace macplatform
