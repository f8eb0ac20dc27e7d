// Benchmarks of directory listing: directories with 100,000 and 50 entries, half of them .wav files, in
// memory and on the disk with the temporary files.

#include <Kelbase/Util/Dir.h>

#include "Comparison.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <strings.h>

#include <dirent.h>
#include <sys/stat.h>

#ifdef BENCH_QT
#include <QDir>
#endif

namespace {

using comparison::Comparison;
namespace fs = std::filesystem;

/// A temporary directory with empty files and a few subdirectories. The destructor removes the directory.
class FilledFolder {
public:
    FilledFolder(const fs::path& where, int entries) : path((where / "listing-XXXXXX").string()) {
        if (!mkdtemp(path.data())) throw std::runtime_error(where.string() + ": cannot create a directory");
        for (int i = 0; i < entries; ++i) {
            const fs::path entry = fs::path(path) / ("take " + std::to_string(i) + (i % 2 ? ".wav" : ".txt"));
            if (i % 50 == 8)
                fs::create_directory(entry);
            else
                std::ofstream(entry).close();
        }
    }
    FilledFolder(const FilledFolder&) = delete;
    FilledFolder& operator=(const FilledFolder&) = delete;
    ~FilledFolder() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    const std::string& Path() const { return path; }

private:
    std::string path;
};

bool isSound(std::string_view name) {
    return name.size() >= 4 && strncasecmp(name.data() + name.size() - 4, ".wav", 4) == 0;
}

/// The entries to list: files, files that match a pattern, or directories.
struct Wanted {
    const char* name;
    const char* pattern;
    bool folders;
};

std::vector<String> listWithDir(const String& folder, const Wanted& wanted) {
    std::vector<String> names;
    if (wanted.folders)
        Util::Dir::GetFoldernames(folder, names, wanted.pattern, false);
    else
        Util::Dir::GetFilenames(folder, names, wanted.pattern, false, false);
    return names;
}

std::vector<std::string> listWithFilesystem(const std::string& folder, const Wanted& wanted) {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        std::string name = entry.path().filename().string();
        if (*wanted.pattern && !isSound(name)) continue;
        if (wanted.folders ? entry.is_directory() : entry.is_regular_file()) names.push_back(std::move(name));
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> listWithScandir(const std::string& folder, const Wanted& wanted) {
    dirent** entries = nullptr;
    const int count = scandir(folder.c_str(), &entries, nullptr, alphasort);
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i) {
        const std::unique_ptr<dirent, void (*)(void*)> entry(entries[i], std::free);
        const std::string_view name = entry->d_name;
        if (name == "." || name == ".." || (*wanted.pattern && !isSound(name))) continue;
        struct stat status;
        if (stat((folder + "/" + entry->d_name).c_str(), &status) != 0) continue;
        if (S_ISREG(status.st_mode) != wanted.folders) names.emplace_back(name);
    }
    std::free(entries);
    return names;
}

void enterFolder(const std::string& place, const std::string& folder, double entries) {
    for (const Wanted& wanted :
         {Wanted{"all", "", false}, Wanted{"wav", "*.wav", false}, Wanted{"folders", "", true}}) {
        Comparison("dir_" + std::string(wanted.name) + place, entries)
            .Add("ours", [folder, wanted] { return listWithDir(String(folder.c_str()), wanted); })
            .Add("std", [folder, wanted] { return listWithFilesystem(folder, wanted); })
            .Add("scandir", [folder, wanted] { return listWithScandir(folder, wanted); })
#ifdef BENCH_QT
            .Add("QDir",
                 [folder, wanted] {
                     const QDir::Filters filters =
                         QDir::Hidden | QDir::NoDotAndDotDot | (wanted.folders ? QDir::Dirs : QDir::Files);
                     return QDir(QString::fromStdString(folder))
                         .entryList({*wanted.pattern ? wanted.pattern : "*"}, filters, QDir::Name);
                 })
#endif
            ;
    }
}

/// A directory whose file system is in memory.
constexpr char kMemoryFolder[] = "/dev/shm";

void enterAll() {
    static const FilledFolder onDisk(fs::temp_directory_path(), 100000), few(fs::temp_directory_path(), 50);
    enterFolder("_disk", onDisk.Path(), 100000);
    enterFolder("_50", few.Path(), 50);
    if (!fs::is_directory(kMemoryFolder)) return;
    static const FilledFolder inMemory(kMemoryFolder, 100000);
    enterFolder("_tmpfs", inMemory.Path(), 100000);
}

[[maybe_unused]] const bool kRegistered = (enterAll(), true);

} // namespace
