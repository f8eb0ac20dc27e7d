#include "UnwindEntries.h"

#include "ImageFile.h"

#include <cstring>
#include <map>

namespace macplatform {

namespace {

constexpr std::uint8_t kRelativeAddress = 0x10, kRelativeIndirect = 0x9B;

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
            View().Part(place,
                        length + 4); // Throws if the entry exceeds the section, so the sum cannot overflow.
            TranslateEntry(place, place + 4 + length);
            place += 4 + length;
        }
        bytes.resize(place);
        return std::move(bytes) + std::string(4, '\0');
    }

private:
    ByteView View() const { return ByteView(bytes); }

    void TranslateEntry(std::uint32_t start, std::uint32_t end) {
        const std::uint32_t common = View().U32(start + 4);
        if (common == 0) {
            std::uint32_t place = start + 8;
            commons[start] = TranslateCommon(place);
            TranslateInstructions(place, end);
            return;
        }
        const auto found = commons.find(start + 4 - common);
        if (found == commons.end()) throw UnsupportedMachO("an unwind entry has no common entry");
        ShiftPointer(start + 8);
        std::uint32_t place = start + 16;
        if (found->second.hasData) {
            const std::uint32_t size = View().Uleb(place);
            if (found->second.hasLanguageData && View().U32(place) != 0) ShiftPointer(place);
            place += size;
        }
        TranslateInstructions(place, end);
    }

    /// Translates a common entry up to its instructions, and moves `place` to the instructions.
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
        const std::uint32_t instructions = place + size;
        for (const char letter : letters.substr(1)) {
            const std::uint8_t encoding = View().U8(place++);
            const bool isKnown = letter == 'P'
                                     ? encoding == kRelativeIndirect
                                     : (letter == 'L' || letter == 'R') && encoding == kRelativeAddress;
            if (!isKnown) throw UnsupportedMachO("unsupported pointers in an unwind entry");
            if (letter == 'L') common.hasLanguageData = true;
            if (letter != 'P') continue;
            ShiftPointer(place);
            place += 4;
        }
        place = instructions;
        return common;
    }

    void ShiftPointer(std::uint32_t place) {
        const std::uint32_t value = View().U32(place) + shift;
        std::memcpy(bytes.data() + place, &value, sizeof value);
    }

    void ExchangeRegister(std::uint32_t& place) {
        const std::uint8_t number = View().U8(place);
        if (number == 4 || number == 5) bytes[place] = static_cast<char>(number ^ 1);
        View().Uleb(place);
    }

    void TranslateInstructions(std::uint32_t place, std::uint32_t end) {
        while (place < end) {
            const std::uint8_t byte = View().U8(place++);
            const std::uint8_t operand = byte & 0x3F;
            switch (byte >> 6) {
            case 1: // advance the location
                break;
            case 2: // a register is saved at an offset
            case 3: // a register is restored to its initial rule
                if (operand == 4 || operand == 5) bytes[place - 1] = static_cast<char>(byte ^ 1);
                if (byte >> 6 == 2) View().Uleb(place);
                break;
            default:
                TranslateExtended(byte, place);
            }
        }
    }

    void TranslateExtended(std::uint8_t byte, std::uint32_t& place) {
        switch (byte) {
        case 0x00: // padding
        case 0x0A: // remember the state
        case 0x0B: // restore the state
            break;
        case 0x02: // advance the location by a number of 1, 2 or 4 bytes
        case 0x03:
        case 0x04:
            place += 1u << (byte - 2);
            break;
        case 0x05: // a register and an offset
        case 0x0C:
        case 0x11:
        case 0x12:
            ExchangeRegister(place);
            View().Uleb(place);
            break;
        case 0x06: // a register
        case 0x07:
        case 0x08:
        case 0x0D:
            ExchangeRegister(place);
            break;
        case 0x09: // two registers
            ExchangeRegister(place);
            ExchangeRegister(place);
            break;
        case 0x0E: // an offset
        case 0x13:
        case 0x2E:
            View().Uleb(place);
            break;
        default:
            throw UnsupportedMachO("unsupported unwind instruction: " + std::to_string(byte));
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
