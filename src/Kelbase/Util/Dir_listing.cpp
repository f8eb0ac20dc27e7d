#include <Kelbase/Util/Dir.h>

#include <Kelbase/common/detail/common_string_sort.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include <dirent.h>
#include <limits.h>
#include <sys/stat.h>

namespace Util {

namespace {

bool sameLetter(char a, char b) { return Char(a).ToLower() == Char(b).ToLower(); }

std::string_view view(const String& s) { return {s.Latin1(), s.GetLength()}; }

/// A pattern for names, as the comment of `Dir` describes it.
class Pattern {
public:
    explicit Pattern(const String& pattern) {
        const checked_value<unsigned int> star = pattern.Find('*');
        prefix = star.IsGiven() ? pattern.Left(star) : pattern;
        if (star.IsGiven()) suffix = pattern.Mid(star + 1);
    }

    /// Returns whether a name matches. Prefix and suffix may overlap in the name: "abc" matches "ab*bc".
    bool Fits(std::string_view name) const {
        const std::string_view first = view(prefix), last = view(suffix);
        return name.size() >= first.size() && name.size() >= last.size() &&
               std::equal(first.begin(), first.end(), name.begin(), sameLetter) &&
               std::equal(last.rbegin(), last.rend(), name.rbegin(), sameLetter);
    }

private:
    String prefix;
    String suffix;
};

String join(const String& folder, const String& name) {
    return folder.EndsWith("/") ? folder + name : folder + "/" + name;
}

/// The path with which a folder is opened, and the paths with which `stat` reads its entries.
class Paths {
public:
    /// The path of an entry is the canonical form of folder and name together. If the name contains a
    /// backslash, this path therefore refers to an item in another folder. An empty path is not
    /// canonicalized, because its canonical form is "/". It stays empty and cannot be opened.
    explicit Paths(const FolderPath& folder)
        : opened(folder.IsEmpty() ? String() : folder.ToString()), cleaned(&folder) {
        entry = view((folder + "x").ToString());
        entry.pop_back();
        prefixLength = entry.size();
        prefixIsOpened = view(opened) == entry;
    }
    explicit Paths(const String& folder) : opened(folder), entry(view(join(folder, ""))) {
        prefixLength = entry.size();
    }

    const char* Opened() const { return opened.Latin1(); }

    const std::string& Of(std::string_view name) {
        if (IsReshaped(name))
            return reshaped = view((*cleaned + String(std::string(name).c_str())).ToString());
        entry.resize(prefixLength);
        return entry += name;
    }

    /// Returns whether the path of the entry refers to the entry with this name in the opened folder and is
    /// not too long for the system.
    bool IsInOpened(std::string_view name) const {
        return prefixIsOpened && prefixLength + name.size() < PATH_MAX && !IsReshaped(name);
    }

private:
    /// Returns whether canonicalization changes the name.
    bool IsReshaped(std::string_view name) const { return cleaned && name.find('\\') != name.npos; }

