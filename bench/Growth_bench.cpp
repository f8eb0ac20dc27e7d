// How time and memory grow with size. The last two lines of a group tell the order that fits best and how far
// the figures are from it; "bytes_each" is what an item allocated, freed again or not.

#include <Kelbase/Util/ByteStream.h>
#include <Kelbase/Util/Dir.h>

#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFPreferences.h>
#include <CoreFoundation/CFString.h>

#include <macplatform/StartupVolume.h>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>

namespace {

std::size_t allocated = 0;

} // namespace

void* operator new(std::size_t size) {
    allocated += size;
    if (void* const p = std::malloc(size)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {

namespace fs = std::filesystem;

/// Times the work that `prepare(size)` answers.
template <typename Prepare>
void grow(const char* name, std::int64_t from, std::int64_t to, Prepare prepare) {
    const auto body = [prepare](benchmark::State& state) {
        auto work = prepare(state.range(0));
        const std::size_t before = allocated;
        for (auto _ : state) work();
        const double runs = static_cast<double>(state.iterations()) * static_cast<double>(state.range(0));
        state.counters["bytes_each"] = static_cast<double>(allocated - before) / runs;
        state.SetComplexityN(state.range(0));
    };
    benchmark::RegisterBenchmark(name, body)->RangeMultiplier(10)->Range(from, to)->Complexity();
}

String listOf(std::int64_t fields) {
    String text;
    for (std::int64_t i = 0; i < fields; ++i) text += "name,";
    return text;
}

std::vector<String> fieldsOf(const String& text) {
    std::vector<String> fields;
    text.Split(',', fields);
    return fields;
}

void enterTexts() {
    grow("split", 1000, 1000000,
         [](std::int64_t n) { return [text = listOf(n)] { benchmark::DoNotOptimize(fieldsOf(text)); }; });
    grow("join", 1000, 1000000, [](std::int64_t n) {
        return [fields = fieldsOf(listOf(n))] { benchmark::DoNotOptimize(String::Join("/", fields)); };
    });
    grow("replace", 1000, 1000000, [](std::int64_t n) {
        return [text = listOf(n)] { benchmark::DoNotOptimize(text.Replace(",", ", ")); };
    });
    grow("stream", 1000, 1000000, [](std::int64_t n) {
        return [n] {
            Util::ByteStream stream(0);
            for (std::int64_t i = 0; i < n; ++i) stream << i;
            stream.SetPosition(0);
            for (long long v = 0; !stream.AtEnd(); benchmark::DoNotOptimize(v)) stream >> v;
        };
    });
}

/// A folder for the run of the program.
const fs::path& ownFolder() {
    struct Folder {
        std::string path = (fs::temp_directory_path() / "growth-XXXXXX").string();
        Folder() {
            if (!mkdtemp(path.data())) std::abort();
        }
        ~Folder() {
            std::error_code ignored;
            fs::remove_all(path, ignored);
        }
    };
    static const Folder folder;
    static const fs::path path = folder.path;
    return path;
}

void enterListing() {
    grow("listing", 100, 100000, [](std::int64_t n) {
        const fs::path folder = ownFolder() / std::to_string(n);
        if (fs::create_directory(folder))
            for (std::int64_t i = 0; i < n; ++i)
                std::ofstream(folder / ("take " + std::to_string(i) + ".wav"));
        return [text = String(folder.c_str())] {
            std::vector<String> names;
            Util::Dir::GetFilenames(text, names, "*.wav", false, false);
            benchmark::DoNotOptimize(names);
        };
    });
}

/// A preferences file of `n` keys, one of which is changed and synchronised.
void enterPreferences() {
    grow("preferences", 100, 100000, [](std::int64_t n) {
        if (!macplatform::SetStartupVolume(ownFolder().string())) std::abort();
        const fs::path folder = ownFolder() / "Library/Preferences";
        fs::create_directories(folder);
        const std::string domain = "growth.keys" + std::to_string(n);
        std::ofstream file(folder / (domain + ".plist"));
        file << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>\n";
        for (std::int64_t i = 0; i < n; ++i)
            file << "<key>Key" << i << "</key><integer>" << i << "</integer>\n";
        file << "</dict></plist>\n";
        return [domain, value = 0]() mutable {
            const CFStringRef name =
                CFStringCreateWithCString(nullptr, domain.c_str(), kCFStringEncodingUTF8);
            const CFNumberRef number = CFNumberCreate(nullptr, kCFNumberIntType, &++value);
            CFPreferencesSetValue(CFSTR("Key7"), number, name, kCFPreferencesAnyUser,
                                  kCFPreferencesCurrentHost);
            if (!CFPreferencesSynchronize(name, kCFPreferencesAnyUser, kCFPreferencesCurrentHost))
                std::abort();
            CFRelease(number);
            CFRelease(name);
        };
    });
}

[[maybe_unused]] const bool entered = (enterTexts(), enterListing(), enterPreferences(), true);

} // namespace
