// Benchmarks of the growth of time and memory with the size of the input. The last two lines of a group are
// the best fitting order of growth and the deviation from it. "bytes_each" is the number of allocated bytes
// per item, including the bytes that were freed again.

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
#include <malloc.h>

namespace {

std::size_t gAllocated = 0;

} // namespace

// Replaces the allocation functions of the C library, to count the allocations of all libraries of the
// process. The replacements call the C library's own functions under their internal names, so that `free` can
// free the blocks.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

void* malloc(std::size_t size) noexcept {
    gAllocated += size;
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) noexcept {
    gAllocated += count * size;
    return __libc_calloc(count, size);
}
void* realloc(void* block, std::size_t size) noexcept {
    gAllocated += size;
    return __libc_realloc(block, size);
}
}

namespace {

namespace fs = std::filesystem;

/// Times the work that `prepare(size)` returns, for sizes from `from` to `to`.
template <typename Prepare>
void grow(const char* name, std::int64_t from, std::int64_t to, Prepare prepare) {
    const auto body = [prepare](benchmark::State& state) {
        auto work = prepare(state.range(0));
        const std::size_t before = gAllocated;
        for (auto _ : state) work();
        const double runs = static_cast<double>(state.iterations()) * static_cast<double>(state.range(0));
        state.counters["bytes_each"] = static_cast<double>(gAllocated - before) / runs;
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

/// Returns a temporary directory that is removed when the program ends.
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

void setNumber(CFStringRef key, int value, CFStringRef domain) {
    const CFNumberRef number = CFNumberCreate(nullptr, kCFNumberIntType, &value);
    CFPreferencesSetValue(key, number, domain, kCFPreferencesAnyUser, kCFPreferencesCurrentHost);
    CFRelease(number);
}

void synchronise(CFStringRef domain) {
    if (!CFPreferencesSynchronize(domain, kCFPreferencesAnyUser, kCFPreferencesCurrentHost)) std::abort();
}

/// Changes and synchronises one key of a preferences file with `n` keys.
void enterPreferences(const char* name, bool isXml) {
    grow(name, 100, 100000, [isXml](std::int64_t n) {
        if (!macplatform::SetStartupVolume(ownFolder().string())) std::abort();
        const fs::path folder = ownFolder() / "Library/Preferences";
        fs::create_directories(folder);
        const std::string text = (isXml ? "growth.xml" : "growth.binary") + std::to_string(n);
        const CFStringRef domain = CFStringCreateWithCString(nullptr, text.c_str(), kCFStringEncodingUTF8);
        if (isXml) std::ofstream(folder / (text + ".plist")) << "<plist version=\"1.0\"><dict/></plist>\n";
        for (int i = 0; i < n; ++i) {
            const std::string digits = "Key" + std::to_string(i);
            const CFStringRef key = CFStringCreateWithCString(nullptr, digits.c_str(), kCFStringEncodingUTF8);
            setNumber(key, i, domain);
            CFRelease(key);
        }
        synchronise(domain);
        return [domain, value = 0]() mutable {
            setNumber(CFSTR("Key7"), --value, domain);
            synchronise(domain);
        };
    });
}

/// Stops the C library from returning freed memory to the system. Otherwise each run at a large size would
/// map its memory again, and a run at a small size would not, so that the figures could not be compared.
void keepMemory() {
    constexpr int twoGigabytes = 2'000'000'000;
    mallopt(M_TRIM_THRESHOLD, twoGigabytes);
    mallopt(M_MMAP_THRESHOLD, twoGigabytes);
}

[[maybe_unused]] const bool kRegistered =
    (keepMemory(), enterTexts(), enterListing(), enterPreferences("preferences_xml", true),
     enterPreferences("preferences_binary", false), true);

} // namespace
