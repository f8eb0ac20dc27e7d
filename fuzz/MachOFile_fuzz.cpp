// Reads Mac executables. The reader must find the exports of a symbol table that is built from the input. A
// truncated copy of any bytes must give the same result as the whole, or have a problem.

#include "Property.h"

#include "bundle/MachOFile.h"

#include <algorithm>
#include <set>
#include <vector>

namespace {

bool isSound(const xcodhost::MachOFile& file) {
    return file.problem.empty() &&
           std::all_of(file.images.begin(), file.images.end(),
                       [](const xcodhost::MachOImage& image) { return image.problem.empty(); });
}

std::string summaryOf(const xcodhost::MachOFile& file) {
    std::string summary = file.problem + '\n';
    for (const xcodhost::MachOImage& image : file.images) {
        summary += image.architecture + ' ' + image.problem + '\n';
        for (const std::string& name : image.exports) summary += name + '\n';
    }
    return summary;
}

/// A Mach-O file for one processor with a symbol table and its names. The byte order depends on the input.
class SymbolFile {
public:
    explicit SymbolFile(FuzzedDataProvider& input) : isBigEndian(input.ConsumeBool()) {
        while (input.remaining_bytes() > 0 && count < 32) Add(input);
    }

    std::string Bytes() const {
        constexpr std::uint32_t headerSize = 28, commandSize = 24;
        const std::uint32_t symbolsAt = headerSize + commandSize, namesAt = symbolsAt + 12 * count;
        std::string bytes;
        for (const std::uint32_t word : {0xFEEDFACEU, 7U, 3U, 8U, 1U, commandSize, 0U})
            Append(bytes, word, 4);
        for (const std::uint32_t word :
             {2U, commandSize, symbolsAt, count, namesAt, static_cast<std::uint32_t>(names.size())})
            Append(bytes, word, 4);
        return bytes + symbols + names;
    }

    std::set<std::string> exports;

private:
    void Append(std::string& bytes, std::uint32_t number, int width) const {
        for (int i = 0; i < width; ++i)
            bytes += static_cast<char>(number >> 8 * (isBigEndian ? width - 1 - i : i));
    }

    void Add(FuzzedDataProvider& input) {
        const unsigned int type = input.ConsumeIntegral<std::uint8_t>();
        const std::string name(BeforeNul(input.ConsumeRandomLengthString(12)));
        Append(symbols, static_cast<std::uint32_t>(names.size()), 4);
        Append(symbols, type, 1);
        Append(symbols, 0, 3);
        Append(symbols, 0, 4);
        names += '_' + name + '\0';
        ++count;
        const bool isForDebuggers = type & 0xE0, isPrivate = type & 0x10, isDefined = type & 0x0E,
                   isExternal = type & 0x01;
        if (!isForDebuggers && !isPrivate && isDefined && isExternal) exports.insert(name);
    }

    bool isBigEndian;
    std::string symbols, names;
    std::uint32_t count = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    const std::size_t cut = input.ConsumeIntegral<std::uint16_t>();
    const std::string bytes(Bytes(data, size));
    const xcodhost::MachOFile whole = xcodhost::ReadMachO(bytes),
                              part = xcodhost::ReadMachO(bytes.substr(0, cut));
    Require(xcodhost::IsMachO(bytes) || !whole.problem.empty(),
            "a file that is not a Mac executable has a problem");
    if (isSound(part))
        RequireEqual(summaryOf(part), summaryOf(whole),
                     "a truncated file without a problem has the same exports");

    const SymbolFile made(input);
    const xcodhost::MachOFile seen = xcodhost::ReadMachO(made.Bytes());
    Require(isSound(seen) && seen.images.size() == 1, "a valid file has no problem");
    Require(seen.images[0].exports == std::vector<std::string>(made.exports.begin(), made.exports.end()),
            "the exports are those of the table");
    return 0;
}
