#include "MachOLoader.h"

#include "DarwinCalls.h"
#include "Fixups.h"
#include "UnwindEntries.h"
#include "posix/WholeFile.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mach-o/loader.h>
#include <memory>
#include <unistd.h>
#include <utility>

/// Registers unwind entries, which end with an entry of length 0 and must stay at their address. The unwinder
/// exports the function, but no header declares it.
extern "C" void __register_frame(void* entries);

namespace macplatform {

namespace {

constexpr std::size_t kLargestFile = std::size_t{64} << 20;

class LoadedCode final : public MachOCode {
public:
    explicit LoadedCode(std::string&& fileBytes)
        : bytes(std::move(fileBytes)), file(ReadImageFile(bytes)), memory(file) {
        Rebase(file, memory);
        const auto find = [this](const std::string& name) { return FindImport(name); };
        Bind(file, file.binds, memory, find);
        Bind(file, file.lazyBinds, memory, find);
        if (!missing.empty()) throw UnsupportedMachO("unsupported imports: " + missing);
    }

    /// Protects the memory, registers the unwind entries and runs the initialisers.
    /// The code must stay mapped afterwards.
    void Start() {
        memory.Protect();
        for (const ImageSection& section : file.sections) {
            if (section.name == "__eh_frame" && section.memory.size != 0) RegisterUnwinding(section);
        }
        for (const ImageSection& section : file.sections) {
            if (section.type == S_MOD_INIT_FUNC_POINTERS) RunInitialisers(section);
        }
    }

    void* Symbol(const std::string& name) const override {
        const auto address = FindExport(file, '_' + name);
        return address ? memory.At(*address) : nullptr;
    }

private:
    std::uint32_t FindImport(const std::string& name) {
        const std::uint32_t address = DarwinImport(name);
        if (address == 0) missing += (missing.empty() ? "" : ", ") + name;
        return address;
    }

    void RegisterUnwinding(const ImageSection& section) {
        const std::string_view entries = memory.Bytes(section);
        auto* const copy = static_cast<char*>(std::malloc(entries.size() + 4));
        if (!copy) throw UnsupportedMachO("out of memory");
        const std::string translated = UnwindEntriesFor(entries, copy);
        std::copy(translated.begin(), translated.end(), copy);
        __register_frame(copy);
    }

    void RunInitialisers(const ImageSection& section) {
        using Initialiser = void (*)(int, const char* const*, char**, const char* const*, void*);
        const char* const none[] = {nullptr};
        for (std::uint32_t place = 0; place + 4 <= section.memory.size; place += 4) {
            char* const function = memory.At(memory.Word(section.memory.start + place) - memory.Slide());
            reinterpret_cast<Initialiser>(function)(0, none, environ, none, nullptr);
        }
    }

    std::string bytes;
    ImageFile file;
    ImageMemory memory;
    std::string missing;
};

} // namespace

bool CanRunMachO() { return true; }

MachOCode* LoadMachO(const std::string& path, BundleFailure& failure) try {
    std::string bytes;
    if (const int error = ReadWholeFile(path, kLargestFile, bytes)) {
        failure = {BundleFault::kCannotLoad, path + ": " + std::strerror(error)};
        return nullptr;
    }
    auto code = std::make_unique<LoadedCode>(std::move(bytes));
    code->Start();
    return code.release();
} catch (const WrongMachOArchitecture& refusal) {
    failure = {BundleFault::kWrongArchitecture, path + ": " + refusal.what()};
    return nullptr;
} catch (const UnsupportedMachO& refusal) {
    failure = {BundleFault::kCannotLoad, path + ": " + refusal.what()};
    return nullptr;
}

} // namespace macplatform
