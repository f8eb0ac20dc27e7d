#include "UnwindEntries.h"

#include "ImageFile.h"

#include <cstring>
#include <map>

namespace macplatform {

namespace {

// The encodings of pointers, from their names in DWARF: DW_EH_PE_pcrel, and DW_EH_PE_indirect |
// DW_EH_PE_pcrel | DW_EH_PE_sdata4.
constexpr std::uint8_t kRelativeAddress = 0x10, kRelativeIndirect = 0x80 | 0x10 | 0x0B;

/// The Mac numbers these registers in the opposite order.
constexpr std::uint8_t kLinuxEsp = 4, kLinuxEbp = 5;

/// A call frame instruction and its operands, one letter each: 'r' is a register, 'n' another number, and a
/// digit is a number of that many bytes. 'l' is a register in the lower six bits of the code.
struct Instruction {
    std::uint8_t code;
    const char* operands;
};
constexpr std::uint8_t kLowBits = 0x3F; ///< An operand, if one of the other two bits is set.
constexpr Instruction kInstructions[] = {
    {0x00, ""},   // DW_CFA_nop
    {0x02, "1"},  // DW_CFA_advance_loc1
    {0x03, "2"},  // DW_CFA_advance_loc2
    {0x04, "4"},  // DW_CFA_advance_loc4
    {0x05, "rn"}, // DW_CFA_offset_extended
    {0x06, "r"},  // DW_CFA_restore_extended
    {0x07, "r"},  // DW_CFA_undefined
    {0x08, "r"},  // DW_CFA_same_value
    {0x09, "rr"}, // DW_CFA_register
    {0x0A, ""},   // DW_CFA_remember_state
    {0x0B, ""},   // DW_CFA_restore_state
    {0x0C, "rn"}, // DW_CFA_def_cfa
    {0x0D, "r"},  // DW_CFA_def_cfa_register
    {0x0E, "n"},  // DW_CFA_def_cfa_offset
    {0x11, "rn"}, // DW_CFA_offset_extended_sf
    {0x12, "rn"}, // DW_CFA_def_cfa_sf
    {0x13, "n"},  // DW_CFA_def_cfa_offset_sf
    {0x2E, "n"},  // DW_CFA_GNU_args_size
    {0x40, ""},   // DW_CFA_advance_loc
    {0x80, "ln"}, // DW_CFA_offset
    {0xC0, "l"},  // DW_CFA_restore
};

const char* operandsOf(std::uint8_t byte) {
    const int code = byte > kLowBits ? byte & ~kLowBits : byte;
    for (const Instruction& instruction : kInstructions) {
        if (instruction.code == code) return instruction.operands;
    }
    throw UnsupportedMachO("unsupported unwind instruction: " + std::to_string(byte));
}

/// The properties of the function entries that refer to one common entry.
struct CommonEntry {
    bool hasData = false;         ///< A length and augmentation data follow the addresses.
    bool hasLanguageData = false; ///< The augmentation data begins with a pointer to language data.
};

class Translator {
public:
    Translator(std::string_view section, const char* copy)
        : bytes(section),
          shift(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(section.data()) -
                                           reinterpret_cast<std::uintptr_t>(copy))) {}

    std::string Translate() {
        std::uint32_t place = 0;
        while (place < bytes.size()) {
            const std::uint32_t length = View().U32(place);
            if (length == 0) break;
            const std::uint32_t end = View().End(place + 4, length);
            TranslateEntry(place, end);
            place = end;
        }
        bytes.resize(place);
        return std::move(bytes) + std::string(4, '\0');
    }

private:
    ByteView View() const { return ByteView(bytes); }

    void TranslateEntry(std::uint32_t start, std::uint32_t end) {
        std::uint32_t place = start + 8;                      // after the length and the distance
        const std::uint32_t distance = View().U32(start + 4); // to the common entry; 0 in a common entry
        if (distance == 0) {
            commons[start] = TranslateCommon(place);
        } else {
            const auto common = commons.find(start + 4 - distance);
            if (common == commons.end()) throw UnsupportedMachO("an unwind entry has no common entry");
            TranslateFunction(place, common->second);
        }
        TranslateInstructions(place, end);
    }

    /// Translates the fields of a common entry, and moves `place` to its instructions.
    CommonEntry TranslateCommon(std::uint32_t& place) {
        CommonEntry common;
        if (View().U8(place++) != 1) throw UnsupportedMachO("unsupported version of an unwind entry");
        const std::string letters(View().Text(place));
        View().Uleb(place); // code alignment
        View().Sleb(place); // data alignment
        View().U8(place++); // return address register
        if (letters.empty()) return common;
        if (letters[0] != 'z')
            throw UnsupportedMachO("unsupported augmentation of an unwind entry: " + letters);
        common.hasData = true;
        const std::uint32_t size = View().Uleb(place);
        const std::uint32_t instructions = View().End(place, size);
        for (const char letter : letters.substr(1)) {
            const std::uint8_t encoding = View().U8(place++);
            if (letter == 'P' && encoding == kRelativeIndirect) { // the personality routine
                ShiftPointer(place);
                place += 4;
            } else if (letter == 'L' && encoding == kRelativeAddress) {
                common.hasLanguageData = true;
            } else if (letter != 'R' || encoding != kRelativeAddress) { // the functions
                throw UnsupportedMachO("unsupported pointers in an unwind entry");
            }
        }
        place = instructions;
        return common;
    }

    /// Translates the fields of the entry of a function, and moves `place` to its instructions.
    void TranslateFunction(std::uint32_t& place, const CommonEntry& common) {
        ShiftPointer(place);
        place += 8; // the function and its length
        if (!common.hasData) return;
        const std::uint32_t size = View().Uleb(place);
        if (common.hasLanguageData && View().U32(place) != 0) ShiftPointer(place);
        place = View().End(place, size);
    }

    void ShiftPointer(std::uint32_t place) {
        const std::uint32_t value = View().U32(place) + shift;
        std::memcpy(bytes.data() + place, &value, sizeof value);
    }

    /// Exchanges the registers 4 and 5 in the lower bits of a byte.
    void ExchangeRegister(std::uint32_t place, std::uint8_t bits) {
        const std::uint8_t byte = View().U8(place);
        const std::uint8_t number = byte & bits;
        if (number == kLinuxEsp || number == kLinuxEbp)
            bytes[place] = static_cast<char>(byte ^ kLinuxEsp ^ kLinuxEbp);
    }

    void TranslateInstructions(std::uint32_t place, std::uint32_t end) {
        while (place < end) {
            const std::uint32_t start = place;
            for (const char* kind = operandsOf(View().U8(place++)); *kind; ++kind) {
                if (*kind == 'l') {
                    ExchangeRegister(start, kLowBits);
                } else if (*kind >= '0' && *kind <= '9') {
                    place += static_cast<std::uint32_t>(*kind - '0');
                } else {
                    if (*kind == 'r') ExchangeRegister(place, 0xFF);
                    View().Uleb(place);
                }
            }
        }
    }

    std::string bytes;
    std::uint32_t shift;
    std::map<std::uint32_t, CommonEntry> commons;
};

} // namespace

std::string UnwindEntriesFor(std::string_view section, const char* copy) {
    return Translator(section, copy).Translate();
}

} // namespace macplatform