    String opened;
    const FolderPath* cleaned = nullptr;
    std::string entry; // the path of the last name that canonicalization did not change
    std::size_t prefixLength;
    bool prefixIsOpened = true;
    std::string reshaped;
};

/// Returns whether `d_type` says that an entry is a regular file. Returns absent if `stat` is needed.
std::optional<bool> isRecordedAsFile(const dirent& entry) {
    switch (entry.d_type) {
    case DT_REG: return true;
    case DT_DIR:
    case DT_FIFO:
    case DT_SOCK:
    case DT_CHR:
    case DT_BLK: return false;
    default: return std::nullopt; // a link has the type of its target, and some volumes have no d_type
    }
}

/// Returns whether a path is a regular file or a link to one. Returns absent if `stat` fails.
std::optional<bool> isFile(const std::string& path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    return S_ISREG(status.st_mode);
}

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

enum class Wanted { kFiles, kFolders, kEverything };

/// Adds the names of the matching entries to `names` and sorts `names`.
///
/// `d_type` is trusted after one `stat` of an entry has succeeded. `stat` fails if the folder may be read but
/// not searched, and if a path is too long. The entry must be omitted in these cases.
void list(Paths paths, std::vector<String>& names, const Pattern& pattern, bool append, Wanted wanted) {
    if (!append) names.clear();
    const std::unique_ptr<DIR, CloseFolder> folder(opendir(paths.Opened()));
    if (!folder) return;
    bool entered = false;
    while (const dirent* entry = readdir(folder.get())) {
        const std::string_view name(entry->d_name);
        if (name.empty() || name == "." || name == ".." || !pattern.Fits(name)) continue;

        const bool recorded = paths.IsInOpened(name);
        std::optional<bool> file;
        if (recorded && entered) file = isRecordedAsFile(*entry);
        if (!file) {
            file = isFile(paths.Of(name));
            if (!file) continue;
            entered = entered || recorded;
        }
        if (wanted == Wanted::kEverything || *file == (wanted == Wanted::kFiles))
            names.emplace_back(entry->d_name);
    }
    SortTexts(names);
}

/// A search for one file in a folder and its subfolders.
class Search {
public:
    Search(const String& name, bool searchSubfolders, unsigned int& examined)
        : wanted(FilePath(name, true).GetFilename().ToLower()),
          recursive(searchSubfolders),
          count(examined) {}

    FilePath In(const String& folder) {
        if (recursive && !IsNew(folder)) return {};
        {
            std::vector<String> files;
            Dir::GetFilenames(folder, files, "", false, false);
            for (const String& file : files) {
                if (IsOver() || (++count, IsOver())) return {};
                if (file.ToLower() == wanted) return {join(folder, file), false};
            }
        }
        return recursive ? Below(folder) : FilePath();
    }

private:
    static constexpr unsigned int kLimit = 5000;

    bool IsOver() const { return count > kLimit; }

    FilePath Below(const String& folder) {
        std::vector<String> subfolders;
        Dir::GetFoldernames(folder, subfolders, "", false);
        for (const String& subfolder : subfolders) {
            if (IsOver()) break;
            FilePath found = In(join(folder, subfolder));
            if (!found.IsEmpty()) return found;
        }
        return {};
    }

    /// Returns whether the folder exists and was not searched before. Records the folder. Without this check,
    /// a link to a parent folder would cause an endless search, and two links in each of forty folders would
    /// cause 2^40 searches of the last folder.
    bool IsNew(const String& folder) {
        struct stat status;
        return stat(folder.Latin1(), &status) == 0 && seen.emplace(status.st_dev, status.st_ino).second;
    }

    String wanted;
    bool recursive;
    unsigned int& count;
    std::set<std::pair<dev_t, ino_t>> seen;
};

} // namespace

void Dir::GetFilenames(std::vector<String>& names, const String& pattern, bool append,
                       bool includeAll) const {
    list(Paths(path), names, Pattern(pattern), append, includeAll ? Wanted::kEverything : Wanted::kFiles);
}

void Dir::GetFoldernames(std::vector<String>& names, const String& pattern, bool append) const {
    list(Paths(path), names, Pattern(pattern), append, Wanted::kFolders);
}

void Dir::GetFilenames(const String& folder, std::vector<String>& names, const String& pattern, bool append,
                       bool includeAll) {
    list(Paths(folder), names, Pattern(pattern), append, includeAll ? Wanted::kEverything : Wanted::kFiles);
}

void Dir::GetFoldernames(const String& folder, std::vector<String>& names, const String& pattern,
                         bool append) {
    list(Paths(folder), names, Pattern(pattern), append, Wanted::kFolders);
}

FilePath Dir::FindFile(const String& folder, const String& name, bool recursive, unsigned int& count) {
    return Search(name, recursive, count).In(folder);
}

} // namespace Util
