#include "MachOFile.h"

#include <cstdint>

namespace xcodhost {

namespace {

constexpr std::uint32_t kThin32 = 0xFEEDFACE;
constexpr std::uint32_t kThin64 = 0xFEEDFACF;
constexpr std::uint32_t kUniversal = 0xCAFEBABE;
constexpr std::uint32_t kUniversalWide = 0xCAFEBABF;
/// Java classes begin like universal files; their version, read as a count, is 45 or more.
constexpr std::uint32_t kMostArchitectures = 30;

std::uint32_t Word(std::string_view bytes, std::size_t offset, bool isBigEndian) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t place = offset + (isBigEndian ? i : 3 - i);
        value = value << 8 | static_cast<unsigned char>(bytes[place]);
    }
    return value;
}

enum class Form { None, ThinLittle, ThinBig, Universal, UniversalWide };

Form FormOf(std::string_view bytes) {
    if (bytes.size() < 8) return Form::None;
    const std::uint32_t little = Word(bytes, 0, false);
    const std::uint32_t big = Word(bytes, 0, true);
    if (little == kThin32 || little == kThin64) return Form::ThinLittle;
    if (big == kThin32 || big == kThin64) return Form::ThinBig;
    if ((big == kUniversal || big == kUniversalWide) && Word(bytes, 4, true) <= kMostArchitectures) {
        return big == kUniversal ? Form::Universal : Form::UniversalWide;
    }
    return Form::None;
}

std::string Architecture(std::uint32_t processor) {
    switch (processor) {
    case 7:
        return "i386";
    case 0x01000007:
        return "x86_64";
    case 12:
        return "arm";
    case 0x0100000C:
        return "arm64";
    case 18:
        return "ppc";
    case 0x01000012:
        return "ppc64";
    default:
        return "processor " + std::to_string(processor);
    }
}

} // namespace

bool IsMachO(std::string_view bytes) { return FormOf(bytes) != Form::None; }

MachOFile ReadMachO(std::string_view bytes) {
    const Form form = FormOf(bytes);
    if (form == Form::None) return {{}, "it is no Mach-O file"};
    if (form == Form::ThinLittle || form == Form::ThinBig) {
        return {{Architecture(Word(bytes, 4, form == Form::ThinBig))}, {}};
    }
    MachOFile file;
    const std::size_t entry = form == Form::Universal ? 20 : 32;
    const std::uint32_t count = Word(bytes, 4, true);
    for (std::uint32_t i = 0; i < count; ++i) {
        const std::size_t place = 8 + i * entry;
        if (bytes.size() < place + entry) {
            file.problem = "its list of architectures is cut off";
            break;
        }
        file.architectures.push_back(Architecture(Word(bytes, place, true)));
    }
    return file;
}

} // namespace xcodhost
